// A small recording of every kind, generation and layout, and a way to make one of every kind.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/recording_builder.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {

struct NamedRecording {
  std::string name;
  RecordingBuilder builder;
};

// Those with something beside their samples are called "marked" and "corrected".
std::vector<NamedRecording> RecordingsOfEveryKind();

// Creates a recording at `path` and saves it. False as soon as a call fails.
using Maker = bool (*)(CRecordingFile& recording, const std::string& path);

struct NamedMaker {
  std::string name;
  Maker make;
};

// Of every kind that can be created; continuous ones carry events, labels and corrections, others markers.
std::vector<NamedMaker> MakersOfEveryKind();

}  // namespace wavelock

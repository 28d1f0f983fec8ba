// A small recording of every kind, generation and layout, and a way to make one of every kind.
#pragma once

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

// Creates a recording of one kind and saves it.
struct NamedMaker {
  std::string name;
  DataKind kind = kContinuous;  // as it is saved
  int width = 2;
  bool (*make)(CRecordingFile& recording, const std::string& path, int width) = nullptr;

  // False as soon as a call fails.
  bool Make(CRecordingFile& recording, const std::string& path) const { return make(recording, path, width); }
};

// Of every kind that can be created, in both widths, with three channels of which the first has a scale of
// its own; continuous ones carry events, labels and corrections, epochs and averages a marker.
std::vector<NamedMaker> MakersOfEveryKind();

}  // namespace wavelock

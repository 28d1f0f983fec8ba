// A recording that a test builds and opens in memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/recording_builder.h"
#include "tests/support/test_host.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {

struct OpenedRecording {
  explicit OpenedRecording(const RecordingBuilder& builder, const std::string& name = "test.rec",
                           int silent = 0)
      : OpenedRecording(builder.Build(), name, silent) {}

  explicit OpenedRecording(const std::vector<std::byte>& bytes, const std::string& name = "test.rec",
                           int silent = 0)
      : recording(silent, test.host) {
    test.memory.Put(name, bytes);
    isOpen = recording.OpenFile(name);
  }

  RecordingHeader& Header() { return recording.rawHeader.header; }
  ChannelRecord& Channel(std::size_t index) { return recording.rawHeader.channels[index]; }
  CSetup& Setup() { return *recording.setup; }

  // Empty when the read fails.
  template <class Word>
  std::vector<Word> Raw(std::uint64_t start, std::uint64_t end) {
    std::vector<Word> out((end - start) * Header().channelCount);
    const auto bytes = static_cast<std::int32_t>(out.size() * sizeof(Word));
    if (!recording.ReadContinuousRaw(start, end, out.data(), bytes, 0, 0)) out.clear();
    return out;
  }

  std::vector<float> Microvolts(std::uint64_t start, std::uint64_t end) {
    std::vector<float> out((end - start) * Header().channelCount);
    const auto bytes = static_cast<std::uint32_t>(out.size() * sizeof(float));
    if (!recording.ReadContinuousFloat(start, end, out.data(), bytes, 0, 0)) out.clear();
    return out;
  }

  TestHost test;
  CRecordingFile recording;
  bool isOpen = false;
};

}  // namespace wavelock

// A recording of two channels that a test makes in memory, as a program would.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <vector>

#include "tests/support/test_host.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {

class CreatedRecording {
 public:
  static constexpr char kPath[] = "/folder/made.rec";
  static constexpr std::size_t kDataStart = 900 + 2 * 75;

  // One count is 0.5 microvolts in the first channel and 1 in the second.
  CreatedRecording(DataKind kind, int width) : width_(width) {
    CSetup& setup = Setup();
    setup.fromRecording = 1;
    setup.dataKind = kind;
    setup.channelCount = 2;
    setup.sampleRate = 200;
    setup.actualRate = 200;
    setup.timeStart = 0;
    setup.channels[0].countScale = 0.25F;
    setup.channels[0].channelScale = 2;
    setup.channels[1].countScale = 1;
    setup.channels[1].channelScale = 1;
  }

  CSetup& Setup() { return *recording.setup; }
  void Create() { ASSERT_TRUE(recording.CreateFile(kPath, width_)); }

  // All bytes of the file when it has been saved.
  std::vector<std::byte> Saved() {
    EXPECT_TRUE(recording.SaveAndClose(0));
    EXPECT_TRUE(recording.IsSavedWhole());
    return test.memory.Contents(kPath).value_or(std::vector<std::byte>());
  }

  TestHost test{};
  CRecordingFile recording{0, test.host};

 private:
  const int width_;
};

inline std::uint32_t BytesOfFloats(std::span<const float> values) {
  return static_cast<std::uint32_t>(values.size_bytes());
}

}  // namespace wavelock

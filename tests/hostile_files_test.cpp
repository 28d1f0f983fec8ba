// Whatever the bytes of a file are, opening and reading it ends with a result.
#include <gtest/gtest.h>

#include <random>

#include "tests/support/every_kind.h"
#include "tests/support/opened_recording.h"
#include "tests/support/read_everything.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

std::vector<Bytes> OneOfEach() {
  std::vector<Bytes> files;
  for (const NamedRecording& recording : RecordingsOfEveryKind()) files.push_back(recording.builder.Build());
  return files;
}

void OpenAndRead(const Bytes& bytes) {
  OpenedRecording opened(bytes, "hostile.rec", 1);
  ReadEverything(opened.recording);
}

TEST(HostileFiles, TruncationAtEveryByte) {
  for (const Bytes& whole : OneOfEach()) {
    TestHost test;
    CRecordingFile recording(1, test.host);
    const std::size_t step = whole.size() < 16384 ? 1 : 499;  // a setup in the tail makes a file large
    for (std::size_t size = 0; size < whole.size(); size += step) {
      test.memory.Put("cut.rec", std::span(whole).first(size));
      recording.OpenFile("cut.rec");
      ReadEverything(recording);
      recording.CloseFile();
    }
  }
}

TEST(HostileFiles, RandomBytesInTheHeader) {
  std::mt19937_64 random(3);
  for (const Bytes& whole : OneOfEach()) {
    for (int round = 0; round < 300; ++round) {
      Bytes damaged = whole;
      const std::size_t damages = 1 + random() % 20;
      for (std::size_t i = 0; i < damages; ++i) {
        const std::size_t at = random() % std::min<std::size_t>(damaged.size(), 1100);
        damaged[at] = random() % 3 == 0 ? std::byte{0xFF} : static_cast<std::byte>(random());
      }
      OpenAndRead(damaged);
    }
  }
}

TEST(HostileFiles, NothingButNoise) {
  std::mt19937_64 random(4);
  for (int round = 0; round < 200; ++round) {
    Bytes noise(random() % 6000);
    for (std::byte& byte : noise) byte = static_cast<std::byte>(random());
    if (!noise.empty() && round % 2 == 0) noise[0] = std::byte{'V'};
    OpenAndRead(noise);
  }
}

}  // namespace
}  // namespace wavelock

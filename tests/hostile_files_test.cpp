// Whatever the bytes of a file are, opening and reading it ends with a result.
#include <gtest/gtest.h>

#include <random>

#include "tests/support/failing_files.h"
#include "tests/support/opened_recording.h"
#include "tests/support/read_everything.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

Bytes CurrentRecording() {
  return RecordingBuilder()
      .Channels(3)
      .Rate(250)
      .Samples(500, [](std::uint64_t s, int c) { return static_cast<std::int32_t>(s) * (c + 1); })
      .Events({{.stimType = 1, .sample = 5}, {.stimType = 2, .sample = 100}})
      .Build();
}

std::vector<Bytes> OneOfEach() {
  return {CurrentRecording(),
          RecordingBuilder()
              .Revision(6)
              .Channels(3)
              .Samples(200, [](std::uint64_t, int) { return 3; })
              .TriggerWords(4, 1, 2)
              .Build(),
          RecordingBuilder()
              .Layout(3)
              .BlockSamples(32)
              .Channels(5)
              .Samples(300, [](std::uint64_t, int c) { return c; })
              .Build(),
          RecordingBuilder().Revision(3).Layout(2).Channels(2).Samples({1, 2, 3, 4}).Build(),
          RecordingBuilder().OldestLayout(5).AcquisitionMode(3).Channels(2).Samples({1, 2, 3, 4}).Build(),
          RecordingBuilder().Epoched().Channels(2).Points(8).Epochs({{.samples = {1, 2}}}).Build(),
          RecordingBuilder()
              .AveragedWithStatistics()
              .Channels(2)
              .Points(4)
              .PutU8(375, 1)   // variance
              .PutU16(364, 3)  // accepted sweeps
              .Data(Bytes(2 * (5 + 4 * 4) + 2 * 4 * 4 + 2 * 2 * 3 * 4, std::byte{1}))
              .Build(),
          RecordingBuilder()
              .Revision(13)
              .TimeFrequency()
              .Channels(2)
              .Points(2)
              .Data(ByteWriter().Zeros(8 + 16).U32(0).U32(1050).U32(1050).U32(0))
              .Build()};
}

void OpenAndRead(const Bytes& bytes) {
  OpenedRecording opened(bytes, "hostile.rec", 1);
  ReadEverything(opened.recording);
}

TEST(HostileFiles, TruncationAtEveryByte) {
  for (const Bytes& whole : OneOfEach()) {
    TestHost test;
    CRecordingFile recording(1, test.host);
    for (std::size_t size = 0; size < whole.size(); ++size) {
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

TEST(HostileFiles, EveryCallOfTheFileServiceFailsInTurn) {
  const Bytes bytes = CurrentRecording();
  const auto run = [&](FailingFiles& files) {
    TestHost test(files);
    CRecordingFile recording(1, test.host);
    if (recording.OpenFile("a.rec")) ReadEverything(recording);
  };
  MemoryFiles memory;
  memory.Put("a.rec", bytes);
  FailingFiles good(memory);
  run(good);
  for (const FaultKind kind : {FaultKind::kError, FaultKind::kShort}) {
    for (std::size_t call = 0; call < good.Calls().size(); ++call) {
      FailingFiles once(memory);
      once.FailAt(call, kind);
      run(once);
      FailingFiles forEver(memory);
      forEver.FailFrom(call, kind);
      run(forEver);
    }
  }
}

}  // namespace
}  // namespace wavelock

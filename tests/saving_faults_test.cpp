// Whatever call to the disk fails while an opened recording is saved, its path holds the old file or a whole
// new one.
#include <gtest/gtest.h>

#include "tests/support/delivered.h"
#include "tests/support/failing_files.h"
#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

constexpr char kPath[] = "test.rec";

Bytes Continuous() {
  return RecordingBuilder()
      .Layout(3)
      .BlockSamples(20)
      .Channels(2)
      .Samples(200, [](std::uint64_t s, int c) { return static_cast<std::int32_t>(s) - 50 * c; })
      .Events({{.stimType = 1, .sample = 5}, {.stimType = 2, .sample = 100}})
      .Build();
}

Bytes Epochs() {
  return RecordingBuilder()
      .Revision(2)
      .Epoched()
      .Channels(1)
      .Points(4)
      .Epochs({{.samples = {1, 2, 3, 4}}, {.trialType = 2, .samples = {5, 6, 7, 8}}})
      .Build();
}

Bytes Average() {
  return RecordingBuilder()
      .Averaged()
      .Channels(1)
      .Points(4)
      .Data(ByteWriter().Zeros(5).F32(1).F32(2).F32(3).F32(4))
      .Build();
}

Delivered DeliveredBy(const Bytes& bytes) {
  OpenedRecording opened(bytes, kPath, 1);
  EXPECT_TRUE(opened.isOpen);
  return EverythingIn(opened.recording);
}

// Opens the recording, and saves it with the fault. The number of calls that the save made.
struct Attempt {
  Attempt(const Bytes& bytes, std::size_t call, FaultKind kind, bool forEver) {
    memory.Put(kPath, bytes);
    FailingFiles failing(memory);
    TestHost test(failing);
    CRecordingFile recording(1, test.host);
    EXPECT_TRUE(recording.OpenFile(kPath));
    const std::size_t before = failing.Calls().size();
    forEver ? failing.FailFrom(before + call, kind) : failing.FailAt(before + call, kind);
    isSaved = recording.SaveAndClose(0);
    calls = failing.Calls().size() - before;
  }

  MemoryFiles memory;
  bool isSaved = false;
  std::size_t calls = 0;
};

void ExpectOldOrNew(const Attempt& attempt, const Bytes& old, const Delivered& delivered) {
  const Bytes now = attempt.memory.Contents(kPath).value_or(Bytes());
  if (!attempt.isSaved) {
    EXPECT_EQ(now, old);
  } else {
    EXPECT_EQ(DeliveredBy(now), delivered);
  }
}

TEST(SavingFaults, EveryCallFailsOnceOrForEver) {
  for (const Bytes& old : {Continuous(), Epochs(), Average()}) {
    const Delivered delivered = DeliveredBy(old);
    const std::size_t calls = Attempt(old, 1000000, FaultKind::kError, false).calls;
    ASSERT_GT(calls, 20u);
    for (std::size_t call = 0; call < calls; ++call) {
      for (const FaultKind kind : {FaultKind::kError, FaultKind::kShort}) {
        for (const bool forEver : {false, true}) {
          SCOPED_TRACE(testing::Message() << "call " << call << ", for ever " << forEver);
          ExpectOldOrNew(Attempt(old, call, kind, forEver), old, delivered);
        }
      }
    }
  }
}

TEST(SavingFaults, FullDiskLeavesTheOldFileAlone) {
  const Bytes old = Continuous();
  for (const std::uint64_t room : {10u, 1000u, 2000u, 3000u, 20000u}) {
    SCOPED_TRACE(room);
    OpenedRecording opened(old, kPath, 1);
    opened.test.memory.LimitSize(room);
    EXPECT_FALSE(opened.recording.SaveAndClose(0));
    EXPECT_EQ(opened.test.memory.Contents(kPath), old);
    EXPECT_FALSE(opened.test.memory.Exists("test.rec.0.new"));
  }
}

}  // namespace
}  // namespace wavelock

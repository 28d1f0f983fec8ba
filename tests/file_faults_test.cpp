// Whatever call to the disk fails while a recording or a setup is opened, read, made or saved: the operation
// ends with a result, what is delivered is right, and a path holds the old file or a whole new one.
#include <gtest/gtest.h>

#include <optional>

#include "tests/support/delivered.h"
#include "tests/support/every_kind.h"
#include "tests/support/failing_files.h"
#include "tests/support/opened_recording.h"
#include "tests/support/read_everything.h"
#include "wavelock/platform/replacing.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

constexpr char kPath[] = "test.rec";

std::optional<Delivered> DeliveredBy(const Bytes& bytes) {
  OpenedRecording opened(bytes, kPath, 1);
  if (!opened.isOpen) return std::nullopt;
  return EverythingIn(opened.recording);
}

// A tail that cannot be read leaves the values of the header, by which microvolts are worked out. A file that
// says it ended where it did not may be taken for any other; no disk does that.
void ExpectNothingWrong(const Delivered& delivered, const Delivered& whole) {
  for (const auto& [what, bytes] : delivered) {
    if (what == "microvolts" || bytes.empty()) continue;
    const auto right = whole.find(what);
    ASSERT_NE(right, whole.end()) << what;
    EXPECT_EQ(bytes, right->second) << what;
  }
}

TEST(FileFaults, WhatIsReadIsRightOrMissing) {
  for (const NamedRecording& recording : RecordingsOfEveryKind()) {
    SCOPED_TRACE(recording.name);
    const Bytes bytes = recording.builder.Build();
    const Delivered whole = DeliveredBy(bytes).value_or(Delivered());
    FailEveryCall([&](MemoryFiles& memory) { memory.Put(kPath, bytes); },
                  [&](Host& host, FaultKind kind) {
                    CRecordingFile opened(1, host);
                    if (!opened.OpenFile(kPath)) return false;
                    const Delivered delivered = EverythingIn(opened);
                    if (kind == FaultKind::kError) ExpectNothingWrong(delivered, whole);
                    ReadEverything(opened);
                    return true;
                  },
                  [](MemoryFiles&, bool) {});
  }
}

TEST(FileFaults, SavingAnOpenedRecordingLeavesTheOldFileOrAWholeNewOne) {
  for (const NamedRecording& recording : RecordingsOfEveryKind()) {
    SCOPED_TRACE(recording.name);
    const Bytes old = recording.builder.Build();
    const auto delivered = DeliveredBy(old);
    ASSERT_TRUE(delivered);
    FailEveryCall([&](MemoryFiles& memory) { memory.Put(kPath, old); },
                  [](Host& host, FaultKind) {
                    CRecordingFile opened(1, host);
                    return opened.OpenFile(kPath) && opened.SaveAndClose(0);
                  },
                  [&](MemoryFiles& memory, bool isSaved) {
                    const Bytes now = memory.Contents(kPath).value_or(Bytes());
                    if (!isSaved) {
                      EXPECT_EQ(now, old);
                    } else {
                      EXPECT_EQ(DeliveredBy(now), delivered);
                    }
                  });
  }
}

// A created recording has its header written last: before that it is none.
TEST(FileFaults, AMadeRecordingIsWholeOrLacksWhatCouldNotBeWritten) {
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    SCOPED_TRACE(maker.name);
    std::optional<Delivered> whole;
    FailEveryCall([](MemoryFiles&) {},
                  [&](Host& host, FaultKind) {
                    CRecordingFile recording(1, host);
                    return maker.Make(recording, kPath);
                  },
                  [&](MemoryFiles& memory, bool isMade) {
                    const auto delivered = DeliveredBy(memory.Contents(kPath).value_or(Bytes()));
                    if (!whole) whole = delivered;
                    ASSERT_TRUE(whole) << "a run without faults comes first";
                    if (!isMade && maker.kind != kTimeFrequency) {
                      EXPECT_FALSE(delivered);
                    } else if (delivered) {
                      ExpectNothingWrong(*delivered, *whole);
                    }
                  });
  }
}

// The save gives the same result as ever, and the recording knows better.
TEST(FileFaults, ACreatedRecordingKnowsWhatDidNotArrive) {
  Bytes whole;
  bool isWhole = false;
  FailEveryCall([](MemoryFiles&) {},
                [&](Host& host, FaultKind) {
                  CRecordingFile recording(1, host);
                  recording.setup->channelCount = 2;
                  recording.GetEventTable().Append(EventRecord{});
                  const std::vector<float> values(40, 3.0F);
                  const bool isCreated = recording.CreateFile(kPath, 2);
                  for (int i = 0; i < 3; ++i)
                    recording.AppendContinuousFloat(values.data(), 40 * sizeof(float));
                  const bool isSaved = recording.SaveAndClose(0);
                  EXPECT_EQ(isSaved, isCreated);
                  isWhole = recording.IsSavedWhole();
                  return isSaved && isWhole;
                },
                [&](MemoryFiles& memory, bool isDone) {
                  const Bytes now = memory.Contents(kPath).value_or(Bytes());
                  if (whole.empty()) whole = now;
                  if (isWhole) {
                    EXPECT_TRUE(isDone);
                    EXPECT_TRUE(now == whole);
                  }
                });
}

TEST(FileFaults, ASavedSetupIsTheOldOneOrTheNewOne) {
  const auto save = [](Host& host, std::int32_t rate) {
    CSetup setup(0, host);
    setup.ResetToDefaults();
    setup.sampleRate = rate;
    return setup.SaveTo("s.ast", host.files);
  };
  TestHost test;
  ASSERT_TRUE(save(test.host, 200));
  const Bytes changed = *test.memory.Contents("s.ast");
  ASSERT_TRUE(save(test.host, 100));
  const Bytes old = *test.memory.Contents("s.ast");
  FailEveryCall([&](MemoryFiles& memory) { memory.Put("s.ast", old); },
                [&](Host& host, FaultKind) { return save(host, 200); },
                [&](MemoryFiles& memory, bool isSaved) {
                  EXPECT_TRUE(memory.Contents("s.ast") == (isSaved ? changed : old));
                });
}

TEST(FileFaults, FullDiskLeavesTheOldFileAlone) {
  const Bytes old = RecordingsOfEveryKind().front().builder.Build();
  for (const std::uint64_t room : {10u, 1000u, 2000u, 3000u, 20000u}) {
    SCOPED_TRACE(room);
    OpenedRecording opened(old, kPath, 1);
    opened.test.memory.LimitSize(room);
    EXPECT_FALSE(opened.recording.SaveAndClose(0));
    EXPECT_EQ(opened.test.memory.Contents(kPath), old);
    EXPECT_FALSE(opened.test.memory.Exists("test.rec.0.new"));
  }
}

// A power cut may come right behind the new name.
TEST(FileFaults, WhatTakesAFilesPlaceIsOnTheDiskBefore) {
  MemoryFiles memory;
  FailingFiles files(memory);
  const auto writeTwice = [](File& file) { return file.Write(Bytes(3)) && file.Write(Bytes(4)); };
  ASSERT_TRUE(ReplaceWhole(files, kPath, writeTwice));
  std::optional<FileOperation> lastOfTheFile;
  for (const FileCall& call : files.Calls()) {
    if (call.operation == FileOperation::kReplace) break;
    if (call.path != kPath) lastOfTheFile = call.operation;
  }
  EXPECT_EQ(lastOfTheFile, FileOperation::kFlush);
}

}  // namespace
}  // namespace wavelock

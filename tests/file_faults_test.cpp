// Whatever call to the disk fails while a recording or a setup is opened, read, made or saved: the operation
// ends with a result, what is delivered is right, and a path holds the old file or a whole new one.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/delivered.h"
#include "tests/support/every_kind.h"
#include "tests/support/failing_files.h"
#include "tests/support/opened_recording.h"
#include "tests/support/read_everything.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

constexpr char kPath[] = "test.rec";

struct Fault {
  std::size_t call = 0;
  FaultKind kind = FaultKind::kError;
  bool forEver = false;
};

// Runs `operation` with each of its calls to the disk failing in turn, and hands what the disk then holds to
// `check`, with what the operation gave. `prepare` fills the disk for every run.
void FailEveryCall(const std::function<void(MemoryFiles&)>& prepare,
                   const std::function<bool(Host&, FaultKind)>& operation,
                   const std::function<void(MemoryFiles&, bool isDone)>& check) {
  const auto run = [&](const Fault* fault) {
    MemoryFiles memory;
    prepare(memory);
    FailingFiles failing(memory);
    if (fault != nullptr && fault->forEver) failing.FailFrom(fault->call, fault->kind);
    if (fault != nullptr && !fault->forEver) failing.FailAt(fault->call, fault->kind);
    TestHost test(failing);
    const bool isDone = operation(test.host, fault != nullptr ? fault->kind : FaultKind::kError);
    check(memory, isDone);
    return failing.Calls().size();
  };
  const std::size_t calls = run(nullptr);
  for (std::size_t call = 0; call < calls; ++call) {
    for (const Fault& fault : {Fault{call, FaultKind::kError, false}, Fault{call, FaultKind::kError, true},
                               Fault{call, FaultKind::kShort, false}}) {
      SCOPED_TRACE(testing::Message() << "call " << call << " of " << calls << ", for ever " << fault.forEver
                                      << ", kind " << static_cast<int>(fault.kind));
      run(&fault);
      if (testing::Test::HasFailure()) return;
    }
  }
}

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
                    return maker.make(recording, kPath);
                  },
                  [&](MemoryFiles& memory, bool isMade) {
                    const auto delivered = DeliveredBy(memory.Contents(kPath).value_or(Bytes()));
                    if (!whole) whole = delivered;
                    ASSERT_TRUE(whole) << "a run without faults comes first";
                    if (!isMade && maker.name != "pairs") {
                      EXPECT_FALSE(delivered);
                    } else if (delivered) {
                      ExpectNothingWrong(*delivered, *whole);
                    }
                  });
  }
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

// A setup whose sections cannot be read keeps its values for them.
TEST(FileFaults, LoadingASetupEnds) {
  TestHost test;
  const Bytes whole = [&] {
    CSetup setup(0, test.host);
    setup.ResetToDefaults();
    EXPECT_TRUE(setup.SaveTo("s.ast", test.memory));
    return *test.memory.Contents("s.ast");
  }();
  FailEveryCall([&](MemoryFiles& memory) { memory.Put("s.ast", whole); },
                [](Host& host, FaultKind) {
                  CSetup setup(0, host);
                  setup.setupFileName = "s.ast";
                  return setup.LoadFile();
                },
                [&](MemoryFiles& memory, bool) { EXPECT_TRUE(memory.Contents("s.ast") == whole); });
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

}  // namespace
}  // namespace wavelock

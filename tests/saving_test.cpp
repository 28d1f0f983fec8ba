// What saving a created recording tells, and what it leaves behind beside the bytes.
#include <gtest/gtest.h>

#include "tests/support/every_kind.h"
#include "tests/support/test_host.h"

namespace wavelock {
namespace {

TEST(Saving, ValuesThatWereLimitedAreToldOnce) {
  TestHost test;
  CRecordingFile recording(0, test.host);
  recording.setup->channelCount = 1;
  recording.setup->channels[0].countScale = recording.setup->channels[0].channelScale = 1;
  for (const float value : {40'000.0f, 4.0f}) {
    ASSERT_TRUE(recording.CreateFile("a.rec", 2));
    ASSERT_TRUE(recording.AppendContinuousFloat(&value, sizeof value));
    ASSERT_TRUE(recording.SaveAndClose(0));
    EXPECT_EQ(test.user.messages.size(), 1u) << value;
  }
}

TEST(Saving, FilesAreReadOnlyWhenTheProfileWantsIt) {
  for (const int wanted : {0, 1}) {
    TestHost test;
    test.profile.SetInt(profile::kState, profile::kAutoReadOnly, wanted);
    CRecordingFile recording(1, test.host);
    ASSERT_TRUE(MakersOfEveryKind().front().make(recording, "a.rec"));
    EXPECT_EQ(test.memory.Status("a.rec")->readOnly, wanted != 0);
    ASSERT_TRUE(recording.OpenFile("a.rec"));
    EXPECT_EQ(recording.IsFileWritable(), wanted == 0);
    EXPECT_EQ(recording.SaveAndClose(0), wanted == 0);
  }
}

}  // namespace
}  // namespace wavelock

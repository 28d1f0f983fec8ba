// Headers of every generation are brought to the current form, whatever they lack.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

RecordingBuilder Small(int revision) {
  return RecordingBuilder().Revision(revision).Channels(2).Rate(250).Points(4).Times(0, 0.016f).Samples(
      {1, 2, 3, 4});
}

TEST(HeaderGenerations, BlocksBelowRevisionFourAlwaysHold32Channels) {
  OpenedRecording old(Small(3));
  EXPECT_EQ(old.recording.dataStart, 3300);
  EXPECT_EQ(old.recording.headerRevision, 3);
  EXPECT_EQ(old.Channel(31).enabled, 1);
  EXPECT_THAT(old.Raw<std::int16_t>(0, 2), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(OpenedRecording(Small(4)).recording.dataStart, 900 + 2 * 75);

  // Channels beyond those in the block exist and read as 0 microvolts.
  OpenedRecording many(RecordingBuilder(Small(3)).PutU16(370, 40));
  EXPECT_TRUE(many.isOpen);
  EXPECT_EQ(many.Channel(35).sensitivity, 0.0f);
}

TEST(HeaderGenerations, OneCalibrationServesAllChannelsBelowRevisionSeven) {
  const auto withOwn = [](int revision) {
    return RecordingBuilder(Small(revision))
        .PutF64(378, 20.48)
        .PutChannelF32(0, 59, 409.6f)
        .PutChannelF32(1, 59, 0);
  };
  OpenedRecording six(withOwn(6));
  EXPECT_EQ(six.Channel(0).calibration, 20.48f);
  EXPECT_EQ(six.Channel(1).calibration, 20.48f);
  OpenedRecording seven(withOwn(7));
  EXPECT_EQ(seven.Channel(0).calibration, 409.6f);
  EXPECT_EQ(seven.Channel(1).calibration, 20.48f);
  EXPECT_EQ(seven.Channel(1).physicalChannel, 1);
}

TEST(HeaderGenerations, SweepsOfTheFirstRevisionsCountForEveryChannel) {
  OpenedRecording one(RecordingBuilder(Small(1)).FileForm(2).PutI16(255, 9).PutU16(362, 5));
  EXPECT_EQ(one.Channel(0).sweeps, 9);
  EXPECT_EQ(one.Channel(0).sensitivity, 1.0f);
  EXPECT_EQ(one.Header().fixField862, 0x1820);
  OpenedRecording average(RecordingBuilder(Small(1)).Averaged().PutU16(362, 5));
  EXPECT_EQ(average.Channel(0).sweeps, 5);
  EXPECT_EQ(average.Header().summaryB, 5);
}

TEST(HeaderGenerations, GainsHadAnotherBaseBelowRevisionTwelve) {
  EXPECT_EQ(OpenedRecording(Small(11).PutI16(683, 150)).Header().gainBase, 30);
  EXPECT_EQ(OpenedRecording(Small(12).PutI16(683, 150)).Header().gainBase, 150);
  OpenedRecording current(Small(16).PutI16(683, 150).PutChannelU8(0, 63, 2).PutChannelU8(1, 63, 7));
  EXPECT_EQ(current.Setup().channels[0].gain, 500.0f);
  EXPECT_EQ(current.Setup().channels[1].gain, 0.0f);
}

TEST(HeaderGenerations, TheViewStaysInsideTheAxis) {
  OpenedRecording outside(Small(16).PutF32(513, -1).PutF32(517, 9));
  EXPECT_EQ(outside.Header().viewStart, 0.0f);
  EXPECT_EQ(outside.Header().viewEnd, 0.016f);
  OpenedRecording reversed(Small(16).PutF32(513, 0.012f).PutF32(517, 0.004f));
  EXPECT_EQ(reversed.Header().viewStart, 0.0f);
  EXPECT_EQ(reversed.Header().viewEnd, 0.016f);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(OpenedRecording(Small(16).PutF32(513, nan).PutF32(517, nan)).isOpen);
}

TEST(HeaderGenerations, ChannelsAreEnabledWhenNoneIs) {
  OpenedRecording none(Small(16).PutChannelU8(0, 13, 0).PutChannelU8(1, 13, 0).PutChannelU8(1, 10, 7));
  EXPECT_EQ(none.Channel(0).enabled, 1);
  EXPECT_EQ(none.Channel(1).channelLink, -1);
  OpenedRecording some(Small(16).PutChannelU8(0, 13, 0).PutChannelU8(1, 13, 1).PutChannelU8(1, 10, 7));
  EXPECT_EQ(some.Channel(0).enabled, 0);
  EXPECT_EQ(some.Channel(1).channelLink, 7);
  EXPECT_EQ(some.Setup().channels[0].disabled, 1);
}

TEST(HeaderGenerations, SpectraWithoutAKnownScaleAreRefused) {
  const auto spectrum = [](int revision) {
    return RecordingBuilder(Small(revision)).Averaged().FrequencyDomain().PutF32(509, 100).PutF32(800, 1);
  };
  EXPECT_FALSE(OpenedRecording(spectrum(9).PutU8(559, 2)).isOpen);
  EXPECT_FALSE(OpenedRecording(spectrum(10).FileForm(3).PutU8(675, 1)).isOpen);
  OpenedRecording squared(spectrum(9).PutU8(675, 2).Sensitivity(0, 3));
  EXPECT_EQ(squared.Channel(0).sensitivity, 9.0f);
}

TEST(HeaderGenerations, TheOldestLayoutIsConvertedFieldByField) {
  for (const int firstByte : {0, 2, 3, 5, 7}) {
    SCOPED_TRACE(firstByte);
    OpenedRecording old(RecordingBuilder()
                            .OldestLayout(firstByte)
                            .ShortBlock("short text", 1.5f, 7)
                            .NoteBlock("a note")
                            .AcquisitionMode(3)
                            .Labels({"FP1", "FP2"})
                            .Rate(200)
                            .Samples({1, 2, 3, 4}));
    const bool isShort = firstByte == 2 || firstByte == 5;
    const bool hasNote = firstByte == 3 || firstByte == 5;
    ASSERT_TRUE(old.isOpen);
    EXPECT_EQ(old.recording.dataStart, (isShort ? 2167 : 2363) + (hasNote ? 66 : 0));
    EXPECT_EQ(old.recording.headerRevision, 0);
    EXPECT_EQ(old.Header().versionText.View(), "Version 2.0");
    EXPECT_EQ(old.Setup().channels[1].label, "FP2");
    EXPECT_EQ(old.Setup().sampleRate, 200);
    EXPECT_EQ(old.Header().dashTextA.View(), hasNote ? "a note" : "");
    EXPECT_EQ(old.Header().subjectTextG.View(), isShort ? "short text" : "");
    EXPECT_THAT(old.Raw<std::int16_t>(0, 2), ElementsAre(1, 2, 3, 4));
  }
}

TEST(HeaderGenerations, ChannelCountsBeyondALayoutAreRefused) {
  EXPECT_TRUE(OpenedRecording(RecordingBuilder().OldestLayout(0).AcquisitionMode(3).Channels(64)).isOpen);
  const auto refusal = [](int count) {
    OpenedRecording old(RecordingBuilder().OldestLayout(0).PutI16(235, static_cast<std::int16_t>(count)),
                        "a.rec");
    EXPECT_FALSE(old.isOpen);
    return NumbersOf(old.test.user.messages);
  };
  EXPECT_THAT(refusal(65), ElementsAre(1769, 1766));
  EXPECT_THAT(refusal(-1), ElementsAre(1769, 1766));
  EXPECT_THAT(refusal(516), ElementsAre(1762, 1769, 1766));
  EXPECT_TRUE(OpenedRecording(RecordingBuilder().Channels(512)).isOpen);
  EXPECT_FALSE(OpenedRecording(Small(16).PutU16(370, 513)).isOpen);
  EXPECT_FALSE(OpenedRecording(Small(16).PutU16(370, 0)).isOpen);
}

}  // namespace
}  // namespace wavelock

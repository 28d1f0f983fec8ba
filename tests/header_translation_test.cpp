// The setup of a recording says what its header says, in the setup's own units.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(HeaderTranslation, RatesAboveTheCodeComeInHundreds) {
  EXPECT_EQ(OpenedRecording(RecordingBuilder().PutU16(376, 60000)).Setup().sampleRate, 60000);
  EXPECT_EQ(OpenedRecording(RecordingBuilder().PutU16(376, 60001)).Setup().sampleRate, 100);
  EXPECT_EQ(OpenedRecording(RecordingBuilder().PutU16(376, 65535)).Setup().sampleRate, 553500);
}

TEST(HeaderTranslation, TheAxisOfASetLeadsOverItsNominalRate) {
  const auto epochs = [](int rate) {
    return RecordingBuilder().Epoched().Rate(rate).Points(601).Times(-0.1f, 0.5f);
  };
  OpenedRecording close(epochs(1000));
  EXPECT_EQ(close.Setup().sampleRate, 1002);
  EXPECT_THAT(close.test.user.messages, IsEmpty());
  OpenedRecording far(epochs(900));
  EXPECT_EQ(far.Setup().sampleRate, 1002);
  EXPECT_THAT(NumbersOf(far.test.user.messages), ElementsAre(1771));
  OpenedRecording slow(RecordingBuilder().Epoched().Rate(50).Points(80).Times(0, 1));
  EXPECT_THAT(slow.test.user.messages, IsEmpty());
}

TEST(HeaderTranslation, DatesComeFinishedOrAsDigits) {
  const auto date = [](std::string_view stored) {
    return OpenedRecording(RecordingBuilder().Date(stored)).Setup().subject->recordDate;
  };
  EXPECT_EQ(date("06/23/2005"), "06/23/2005");
  EXPECT_EQ(date("06/23/05"), "06/23/05");
  EXPECT_EQ(date("06232005"), "06/23/2005");
  EXPECT_EQ(date("06"), "06/");
  EXPECT_EQ(date(""), "Unspecified");
}

TEST(HeaderTranslation, ChannelsTakeBoxesFiltersAndRepairs) {
  OpenedRecording recording(RecordingBuilder()
                                .Channels(2)
                                .PutF32(816, 64)            // width of a box
                                .PutF32(820, 3)             // height, too small
                                .PutChannelF32(0, 19, 320)  // x
                                .PutChannelF32(0, 23, 13)   // y
                                .PutChannelU8(1, 67, 1)     // twice the common size
                                .PutChannelU8(0, 65, 15)    // low-pass index beyond the table
                                .PutChannelU8(1, 65, 2)
                                .PutChannelU8(0, 64, 1)   // high-pass index
                                .PutChannelU8(1, 66, 3)   // selected on layout 3
                                .PutChannelU16(1, 15, 0)  // sweeps
                                .PutF32(497, 0.0005f));   // displayMin
  const CSetup& setup = recording.Setup();
  EXPECT_EQ(setup.channels[0].boxLeft[7], 0.5f);
  EXPECT_FLOAT_EQ(setup.channels[0].boxRight[7], 0.6f);
  EXPECT_EQ(setup.channels[0].boxTop[0], 0.0f);
  EXPECT_FLOAT_EQ(setup.channels[0].boxBottom[0], 0.04f);
  EXPECT_FLOAT_EQ(setup.channels[1].boxRight[0] - setup.channels[1].boxLeft[0], 0.2f);
  EXPECT_FLOAT_EQ(setup.channels[1].zoomRight[0] - setup.channels[1].zoomLeft[0], 0.4f);
  for (const SetupChannel& channel : setup.Channels()) {
    EXPECT_EQ(channel.lowpassHz, 70.0f);
    EXPECT_EQ(channel.highpassHz, 0.01001f);
  }
  EXPECT_EQ(setup.channels[0].layoutSelected[3], 0);
  EXPECT_EQ(setup.channels[1].layoutSelected[3], 1);
  EXPECT_EQ(setup.channels[1].layoutSelected[0], 1);
  EXPECT_EQ(setup.channels[1].sweeps, 1);
  EXPECT_EQ(recording.Channel(1).sweeps, 1);
  EXPECT_EQ(recording.Header().displayMin, 0.0f);
  EXPECT_EQ(setup.displayMin, 0.0005f);
}

TEST(HeaderTranslation, SpectraTakeTheirAxisFromBins) {
  OpenedRecording epochs(
      RecordingBuilder().Epoched().FrequencyDomain().Rate(256).Points(64).PutF32(800, 2).PutF32(509, 128));
  EXPECT_EQ(epochs.Setup().spectrumPoints, 128);
  EXPECT_EQ(epochs.Setup().actualRate, 256.0f);
  EXPECT_EQ(epochs.Setup().hasImaginary, 1);
  OpenedRecording pairs(
      RecordingBuilder().TimeFrequency().FrequencyDomain().Rate(256).Points(64).PutF32(800, 20.0f));
  EXPECT_EQ(pairs.Setup().spectrumPoints, 16) << "13 bins are nearer to 16 than to 8";
}

}  // namespace
}  // namespace wavelock

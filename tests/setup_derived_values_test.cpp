// Points, times and axes of a setup follow from each other with exact rounding, and stay defined whatever a
// file has put into the fields.
#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "tests/support/test_host.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

class SetupDerivedValues : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(setup_->ResetToDefaults()); }

  // One that begins at 0, with the rate of a recording.
  void UseAxis(std::int32_t points, float rate) {
    setup_->fromRecording = 1;
    setup_->actualRate = rate;
    setup_->pointCount = points;
    setup_->timeStart = 0;
  }

  TestHost host_;
  std::unique_ptr<CSetup> setup_ = std::make_unique<CSetup>(0, host_.host);
};

TEST_F(SetupDerivedValues, TimesRoundToFivePlacesAwayFromZero) {
  EXPECT_EQ(Round5(0.000005), 0.00001);
  EXPECT_EQ(Round5(-0.000005), -0.00001);
  EXPECT_EQ(Round5(0.0000049), 0.0);
  EXPECT_EQ(Round5(1e9), 21474.83647);
  EXPECT_EQ(Round5(-kInfinity), -21474.83648);
  EXPECT_EQ(Round5(kNotANumber), 0.0);
}

TEST_F(SetupDerivedValues, PointsAndTimesOfAnAxisWithZeroInside) {
  EXPECT_EQ(setup_->TimeOfPoint(0), -0.1);
  EXPECT_EQ(setup_->TimeOfPoint(-5), -0.1);
  EXPECT_EQ(setup_->TimeOfPoint(600), 0.5);
  EXPECT_EQ(setup_->TimeOfPoint(700), 0.5);
  EXPECT_EQ(setup_->PointOfTime(-0.1), 1);
  EXPECT_EQ(setup_->PointOfTime(0.0), 101);
  EXPECT_EQ(setup_->PointOfTime(9.0), 601);
  EXPECT_EQ(setup_->PointOfTime(-9.0), 0);
  EXPECT_EQ(setup_->ZeroPoint(), 100);
  EXPECT_EQ(setup_->AxisEndMs(), 500.0);
  EXPECT_EQ(setup_->AxisEnd(), 0.5);
  UseAxis(100, 500);
  EXPECT_EQ(setup_->PointOfTime(0.0010), 2);
}

TEST_F(SetupDerivedValues, ZeroPointIsNegativeBehindZeroAndNoneInASpectrum) {
  setup_->timeStart = 0.2F;
  EXPECT_EQ(setup_->ZeroPoint(), -200);
  setup_->frequencyDomain = 1;
  EXPECT_EQ(setup_->ZeroPoint(), 0);
  setup_->frequencyDomain = 0;
  setup_->sampleRate = -1000;
  EXPECT_EQ(setup_->ZeroPoint(), 0);
}

TEST_F(SetupDerivedValues, RecordingsKeepSpectrumPointsInLine) {
  setup_->GetPoints();
  EXPECT_EQ(setup_->spectrumPoints, 256);
  setup_->fromRecording = 1;
  EXPECT_EQ(setup_->GetPoints(), 601);
  EXPECT_EQ(setup_->spectrumPoints, 601);
  setup_->frequencyDomain = 1;
  setup_->spectrumPoints = 33;
  EXPECT_EQ(setup_->GetPoints(), 33);
  EXPECT_EQ(setup_->AxisEndMs(), setup_->TimeOfPoint(32) * 1000.0);
}

TEST_F(SetupDerivedValues, WholeRateOfARecordingIsItsRateRounded) {
  UseAxis(100, 256.4F);
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->sampleRate, 256);
  setup_->actualRate = 256.5F;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->sampleRate, 257);
  EXPECT_EQ(setup_->actualRate, 256.5F);
}

TEST_F(SetupDerivedValues, WindowsAreCutToTheAxis) {
  setup_->displayStart = -200;
  setup_->displayEnd = 300;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->displayStart, -100.0F);
  EXPECT_EQ(setup_->displayEnd, 300.0F);
  setup_->displayStart = 600;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->displayStart, -100.0F);
  EXPECT_EQ(setup_->displayEnd, 500.0F);

  setup_->spectrumStart = 600;
  setup_->spectrumDisplayEnd = 900;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->spectrumStart, 0.0F);
  EXPECT_EQ(setup_->spectrumEnd, 498.33334F) << "UpdateBins has already made the start fit";
  EXPECT_EQ(setup_->spectrumDisplayEnd, 499.99722F);
}

TEST_F(SetupDerivedValues, SpectrumEndsAtItsLastBin) {
  setup_->dataKind = 0;
  setup_->frequencyDomain = 1;
  setup_->spectrumPoints = 500;
  setup_->pointCount = 201;
  setup_->spectrumDisplayEnd = 1000;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->binWidth, 2.0F);
  EXPECT_EQ(setup_->spectrumEnd, 400.0F);
  EXPECT_EQ(setup_->spectrumDisplayEnd, 402.0F);
  EXPECT_EQ(setup_->AxisEnd(), 400.0);
  setup_->pointCount = 1000;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->spectrumEnd, 500.0F) << "half of the rate";
}

TEST_F(SetupDerivedValues, BinsCountWhatLiesBetweenTheEndsOfTheSpectrum) {
  UseAxis(500, 1000);
  setup_->spectrumStart = 100;
  setup_->spectrumEnd = 201;
  EXPECT_EQ(setup_->UpdateBins(), 52);
  setup_->spectrumEnd = 50;
  EXPECT_EQ(setup_->UpdateBins(), 251);
  EXPECT_EQ(setup_->spectrumStart, 0.0F);
}

TEST_F(SetupDerivedValues, KChannelIsTheFirstLabelWithAK) {
  EXPECT_EQ(setup_->KChannel(), 0);
  setup_->channels[40].label = "K";
  EXPECT_EQ(setup_->KChannel(), 0) << "not in use";
  setup_->channels[9].label = "EKG";
  EXPECT_EQ(setup_->KChannel(), 9);
  setup_->channels[7].label = "ek";
  EXPECT_EQ(setup_->KChannel(), 7);
}

TEST_F(SetupDerivedValues, PositionsSpreadFromTenUnitsOn) {
  setup_->channelCount = 5;
  setup_->channels[0].channelType = 1;
  setup_->channels[0].position = {900, 900, 900};
  setup_->channels[1].position = {1, 2, 3};
  setup_->channels[4].position = {1, 8, 11};
  EXPECT_TRUE(setup_->PositionsSpread());
  setup_->channels[4].position = {1, 8, 10.99F};
  EXPECT_FALSE(setup_->PositionsSpread());
  setup_->channels[4].position = {1, 8, 11};
  setup_->channels[4].channelFlagC = 1;
  EXPECT_FALSE(setup_->PositionsSpread());
  setup_->channels[4].channelFlagC = 0;
  setup_->channelCount = 4;
  EXPECT_FALSE(setup_->PositionsSpread());
  EXPECT_FALSE(std::make_unique<CSetup>(0, host_.host)->PositionsSpread());
}

TEST_F(SetupDerivedValues, SlotsFollowTheAxis) {
  WaveformSlot& slot = setup_->waveforms.slots[9];
  slot.slotField28 = 900;
  slot.slotField36 = -900;
  setup_->AdjustSlots(-100, 500, 1000);
  EXPECT_EQ(slot.slotStart, -100.0F);
  EXPECT_EQ(slot.slotEnd, 500.0F);
  EXPECT_EQ(slot.slotPoints, 601);
  EXPECT_EQ(slot.slotField24, -10.0F);
  EXPECT_EQ(slot.slotField28, 500.0F);
  EXPECT_EQ(slot.slotField36, -100.0F);
  EXPECT_EQ(slot.slotField52, -100.0F);
  EXPECT_EQ(slot.slotField64, 500.0F);

  slot.slotField52 = 0;
  slot.slotField64 = 100;
  setup_->AdjustSlots(-100, 500, 1000);
  EXPECT_EQ(slot.slotField52, 0.0F) << "the span has not changed";
  EXPECT_EQ(slot.slotField64, 100.0F);
}

// What the results are matters little here; that there are some, does.
TEST_F(SetupDerivedValues, HostileFieldsStayDefined) {
  for (const float odd : {0.0F, kInfinity, -kInfinity, kNotANumber, 1e-38F, -3e38F}) {
    for (const std::int32_t count : {kLeast, -1, 0, 1, kLargest}) {
      for (const std::int32_t flags : {0, 1, 2, 3}) {
        ASSERT_TRUE(setup_->ResetToDefaults());
        setup_->dataKind = 0;
        setup_->fromRecording = flags & 1;
        setup_->frequencyDomain = flags & 2;
        setup_->actualRate = setup_->timeStart = odd;
        setup_->sampleRate = setup_->pointCount = setup_->spectrumPoints = setup_->channelCount = count;
        setup_->PointOfTime(odd);
        setup_->TimeOfPoint(count);
        setup_->AxisEndMs();
        setup_->ZeroPoint();
        setup_->UpdateTimeAxis();
        setup_->AdjustSlots(odd, -odd, count);
        setup_->LayoutGrid(0);
        setup_->KChannel();
      }
    }
  }
}

TEST_F(SetupDerivedValues, EmptyAxisEndsOneStepBeforeItsStart) {
  UseAxis(0, 250);
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->timeEnd, -0.004F);
  EXPECT_EQ(setup_->displayEnd, -4.0F);
  EXPECT_EQ(setup_->binWidth, kInfinity);
}

}  // namespace
}  // namespace wavelock

// A setup in memory: what a reset brings back, what a copy holds, and points, times and places that follow
// from other fields, defined whatever a file has put into these.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "tests/support/setup_values.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

class SetupInMemory : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(setup_->ResetToDefaults()); }

  std::unique_ptr<CSetup> Empty() { return std::make_unique<CSetup>(0, host_.host); }
  std::unique_ptr<CSetup> Copy() const { return std::make_unique<CSetup>(*setup_); }

  TestHost host_;
  std::unique_ptr<CSetup> setup_ = Empty();
};
using SetupDefaults = SetupInMemory;
using SetupCopy = SetupInMemory;
using SetupDerivedValues = SetupInMemory;

// ---- a new one

TEST_F(SetupDefaults, NewSetupHasNoChannelsAndKnowsTheProfile) {
  host_.profile.SetString(profile::kState, profile::kSetupFile, "mine.ast");
  host_.profile.SetString(profile::kInstitution, profile::kOperator, "operator");
  const auto setup = Empty();
  EXPECT_FALSE(setup->channels || setup->channelGroups[2] || setup->channelsSnapshot);
  EXPECT_TRUE(setup->Channels().empty());
  EXPECT_EQ(setup->setupFileName, "mine.ast");
  EXPECT_EQ(setup->subject->operatorName, "operator");
}

TEST_F(SetupDefaults, ResetBringsEverySetupBackButItsNames) {
  const FieldValues fresh = ValuesOf(*setup_);
  Scramble(*setup_, 1);
  setup_->setupTitle = "title";
  setup_->setupFileName = "name.ast";
  setup_->modified = 1;
  ASSERT_TRUE(setup_->ResetToDefaults());
  EXPECT_EQ(std::exchange(setup_->setupTitle, ""), "title");
  EXPECT_EQ(std::exchange(setup_->setupFileName, "default.ast"), "name.ast");
  EXPECT_EQ(std::exchange(setup_->modified, 0), 1);
  EXPECT_EQ(ValuesOf(*setup_), fresh);
}

TEST_F(SetupDefaults, SingleResetsTouchOnlyTheirOwn) {
  setup_->artifactLabels[10].code = 7;
  setup_->artifactLabelCount = 11;
  setup_->channels[0].label = "K1";
  setup_->channels[3].label = "ekg";
  setup_->bandTable[0].rowHigh = setup_->bandTable[4].rowHigh = 99;
  setup_->displayOrder[1][5] = setup_->displayMark[1][5] = 7;
  setup_->ResetDisplayOrder();
  EXPECT_EQ(setup_->displayOrder[1][5], 5);
  EXPECT_EQ(setup_->displayMark[1][5], 0);
  setup_->ResetBandTable();
  EXPECT_NE(setup_->bandTable[0].rowHigh, 99);
  EXPECT_EQ(setup_->bandTable[4].rowHigh, 99);
  setup_->ResetArtifactLabels();
  EXPECT_EQ(setup_->artifactLabels[10].code, 7);
  EXPECT_EQ(setup_->artifactLabelCount, 10);
  for (const std::int32_t channel : {0, 515, -1}) setup_->ResetChannel(channel);
  EXPECT_EQ(setup_->channels[0].label, "1");
  setup_->ResetParameterBlocks();
  EXPECT_EQ(setup_->paramsA.aChannel2, 3);
}

// ---- its copies

TEST_F(SetupCopy, HoldsEveryField) {
  ASSERT_TRUE(setup_->MakeChannelGroup(1));
  setup_->derivedCount = {0, 4, 0};
  Scramble(*setup_, 2);
  setup_->channelCount = 32;
  setup_->derivedCount = {0, 4, 0};
  const auto copy = Copy();
  // What is to differ is made the same before everything is compared.
  setup_->modified = 0;
  setup_->derivedBuild = {};
  setup_->waveforms.ClearHandles();
  FieldValues actual = ValuesOf(*copy);
  std::erase_if(actual, [](const FieldValue& field) { return field.path.starts_with("channelsSnapshot"); });
  EXPECT_EQ(actual, ValuesOf(*setup_));
}

TEST_F(SetupCopy, OwnsItsChannelsAndKeepsASnapshotOfThem) {
  ASSERT_TRUE(setup_->MakeChannelGroup(2));
  setup_->derivedCount[2] = 3;
  setup_->channelGroups[2][0].label = "group";
  const auto copy = Copy();
  setup_->channels[0].label = setup_->channelGroups[2][0].label = "source";
  setup_->subject->operatorName = "source";
  EXPECT_EQ(copy->channels[0].label, "1");
  EXPECT_EQ(copy->channelGroups[2][0].label, "group");
  EXPECT_EQ(copy->subject->operatorName, "");
  EXPECT_EQ(copy->channels.Size(), 32u);
  EXPECT_EQ(copy->channelGroups[2].Size(), 3u);
  EXPECT_FALSE(copy->channelGroups[0]);

  copy->channels[0].label = "copy";
  EXPECT_EQ(copy->channelsSnapshot[0].label, "1");
  EXPECT_EQ(copy->channelsSnapshot.Size(), 32u);
  EXPECT_FALSE(setup_->channelsSnapshot);

  copy->channelCount = 40;
  const CSetup second(*copy);
  EXPECT_EQ(second.channels[31].label, "32");
  EXPECT_EQ(second.channels[39].label, "") << "counted, and not there";
}

TEST_F(SetupCopy, ChannelsAreMadeOnlyForCountsThatCanBe) {
  for (const std::int32_t count : {-1, 0, 515, 100000}) {
    setup_->channelCount = count;
    EXPECT_FALSE(Copy()->channels || Copy()->channelsSnapshot) << count;
  }
  setup_->channelCount = 514;
  EXPECT_EQ(Copy()->channels[513].label, "514");
  EXPECT_FALSE(CSetup(*Empty()).channels) << "the source has none";

  for (const std::int32_t group : {3, -1}) EXPECT_FALSE(setup_->MakeChannelGroup(group));
  setup_->channelCapacity = -1;
  EXPECT_FALSE(setup_->MakeChannels() || setup_->channels || setup_->MakeChannelGroup(0));
  setup_->channelCapacity = 0;
  EXPECT_TRUE(setup_->MakeChannels());
  EXPECT_TRUE(setup_->channels) << "an empty array is not none";
}

// ---- its fields

TEST(FixedText, IsCutToItsWidthAndLeavesNothingBehindIt) {
  FixedText<10> text = "Default";
  text.Assign("a longer text");
  EXPECT_EQ(text, "a longer ");
  text.Assign(std::string_view("x\0hidden", 8));
  EXPECT_EQ(text, FixedText<10>("x")) << "bytes of an earlier text lie behind the NUL";
  text.Assign({});
  EXPECT_TRUE(text.Empty());
}

// Structures without padding: when the visited values fill one, none is missing.
template <class Structure>
void ExpectEveryByteVisited() {
  const auto structure = std::make_unique<Structure>();
  std::size_t bytes = 0;
  std::set<std::string> paths;
  VisitLeaves("", *structure, [&](const std::string& path, const auto& value) {
    bytes += sizeof value;
    EXPECT_TRUE(paths.insert(path).second) << path << " is visited twice";
  });
  EXPECT_EQ(bytes, sizeof(Structure));
}

TEST(SetupFields, AreVisitedOnceEach) {
  ExpectEveryByteVisited<SetupFields>();
  ExpectEveryByteVisited<SetupChannel>();
  ExpectEveryByteVisited<ParamsA>();
  ExpectEveryByteVisited<ParamsB>();
  ExpectEveryByteVisited<ParamsC>();
  ExpectEveryByteVisited<AuxInputs>();
  ExpectEveryByteVisited<WaveformSet>();
}

// ---- points and times

TEST_F(SetupDerivedValues, TimesRoundToFivePlacesAwayFromZero) {
  for (const auto& [value, rounded] : {std::pair{0.000005, 0.00001},
                                       {-0.000005, -0.00001},
                                       {0.0000049, 0.0},
                                       {1e9, 21474.83647},
                                       {-double{kInfinity}, -21474.83648},
                                       {double{kNotANumber}, 0.0}})
    EXPECT_EQ(Round5(value), rounded);
}

TEST_F(SetupDerivedValues, PointsAndTimesStayOnTheAxis) {
  for (const auto& [point, time] : {std::pair{0, -0.1}, {-5, -0.1}, {600, 0.5}, {700, 0.5}})
    EXPECT_EQ(setup_->TimeOfPoint(point), time);
  for (const auto& [time, point] : {std::pair{-0.1, 1}, {0.0, 101}, {0.0006, 102}, {9.0, 601}, {-9.0, 0}})
    EXPECT_EQ(setup_->PointOfTime(time), point);
  EXPECT_EQ(setup_->ZeroPoint(), 100);
  setup_->timeStart = 0.2F;
  EXPECT_EQ(setup_->ZeroPoint(), -200);
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
  EXPECT_EQ(setup_->AxisEndMs(), setup_->TimeOfPoint(32) * 1000.0);
  setup_->fromRecording = 0;
  setup_->pointCount = 11;
  EXPECT_EQ(setup_->AxisEndMs(), setup_->TimeOfPoint(10) * 1000.0);
}

TEST_F(SetupDerivedValues, WindowsAreCutToTheAxisAndEmptyOnesBecomeIt) {
  setup_->displayStart = -200;
  setup_->displayEnd = 300;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->displayStart, -100.0F);
  EXPECT_EQ(setup_->displayEnd, 300.0F);
  setup_->displayStart = 300;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->displayStart, -100.0F);
  EXPECT_EQ(setup_->displayEnd, 500.0F);
}

TEST_F(SetupDerivedValues, SpectrumEndsAtItsLastBinOrAtHalfOfTheRate) {
  setup_->dataKind = 0;
  setup_->frequencyDomain = setup_->fromRecording = 1;
  setup_->actualRate = 999.5F;
  setup_->spectrumPoints = 500;
  for (const auto& [points, end] : {std::pair{201, 399.8F}, {1000, 499.75F}, {1, 499.75F}}) {
    setup_->pointCount = points;
    setup_->UpdateTimeAxis();
    EXPECT_EQ(setup_->spectrumEnd, end);
  }
  EXPECT_EQ(setup_->sampleRate, 1000) << "rounded";
  EXPECT_EQ(setup_->AxisEnd(), 499.75);

  setup_->frequencyDomain = 0;
  setup_->actualRate = 1000;
  setup_->pointCount = 500;
  setup_->spectrumStart = 100;
  for (const auto& [end, bins] : {std::pair{201.0F, 52}, {50.0F, 251}}) {
    setup_->spectrumEnd = end;
    EXPECT_EQ(setup_->UpdateBins(), bins);
  }
  EXPECT_EQ(setup_->spectrumStart, 0.0F);

  setup_->dataKind = kContinuous;
  setup_->frequencyDomain = 1;
  setup_->UpdateTimeAxis();
  EXPECT_EQ(setup_->frequencyDomain, 0) << "there is no spectrum of a continuous recording";
  EXPECT_EQ(setup_->pointCount, 1000);
}

TEST_F(SetupDerivedValues, PositionsSpreadFromTenUnitsOn) {
  setup_->channelCount = 5;
  setup_->channels[0].channelType = 1;
  setup_->channels[0].position = {900, 900, 900};
  setup_->channels[1].position = {1, 2, 3};
  SetupChannel& last = setup_->channels[4];
  last.position = {1, 8, 11};
  EXPECT_TRUE(setup_->PositionsSpread());
  last.position = {1, 8, 10.99F};
  EXPECT_FALSE(setup_->PositionsSpread());
  last.position = {1, 8, 11};
  last.channelFlagC = 1;
  EXPECT_FALSE(setup_->PositionsSpread());
  setup_->channels[3].position = {900, 900, 900};
  EXPECT_TRUE(setup_->PositionsSpread());
  setup_->channelCount = 4;
  EXPECT_FALSE(setup_->PositionsSpread()) << "too few";
  EXPECT_FALSE(Empty()->PositionsSpread());
}

TEST_F(SetupDerivedValues, SlotsFollowTheAxisAndKeepWhatFits) {
  WaveformSlot& slot = setup_->waveforms.slots[9];
  slot.slotField28 = 900;
  slot.slotField36 = -900;
  setup_->AdjustSlots(-100, 500, 1000);
  EXPECT_EQ(slot.slotPoints, 601);
  EXPECT_EQ(slot.slotField28, 500.0F);
  EXPECT_EQ(slot.slotField36, -100.0F);
  slot.slotField52 = 0;
  slot.slotField64 = 100;
  setup_->AdjustSlots(-100, 500, 1000);
  EXPECT_EQ(slot.slotField52, 0.0F) << "the span has not changed";
  EXPECT_EQ(slot.slotField64, 100.0F);
}

TEST_F(SetupDerivedValues, GridPlacesSelectedChannelsRowByRow) {
  for (const auto& [count, columns, rows] :
       {std::tuple(0, 1, 1), {1, 1, 1}, {4, 4, 1}, {5, 3, 2}, {11, 6, 2}, {12, 4, 3}, {515, 26, 20}}) {
    setup_->channelCount = count;
    setup_->LayoutGrid(0);
    const double width = 4.0 / (columns * 5 + 1);
    const double height = 4.0 / (rows * 5 + 1);
    for (int i = 0; i < count; ++i) {
      const SetupChannel& channel = setup_->channels[static_cast<std::size_t>(i)];
      ASSERT_NEAR(channel.boxLeft[0], width * (0.25 + 1.25 * (i % columns)), 1e-6) << i << " of " << count;
      ASSERT_NEAR(channel.boxBottom[0], height * (1.25 + 1.25 * (i / columns)), 1e-6) << i;
      ASSERT_NEAR(channel.zoomBottom[0] - channel.boxTop[0], 0.3, 1e-6) << i;
    }
  }
  ASSERT_TRUE(setup_->ResetToDefaults());
  EXPECT_EQ(setup_->channels[514].boxLeft[0], static_cast<float>(4.0 / 131 * (0.25 + 20 * 1.25)))
      << "channels that are not in use have a place among all 515";
  const float before = setup_->channels[0].boxLeft[3];
  setup_->channels[7].layoutSelected[3] = 1;
  for (const std::int32_t layout : {3, 20, -1}) setup_->LayoutGrid(layout);
  EXPECT_EQ(setup_->channels[0].boxLeft[3], before);
  EXPECT_EQ(setup_->channels[7].boxLeft[3], static_cast<float>(1.0 / 6));
}

// What the results are matters little here; that there are some, does.
TEST_F(SetupDerivedValues, HostileFieldsStayDefined) {
  for (const float odd : {0.0F, kInfinity, -kInfinity, kNotANumber, 1e-38F, -3e38F}) {
    for (const std::int32_t count :
         {std::numeric_limits<std::int32_t>::min(), -1, 0, 1, std::numeric_limits<std::int32_t>::max()}) {
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

}  // namespace
}  // namespace wavelock

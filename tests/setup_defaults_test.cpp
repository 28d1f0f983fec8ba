// A setup without a file behind it is a complete one, and a reset brings any setup back to it.
#include <gtest/gtest.h>

#include <bit>
#include <memory>
#include <tuple>
#include <utility>

#include "tests/support/setup_values.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

class SetupDefaults : public testing::Test {
 protected:
  std::unique_ptr<CSetup> NewSetup() {
    auto setup = std::make_unique<CSetup>(0, host_.host);
    EXPECT_TRUE(setup->ResetToDefaults());
    return setup;
  }

  TestHost host_;
};

TEST_F(SetupDefaults, NewSetupHasNoChannelsAndKnowsTheProfile) {
  host_.profile.SetString(profile::kState, profile::kSetupFile, "mine.ast");
  host_.profile.SetString(profile::kInstitution, profile::kOperator, "operator");
  const auto setup = std::make_unique<CSetup>(0, host_.host);
  EXPECT_FALSE(setup->channels);
  EXPECT_FALSE(setup->channelGroups[2]);
  EXPECT_FALSE(setup->channelsSnapshot);
  EXPECT_TRUE(setup->Channels().empty());
  EXPECT_EQ(setup->setupFileName, "mine.ast");
  EXPECT_EQ(setup->subject->operatorName, "operator");
  EXPECT_EQ(setup->subject->instituteName, "");
  EXPECT_EQ(setup->subject->sex, 2);
}

TEST_F(SetupDefaults, ResetWorksOutScalesAndAxes) {
  const auto setup = NewSetup();
  EXPECT_EQ(setup->channels.Size(), 515u);
  EXPECT_EQ(setup->channels[514].label, "515");
  EXPECT_EQ(std::bit_cast<std::uint32_t>(setup->channels[31].countScale), 0x3E2BE015u);
  EXPECT_EQ(setup->timeEnd, 0.5F);
  EXPECT_EQ(setup->displayStart, -100.0F);
  EXPECT_EQ(setup->displayEnd, 500.0F);
  EXPECT_EQ(setup->binWidth, 1.6638935F);
  EXPECT_EQ(setup->spectrumEnd, 498.33334F);
  EXPECT_EQ(setup->displayOrder[19][511], 511);
}

TEST_F(SetupDefaults, ResetBringsEverySetupBackButItsNames) {
  const FieldValues fresh = ValuesOf(*NewSetup());
  const auto used = NewSetup();
  Scramble(*used, 1);
  used->setupTitle = "title";
  used->setupFileName = "name.ast";
  used->modified = 1;
  ASSERT_TRUE(used->ResetToDefaults());
  EXPECT_EQ(std::exchange(used->setupTitle, ""), "title");
  EXPECT_EQ(std::exchange(used->setupFileName, "default.ast"), "name.ast");
  EXPECT_EQ(std::exchange(used->modified, 0), 1);
  EXPECT_EQ(ValuesOf(*used), fresh);
}

TEST_F(SetupDefaults, GridPlacesChannelsRowByRow) {
  const auto setup = NewSetup();
  for (const auto& [count, columns, rows] : {std::tuple(0, 1, 1),
                                             {1, 1, 1},
                                             {4, 4, 1},
                                             {5, 3, 2},
                                             {11, 6, 2},
                                             {12, 4, 3},
                                             {32, 6, 6},
                                             {515, 26, 20}}) {
    setup->channelCount = count;
    setup->LayoutGrid(0);
    const double width = 4.0 / (columns * 5 + 1);
    const double height = 4.0 / (rows * 5 + 1);
    for (int i = 0; i < count; ++i) {
      const SetupChannel& channel = setup->channels[static_cast<std::size_t>(i)];
      ASSERT_NEAR(channel.boxLeft[0], width * (0.25 + 1.25 * (i % columns)), 1e-6) << i << " of " << count;
      ASSERT_NEAR(channel.boxBottom[0], height * (1.25 + 1.25 * (i / columns)), 1e-6) << i;
      ASSERT_NEAR(channel.boxRight[0] - channel.boxLeft[0], width, 1e-6) << i;
      ASSERT_NEAR(channel.zoomRight[0] - channel.boxLeft[0], 0.3, 1e-6) << i;
      ASSERT_NEAR(channel.zoomBottom[0] - channel.boxTop[0], 0.3, 1e-6) << i;
    }
  }
}

TEST_F(SetupDefaults, GridSkipsChannelsThatAreNotOnTheLayout) {
  const auto setup = NewSetup();
  EXPECT_EQ(setup->channels[9].boxLeft[1], 0.1375F) << "a place in eight columns";
  EXPECT_EQ(setup->channels[9].zoomBottom[1], static_cast<float>(0.325 + 0.6));
  EXPECT_EQ(setup->channels[40].boxLeft[0], static_cast<float>(4.0 / 131 * (0.25 + 14 * 1.25)))
      << "channels that are not in use have a place among all 515";
  const float before = setup->channels[0].boxLeft[3];
  setup->channels[7].layoutSelected[3] = 1;
  setup->LayoutGrid(3);
  EXPECT_EQ(setup->channels[0].boxLeft[3], before);
  EXPECT_EQ(setup->channels[7].boxLeft[3], static_cast<float>(1.0 / 6));
  setup->LayoutGrid(20);
  setup->LayoutGrid(-1);
}

TEST_F(SetupDefaults, SingleResetsTouchOnlyTheirOwn) {
  const auto setup = NewSetup();
  setup->artifactLabels[10].code = 7;
  setup->artifactLabelCount = 11;
  setup->channels[0].label = "K1";
  setup->channels[3].label = "EKG";
  setup->bandTable[0].rowHigh = setup->bandTable[4].rowHigh = 99;
  setup->ResetBandTable();
  EXPECT_NE(setup->bandTable[0].rowHigh, 99);
  EXPECT_EQ(setup->bandTable[4].rowHigh, 99);
  setup->ResetArtifactLabels();
  setup->ResetParameterBlocks();
  setup->ResetChannel(0);
  setup->ResetChannel(515);
  setup->ResetChannel(-1);
  EXPECT_EQ(setup->artifactLabels[10].code, 7);
  EXPECT_EQ(setup->artifactLabelCount, 10);
  EXPECT_EQ(setup->paramsA.aChannel, 0);
  EXPECT_EQ(setup->channels[0].label, "1");
  setup->ResetParameterBlocks();
  EXPECT_EQ(setup->paramsA.aChannel2, 3);
}

}  // namespace
}  // namespace wavelock

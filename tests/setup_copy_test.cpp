// A copied setup holds all that its source holds and is independent of it; every field can be reached by its
// name, and the texts among them keep to their width.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "tests/support/setup_values.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

class SetupCopy : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(setup_->ResetToDefaults()); }

  std::unique_ptr<CSetup> Copy() const { return std::make_unique<CSetup>(*setup_); }

  TestHost host_;
  std::unique_ptr<CSetup> setup_ = std::make_unique<CSetup>(0, host_.host);
};

TEST_F(SetupCopy, HoldsEveryField) {
  ASSERT_TRUE(setup_->MakeChannelGroup(1));
  setup_->derivedCount = {0, 4, 0};
  Scramble(*setup_, 2);
  setup_->channelCount = 32;
  setup_->derivedCount = {0, 4, 0};
  const auto copy = Copy();
  EXPECT_EQ(copy->modified, 0);
  EXPECT_EQ(copy->derivedBuild, (PerDerivationFile<std::int32_t>{}));
  EXPECT_EQ(copy->waveforms.sources[3].sourceB.handle, 0);

  // What is to differ is made the same before everything is compared.
  setup_->modified = 0;
  setup_->derivedBuild = {};
  setup_->waveforms.ClearHandles();
  FieldValues expected = ValuesOf(*setup_);
  FieldValues actual = ValuesOf(*copy);
  std::erase_if(actual, [](const FieldValue& field) { return field.path.starts_with("channelsSnapshot"); });
  EXPECT_EQ(actual, expected);
}

TEST_F(SetupCopy, OwnsItsChannelsAndKeepsASnapshotOfThem) {
  ASSERT_TRUE(setup_->MakeChannelGroup(2));
  setup_->derivedCount[2] = 3;
  setup_->channelGroups[2][0].label = "group";
  const auto copy = Copy();
  setup_->channels[0].label = "source";
  setup_->channelGroups[2][0].label = "source";
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
}

TEST_F(SetupCopy, TakesChannelsOnlyForCountsThatCanBe) {
  for (const std::int32_t count : {-1, 0, 515, 100000}) {
    setup_->channelCount = count;
    EXPECT_FALSE(Copy()->channels) << count;
    EXPECT_FALSE(Copy()->channelsSnapshot) << count;
  }
  setup_->channelCount = 514;
  EXPECT_EQ(Copy()->channels[513].label, "514");
  EXPECT_FALSE(CSetup(CSetup(0, host_.host)).channels) << "the source has none";
}

TEST_F(SetupCopy, OfACopyWithMoreChannelsThanItHasGetsEmptyOnes) {
  const auto copy = Copy();
  copy->channelCount = 40;
  EXPECT_EQ(copy->Channels().size(), 32u);
  copy->ResetChannel(39);
  const CSetup second(*copy);
  EXPECT_EQ(second.channels[31].label, "32");
  EXPECT_EQ(second.channels[39].label, "");
}

TEST_F(SetupCopy, ChannelsThatCannotBeMadeAreNone) {
  setup_->channelCapacity = -1;
  EXPECT_FALSE(setup_->MakeChannels());
  EXPECT_FALSE(setup_->channels);
  EXPECT_FALSE(setup_->MakeChannelGroup(0));
  setup_->channelCapacity = 0;
  EXPECT_TRUE(setup_->MakeChannels());
  EXPECT_TRUE(setup_->channels) << "an empty array is not none";
  EXPECT_FALSE(setup_->MakeChannelGroup(3));
  EXPECT_FALSE(setup_->MakeChannelGroup(-1));
}

// ---- its fields

TEST(FixedText, IsCutToItsWidthAndLeavesNothingBehindIt) {
  FixedText<10> text = "Default";
  text.Assign("a longer text");
  EXPECT_EQ(text, "a longer ");
  text.Assign(std::string_view("x\0hidden", 8));
  EXPECT_EQ(text, "x");
  EXPECT_EQ(text, FixedText<10>("x")) << "bytes of an earlier text lie behind the NUL";
  text.Assign({});
  EXPECT_TRUE(text.Empty());
  EXPECT_EQ(FixedText<4>("abc").View(), "abc");
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

  std::size_t subjectFields = 0;
  VisitFields(*std::make_unique<SubjectFields>(), [&](const char*, auto&&) { ++subjectFields; });
  EXPECT_EQ(subjectFields, 23u);
}

}  // namespace
}  // namespace wavelock

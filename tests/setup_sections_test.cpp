// A setup survives its sections, which are laid out as told; what older or damaged files lack is made up for.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <set>

#include "tests/support/setup_values.h"
#include "tests/support/stored_container.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/section_tables.h"
#include "wavelock/setup/setup.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

class SetupSections : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(setup_->ResetToDefaults()); }

  std::unique_ptr<CSetup> NewSetup() {
    auto setup = std::make_unique<CSetup>(0, test_.host);
    EXPECT_TRUE(setup->ResetToDefaults());
    return setup;
  }

  StoredContainer Written(CSetup& setup) {
    CTffFile file(test_.host);
    EXPECT_TRUE(file.Open("s", OpenMode::kCreate));
    EXPECT_TRUE(setup.Write(file));
    return StoredContainer(*test_.memory.Contents("s"));
  }

  bool Load(CSetup& setup, const StoredContainer& container) {
    test_.memory.Put("s", container.Bytes());
    setup.setupFileName = "s";
    return setup.LoadFile();
  }

  TestHost test_;
  std::unique_ptr<CSetup> setup_ = std::make_unique<CSetup>(0, test_.host);
};

// ---- declarations that do not compile in a section

struct Overlapping {
  using Model = CSetup;
  static constexpr std::uint32_t kSize = 100;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {WAVELOCK_ROW(0, I32, dataKind), WAVELOCK_ROW(3, I32, sampleRate)};
};
struct TooLong : Overlapping {
  static constexpr Row<Model> kRows[] = {WAVELOCK_ROW(0, I32, dataKind), WAVELOCK_ROW(97, I32, sampleRate)};
};
struct WrittenOutOfTime : Overlapping {
  static constexpr Row<Model> kRows[] = {WAVELOCK_ROW(0, I32, dataKind).Since(1)};
};
struct OneForEachDirection : Overlapping {
  static constexpr Row<Model> kRows[] = {WAVELOCK_ROW(96, I32, dataKind).ReadOnly("test"),
                                         WAVELOCK_ROW(96, I32, sampleRate).WriteOnly("test")};
};
static_assert(!IsSound<Overlapping>() && !IsSound<TooLong>() && !IsSound<WrittenOutOfTime>());
static_assert(IsSound<OneForEachDirection>());
static_assert(!I32::kFits<float> && !Chars<20>::kFits<FixedText<19>> && !Bytes<10>::kFits<std::int32_t>);

// ---- what is written

TEST_F(SetupSections, RecordsStandInTheirOrder) {
  constexpr struct {
    std::uint32_t tag, count;
  } kRuns[] = {{1000, 4},  {1005, 2}, {5000, 32}, {31000, 10}, {1500, 1},    {1510, 1}, {1520, 1},
               {40000, 1}, {1007, 2}, {1011, 1},  {1009, 2},   {110000, 16}, {12000, 1}};
  std::vector<std::uint32_t> expected;
  for (const auto& [tag, count] : kRuns) {
    for (std::uint32_t i = 0; i < count; ++i) expected.push_back(tag + i);
  }
  std::vector<std::uint32_t> tags;
  for (const StoredRecord& record : Written(*setup_).records) tags.push_back(record.tag);
  EXPECT_EQ(tags, expected);
}

TEST_F(SetupSections, WhatIsStoredOtherwiseThanItIsHeld) {
  CSetup& s = *setup_;
  s.recordTimeRaw[11] = 0x7F;
  s.triggerMode = 1;
  s.spectrumField84 = 84;
  s.channels[31].label = "last channel label.";
  s.waveforms.sources[9].sourceC.file = "c";
  s.waveforms.sources[9].sourceC.handle = 1234;
  s.subject->unitName = "a unit of more than twenty";
  s.auxInputs.auxSlope[15] = 2;
  s.auxInputs.auxOffset[15] = 1;
  s.recordTableCount = 2;
  s.recordTable[32 + 131] = 99;
  StoredContainer c = Written(s);
  EXPECT_EQ(c.Of(1000).payload[8087], std::byte{0x7F});
  EXPECT_EQ(c.Of(1001).I32(4), 100) << "the point of time zero";
  EXPECT_EQ(c.Of(1002).I32(0), 2);
  EXPECT_EQ(s.triggerMode, 2);
  EXPECT_EQ(c.Of(1005).I32(84), 0);
  EXPECT_EQ(c.Of(5031).Text(0), "last channel label.");
  EXPECT_EQ(c.Of(1500).Text(9 * 2084 + 1048 + 8), "c");
  EXPECT_EQ(c.Of(1500).I32(9 * 2084 + 1048 + 520), 0) << "handles are of no use in a file";
  EXPECT_EQ(c.Of(40000).Text(481), "a unit of more than ");
  EXPECT_EQ(c.Of(80000).payload[131], std::byte{}) << "its own 132 bytes end before";
  EXPECT_EQ(c.Of(80001).payload[131], std::byte{99});
  EXPECT_EQ(c.Of(110015).F32(8), -8) << "(-5 + 1) * 2";
  EXPECT_EQ(c.Of(110015).F32(12), 12);
  EXPECT_EQ(c.Of(12000).Text(0), "Unknown");
}

TEST_F(SetupSections, CountsDecideHowManyRecordsAreWritten) {
  setup_->channelCount = 0;
  setup_->artifactLabelCount = 30;
  setup_->eventLabelCount = 30;
  setup_->recordTableCount = 1000;
  setup_->wideSamples = 1;
  ASSERT_TRUE(setup_->MakeChannelGroup(1));
  setup_->derivedCount[1] = 2;
  StoredContainer c = Written(*setup_);
  EXPECT_EQ(c.flags, 1);
  EXPECT_EQ(c.Of(1000).I32(7984), 30) << "limited only behind the main section";
  EXPECT_EQ(setup_->eventLabelCount, 20);
  std::set<std::uint32_t> tags;
  for (const StoredRecord& record : c.records) tags.insert(record.tag);
  EXPECT_EQ(tags.count(5000), 0u);
  EXPECT_TRUE(tags.count(31019) == 1 && tags.count(31020) == 0);
  EXPECT_TRUE(tags.count(30020) == 1 && tags.count(30021) == 0);
  EXPECT_TRUE(tags.count(80320) == 1 && tags.count(80321) == 0);
  EXPECT_TRUE(tags.count(20001) == 1 && tags.count(20002) == 0);
}

// ---- and read again

// Fields that no section holds, or that are worked out when one is read.
bool IsWorkedOut(const std::string& path) {
  const std::set<std::string> fields = {
      "derivedBuild",    "ldrLoadedCount",     "bandTable",          "bandTableCount",
      "channelCapacity", "modified",           "setupTitle",         "setupFileName",
      "derivedCount",    "writerVersionMajor", "writerVersionMinor", "hasPositions",
      "timeEnd",         "spectrumField84",    "spectrumField88",    "channelGroups"};
  const std::set<std::string> parts = {"paramsB.bSpare", "paramsB.bField56", "auxInputs.auxSlope",
                                       "auxInputs.auxOffset"};
  const std::string part = path.substr(0, path.find('['));
  return fields.count(part.substr(0, part.find('.'))) != 0 || parts.count(part) != 0 ||
         path.ends_with(".gain") || path.ends_with(".handle");
}

FieldValues StoredValues(const CSetup& setup) {
  FieldValues values = ValuesOf(setup);
  std::erase_if(values, [](const FieldValue& value) { return IsWorkedOut(value.path); });
  return values;
}

// Every field holds any value that a reader does not repair.
void FillWithStorableValues(CSetup& setup, std::uint32_t seed) {
  Scramble(setup, seed);
  setup.dataKind = 2;
  setup.channelCount = 40;
  setup.derivedCount = setup.ldrEnabled = {};
  setup.fromRecording = 1;
  setup.triggerMode = 3;
  setup.eventLabelCount = setup.artifactLabelCount = 20;
  setup.recordTableCount = 321;
  std::fill(setup.recordTable.begin() + 320 * 32 + 132, setup.recordTable.end(), std::uint8_t{0});
  setup.acceptedSweeps = setup.rejectedSweeps = setup.averagedSweeps = 11;
  setup.windowAEnd = setup.windowBEnd = setup.displayEnd = -std::numeric_limits<float>::infinity();
  setup.frequencyDomain = 1;  // or else spectrumPoints would follow the points
  setup.windowSeconds = 0.25F;
  setup.wideSamples = 1;
  setup.adcCounts = 1000;
  setup.adcRangeVolts = 2;
  setup.paramsA.aCount = setup.paramsB.bCount = setup.paramsC.cCount = 500;
  setup.paramsA.aChannel = setup.paramsA.aChannel2 = 40;
  for (SetupChannel& channel : setup.Channels()) {
    channel.signalRatio = 0.5F;
    for (ChannelLink& link : channel.links) link.linkIndex = 8;
  }
}

TEST_F(SetupSections, LoadingWhatWasWrittenGivesEveryStoredField) {
  for (std::uint32_t seed = 1; seed <= 5; ++seed) {
    SCOPED_TRACE(seed);
    FillWithStorableValues(*setup_, seed);
    const StoredContainer written = Written(*setup_);
    const auto loaded = NewSetup();
    loaded->fromRecording = 1;
    ASSERT_TRUE(Load(*loaded, written));
    EXPECT_EQ(StoredValues(*loaded), StoredValues(*setup_));

    StoredContainer reversed = written;
    std::reverse(reversed.records.begin(), reversed.records.end());
    const auto fromReversed = NewSetup();
    fromReversed->fromRecording = 1;
    ASSERT_TRUE(Load(*fromReversed, reversed));
    EXPECT_EQ(ValuesOf(*fromReversed), ValuesOf(*loaded)) << "order does not matter";
  }
}

TEST_F(SetupSections, LoadingWorksOutGainsScalesAndPositions) {
  setup_->adcCounts = 1000;
  setup_->adcRangeVolts = 2;
  setup_->channels[0].countScale = 0.7F;
  setup_->channels[1].countScale = 0;
  setup_->channels[5].position = {10, 0, 0};
  setup_->auxInputs.auxSlope[3] = 4;
  setup_->auxInputs.auxOffset[3] = 0.5F;
  setup_->auxInputs.auxRawHigh[4] = setup_->auxInputs.auxRawLow[4];
  const auto loaded = NewSetup();
  ASSERT_TRUE(Load(*loaded, Written(*setup_)));
  EXPECT_EQ(loaded->channels[0].gain, 2857.0F) << "2000000 / 1000 / 0.7 and a half, cut";
  EXPECT_EQ(loaded->channels[1].gain, 0.0F);
  EXPECT_EQ(loaded->hasPositions, 1);
  EXPECT_EQ(loaded->auxInputs.auxSlope[3], 4.0F);
  EXPECT_EQ(loaded->auxInputs.auxOffset[3], 0.5F);
  EXPECT_EQ(loaded->auxInputs.auxSlope[4], 0.0F);
  EXPECT_EQ(loaded->writerVersionMajor, 4);
  EXPECT_EQ(loaded->spectrumField84, 2);
  EXPECT_TRUE(loaded->channelGroups[0] && loaded->channelGroups[2]);
}

TEST_F(SetupSections, WithoutMainSectionNothingChangesAndWithoutAChannelTheLoadFails) {
  StoredContainer c = Written(*setup_);
  const FieldValues before = ValuesOf(*setup_);
  for (const std::size_t size : {std::size_t{0}, std::size_t{12079}}) {
    StoredContainer cut = c;
    cut.Of(1000).payload.resize(size);
    setup_->setupFileName = "s";
    EXPECT_FALSE(Load(*setup_, cut));
    setup_->setupFileName = "default.ast";
    EXPECT_EQ(ValuesOf(*setup_), before);
  }
  StoredContainer longer = c;
  longer.Of(1000).payload.resize(12090);
  EXPECT_TRUE(Load(*setup_, longer)) << "a longer section is read as far as it is known";

  c.Of(5003).payload.pop_back();
  c.Of(5000).PutText(0, "first");
  EXPECT_FALSE(Load(*setup_, c));
  EXPECT_EQ(setup_->channelCount, 32);
  EXPECT_EQ(setup_->channels[0].label, "first");
  EXPECT_EQ(setup_->channels[3].label, "");
}

TEST_F(SetupSections, CountsThatNoFileCanHoldAreRefused) {
  for (const std::int32_t count : {(1 << 20) + 1, 1 << 20, 600, std::numeric_limits<std::int32_t>::max()}) {
    StoredContainer c = Written(*setup_);
    c.Of(1000).Put(8, count);
    EXPECT_FALSE(Load(*setup_, c)) << count;
    EXPECT_EQ(setup_->channelCount, count);
    EXPECT_LE(setup_->channels.Size(), 4096u) << count;
    ASSERT_TRUE(setup_->ResetToDefaults());
  }
  StoredContainer c = Written(*setup_);
  c.Of(1000).Put(8, -5);
  EXPECT_TRUE(Load(*setup_, c));
  EXPECT_EQ(setup_->channelCapacity, 515);
  EXPECT_EQ(setup_->acceptedSweeps, 0);
  c.Remove(5000);
  EXPECT_FALSE(Load(*setup_, c)) << "the first channel must be there even when none is counted";
}

TEST_F(SetupSections, OldVersionsOfTheMainSectionAndTheSpectrumLackLaterFields) {
  setup_->detailKind = 3;
  setup_->mainField8192 = 7;
  setup_->binWidth = 9;
  setup_->spectrumField92 = 92;
  StoredContainer c = Written(*setup_);
  c.Of(1005).Put(84, 5);
  for (std::uint16_t version = 0; version <= 3; ++version) {
    c.Of(1000).version = c.Of(1005).version = version;
    const auto loaded = NewSetup();
    loaded->spectrumField84 = 40;
    ASSERT_TRUE(Load(*loaded, c));
    EXPECT_EQ(loaded->detailKind, version >= 1 ? 3 : 0);
    EXPECT_EQ(loaded->mainField8192, version >= 2 ? 7 : 1);
    EXPECT_EQ(loaded->adcCounts, 65536);
    EXPECT_EQ(loaded->adcRangeVolts, 5.5F);
    EXPECT_EQ(loaded->binWidth == 9, version >= 1);
    EXPECT_EQ(loaded->spectrumField84, version >= 2 ? 5 : 2);
    EXPECT_EQ(loaded->spectrumField92, version >= 3 ? 92 : 0);
  }
}

TEST_F(SetupSections, OldVersionsOfTheTimeAxisTakeSweepsFromTheFirstChannel) {
  setup_->acceptedSweeps = 4;
  setup_->averagedSweeps = 6;
  setup_->channels[0].sweeps = 9;
  setup_->windowAEnd = 9999;
  setup_->displayField636 = 6;
  StoredContainer c = Written(*setup_);
  c.Of(1001).version = 0;
  auto loaded = NewSetup();
  ASSERT_TRUE(Load(*loaded, c));
  EXPECT_EQ(loaded->acceptedSweeps, 9);
  EXPECT_EQ(loaded->averagedSweeps, 9);
  EXPECT_EQ(loaded->windowAEnd, 9999.0F);
  EXPECT_EQ(loaded->displayField636, 1);
  c.Of(1001).version = 2;
  c.Of(1001).Put(596, std::numeric_limits<std::int32_t>::min());
  c.Of(1001).Put(600, std::numeric_limits<std::int32_t>::min());
  loaded = NewSetup();
  ASSERT_TRUE(Load(*loaded, c));
  EXPECT_EQ(loaded->acceptedSweeps, 9) << "the sum wraps around to 0";
  EXPECT_EQ(loaded->averagedSweeps, 6);
  EXPECT_EQ(loaded->windowAEnd, 500.0F) << "the end of the axis";
  EXPECT_EQ(loaded->displayField636, 6);
}

TEST_F(SetupSections, ImpossibleValuesOfChannelsAreReplaced) {
  setup_->channels[1].signalRatio = std::numeric_limits<float>::quiet_NaN();
  setup_->channels[1].links[0].linkIndex = 9;
  setup_->channels[1].links[1].linkIndex = 8;
  setup_->channels[1].colorB = 17;
  StoredContainer c = Written(*setup_);
  ASSERT_TRUE(Load(*setup_, c));
  EXPECT_EQ(setup_->channels[1].signalRatio, 0.0F);
  EXPECT_EQ(setup_->channels[1].links[0].linkIndex, -1);
  EXPECT_EQ(setup_->channels[1].links[1].linkIndex, 8);
  EXPECT_EQ(setup_->channels[1].colorB, 17);
  c.Of(5001).version = 0;
  c.Of(5001).Put(884 + 8, 1e-30F);
  ASSERT_TRUE(Load(*setup_, c));
  EXPECT_EQ(setup_->channels[1].colorA, 65280);
  EXPECT_EQ(setup_->channels[1].colorB, 0);
  EXPECT_EQ(setup_->channels[1].gain, static_cast<float>(5.5 * 1000000 / 65536 / 1e-30F));
}

TEST_F(SetupSections, MissingSectionsLeaveWhatTheyAreToLeave) {
  StoredContainer c = Written(*setup_);
  std::erase_if(c.records,
                [](const StoredRecord& r) { return r.tag != 1000 && (r.tag < 5000 || r.tag > 5031); });
  CSetup& s = *setup_;
  s.pointCount = 77;
  s.acceptedSweeps = 3;
  s.artifactLabels[0] = {1, "mine"};
  s.subject->age = 41;
  s.waveforms.slots[0].slotPoints = 5;
  s.displayOrder[0][0] = 5;
  s.recordTable[0] = 5;
  s.paramsA.aCount = 5;
  s.paramsC.cCount = 5;
  s.block1010[0] = 5;
  s.auxInputs.auxSlope[0] = 5;
  s.sourceName = "mine";
  ASSERT_TRUE(Load(s, c));
  EXPECT_EQ(s.pointCount, 77);
  EXPECT_EQ(s.acceptedSweeps, 3);
  EXPECT_EQ(s.artifactLabels[0].text, "Movement");
  EXPECT_EQ(s.artifactLabelCount, 10);
  EXPECT_EQ(s.subject->age, 41);
  EXPECT_EQ(s.waveforms.slots[0].slotPoints, 5);
  EXPECT_EQ(s.displayOrder[0][0], 0);
  EXPECT_EQ(s.recordTable[0], 5);
  EXPECT_EQ(s.paramsA.aCount, 10);
  EXPECT_EQ(s.paramsB.bLevel, 100.0F);
  EXPECT_EQ(s.paramsB.bField44, 5);
  EXPECT_EQ(s.paramsB.bSpare, 1);
  EXPECT_EQ(s.paramsB.bFilter.description.value2, 15.0F);
  EXPECT_EQ(s.paramsC.cCount, 5);
  EXPECT_EQ(s.block1010[0], 0);
  EXPECT_EQ(s.auxInputs.auxSlope[0], 5.0F);
  EXPECT_EQ(s.sourceName, "Unknown");
}

TEST_F(SetupSections, ParameterBlocksAreRepaired) {
  StoredContainer c = Written(*setup_);
  for (const std::uint32_t tag : {1008u, 1009u, 1011u})
    std::fill(c.Of(tag).payload.begin(), c.Of(tag).payload.end(), std::byte{});
  c.Of(1008).Put(32, 33);  // aChannel, one too many
  c.Of(1008).Put(96, -1);
  c.Of(1009).Put(40, 40);
  c.Of(1011).Put(56, 56);
  setup_->channels[4].label = "EKG";
  c.Of(5004).PutText(0, "EKG");
  const auto loaded = NewSetup();
  loaded->paramsB.bField56 = 7;
  ASSERT_TRUE(Load(*loaded, c));
  EXPECT_EQ(loaded->paramsA.aCount, 10);
  EXPECT_EQ(loaded->paramsA.aWindowEnd, 500.0F);
  EXPECT_EQ(loaded->paramsA.aLevel, 100.0F);
  EXPECT_EQ(loaded->paramsA.aChannel, 4);
  EXPECT_EQ(loaded->paramsA.aChannel2, 4);
  EXPECT_EQ(loaded->paramsB.bCount, 3);
  EXPECT_EQ(loaded->paramsB.bWindowEnd, 2500.0F);
  EXPECT_EQ(loaded->paramsB.bField56, 7) << "never taken";
  EXPECT_EQ(loaded->paramsC.cWindowEnd, 400.0F);
  EXPECT_EQ(loaded->paramsC.cLevel, 200.0F);
  EXPECT_EQ(loaded->paramsC.cRangeLow, -800.0F);
  EXPECT_EQ(loaded->paramsC.cField60, 0.0F);

  c.Of(1009).payload.resize(48);
  ASSERT_TRUE(Load(*loaded, c));
  EXPECT_EQ(loaded->paramsC.cField40, 40);
  EXPECT_EQ(loaded->paramsC.cField60, 15.0F);
  c.Of(1009).payload.resize(47);
  c.Of(1008).Put(32, 32);  // one past the last channel may be
  ASSERT_TRUE(Load(*loaded, c));
  EXPECT_EQ(loaded->paramsC.cField40, 0);
  EXPECT_EQ(loaded->paramsA.aChannel, 32);
}

TEST_F(SetupSections, OnlyValidArtifactLabelsCount) {
  StoredContainer c = Written(*setup_);
  for (std::uint32_t i = 0; i < 10; ++i)
    if (i != 0 && i != 5) c.Of(31000 + i).Put(0, 0);
  c.Of(31005).PutText(4, "sixth");
  ASSERT_TRUE(Load(*setup_, c));
  EXPECT_EQ(setup_->artifactLabelCount, 2);
  EXPECT_EQ(setup_->artifactLabels[5].text, "sixth") << "beyond the count";
  EXPECT_EQ(setup_->artifactLabels[1].text, "Blink") << "stays";
}

TEST_F(SetupSections, ShortWaveformsReplaceOnlyTheirBeginning) {
  setup_->waveforms.sources[0].sourceA.value0 = 5;
  setup_->waveforms.sources[0].sourceA.value1 = 6;
  StoredContainer c = Written(*setup_);
  c.Of(1500).payload.resize(6);
  const auto loaded = NewSetup();
  loaded->waveforms.sources[0].sourceA.value1 = 0x01020304;
  loaded->waveforms.sources[0].sourceB.handle = 7;
  loaded->waveforms.sources[9].sourceNote = "kept";
  ASSERT_TRUE(Load(*loaded, c));
  EXPECT_EQ(loaded->waveforms.sources[0].sourceA.value0, 5);
  EXPECT_EQ(loaded->waveforms.sources[0].sourceA.value1, 0x01020006);
  EXPECT_EQ(loaded->waveforms.sources[0].sourceB.handle, 0);
  EXPECT_EQ(loaded->waveforms.sources[9].sourceNote, "kept");
}

TEST_F(SetupSections, WindowInMillisecondsBecomesSeconds) {
  StoredContainer c = Written(*setup_);
  for (const auto& [stored, seconds] : {std::pair{50.0F, 0.05F}, std::pair{49.9F, 49.9F}}) {
    c.Of(1006).Put(16, stored);
    ASSERT_TRUE(Load(*setup_, c));
    EXPECT_EQ(setup_->windowSeconds, seconds);
  }
}

TEST_F(SetupSections, MissingFilesOfBandsAreToldOnceEachAndForgotten) {
  setup_->bands[0].mapFile = "missing.map";
  setup_->bands[1].mappingLdrFile = "missing.ldr";
  setup_->bands[2].mapFile = "s";
  const StoredContainer c = Written(*setup_);
  ASSERT_TRUE(Load(*setup_, c));
  ASSERT_EQ(test_.user.messages.size(), 2u);
  EXPECT_EQ(test_.user.messages[0].text,
            "The map file missing.map\n"
            "does not exist or is in another location that was specified by setup file.\n"
            "To fix the problem, renter map file name using the following steps:\n"
            "1. Edit\n2. Overall settings\n3. Select a valid Map file name");
  EXPECT_TRUE(test_.user.messages[1].text.starts_with("The LDR file missing.ldr\nused for mapping"));
  EXPECT_TRUE(setup_->bands[0].mapFile.Empty());
  EXPECT_TRUE(setup_->bands[1].mappingLdrFile.Empty());
  EXPECT_EQ(setup_->bands[2].mapFile, "s");
  setup_->fromRecording = 1;
  ASSERT_TRUE(Load(*setup_, c));
  EXPECT_EQ(test_.user.messages.size(), 2u) << "a recording does not ask for them";
  EXPECT_EQ(setup_->bands[0].mapFile, "missing.map");
}

TEST_F(SetupSections, DerivedChannelsFollowTheOutputsOfTheirFile) {
  const std::string text = "3 1  Cz  a 1 b 2 c 3";
  test_.memory.Put("good.ldr", std::as_bytes(std::span(text)));
  setup_->channels[3].label = "Cz";
  setup_->ldrFile[1] = "good.ldr";
  setup_->ldrEnabled[1] = 1;
  ASSERT_TRUE(setup_->MakeChannelGroup(1));
  setup_->derivedCount[1] = 3;
  for (SetupChannel& channel : setup_->GroupChannels(1)) {
    channel = DefaultDerivedChannel(2, "a label of more than 19 characters");
    channel.links.fill({1, 1, 1});
    channel.colorB = 4;
    channel.gain = 12.5F;
  }
  StoredContainer c = Written(*setup_);
  EXPECT_EQ(c.Of(20000).I32(1848), 0) << "links are not stored";
  EXPECT_EQ(c.Of(20000).I32(1936), 0) << "nor colours";
  c.Of(20001).payload.resize(100);
  c.Of(20002).version = 1;
  c.Of(20002).Put(1936, 4);
  ASSERT_TRUE(Load(*setup_, c));
  EXPECT_EQ(setup_->derivedCount, (PerDerivationFile<std::int32_t>{0, 3, 0}));
  EXPECT_EQ(setup_->ldrLoadedCount, 1);
  const auto group = setup_->GroupChannels(1);
  EXPECT_EQ(group[0].label, "a label of more tha");
  EXPECT_EQ(group[0].physicalChannel, 2);
  EXPECT_EQ(group[0].gain, 12.5F) << "as stored";
  EXPECT_EQ(group[0].colorA, 65280);
  EXPECT_EQ(group[1].label, "2") << "a default one";
  EXPECT_EQ(group[2].colorB, 4);
}

TEST_F(SetupSections, DerivationFilesThatFailAreToldAndNeverStopALoad) {
  const std::string bad = "1 1 Cz row";
  test_.memory.Put("bad.ldr", std::as_bytes(std::span(bad)));
  setup_->ldrEnabled = {1, 1, 1};
  setup_->ldrFile[0] = "missing.ldr";
  setup_->ldrFile[1] = "bad.ldr";
  setup_->ldrFile[2] = "missing.ldr";
  ASSERT_TRUE(Load(*setup_, Written(*setup_)));
  ASSERT_EQ(test_.user.messages.size(), 5u);
  EXPECT_TRUE(test_.user.messages[0].text.starts_with("The Derivation (LDR) file missing.ldr\ndoes not"));
  EXPECT_EQ(test_.user.messages[1].text, "Unable to read coefficient at row 0, column 0 in file bad.ldr");
  EXPECT_EQ(test_.user.messages[2].text, test_.user.messages[1].text) << "told twice";
  EXPECT_EQ(test_.user.messages[4].text, "Unable to open file missing.ldr");
  EXPECT_TRUE(setup_->ldrFile[0].Empty());
  EXPECT_EQ(setup_->ldrFile[2], "missing.ldr") << "the last one keeps its name";

  setup_->ldrFile[0] = "bad.ldr";
  ASSERT_TRUE(Load(*setup_, Written(*setup_)));
  EXPECT_EQ(test_.user.messages.size(), 6u) << "a first file that fails ends the step";
}

}  // namespace
}  // namespace wavelock

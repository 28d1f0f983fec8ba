// What sections cannot say is not written; what older or damaged files lack is made up for.
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

TEST_F(SetupSections, CountsDecideHowManyRecordsAreWritten) {
  setup_->channelCount = 0;
  setup_->artifactLabelCount = setup_->eventLabelCount = 30;
  setup_->recordTableCount = 1000;
  setup_->triggerMode = setup_->modified = 1;
  ASSERT_TRUE(setup_->MakeChannelGroup(1));
  setup_->derivedCount[1] = 2;
  StoredContainer c = Written(*setup_);
  EXPECT_EQ(c.Of(1000).I32(7984), 30) << "limited only behind the main section";
  EXPECT_EQ(setup_->eventLabelCount, 20);
  EXPECT_EQ(c.Of(1002).I32(0), 2) << "mode 1 is of the past";
  EXPECT_EQ(setup_->modified, 0);
  std::set<std::uint32_t> tags;
  for (const StoredRecord& record : c.records) tags.insert(record.tag);
  for (const auto& [first, count] :
       {std::pair{5000u, 0u}, {31000u, 20u}, {30001u, 20u}, {80000u, 321u}, {20000u, 2u}}) {
    EXPECT_EQ(tags.count(first + count), 0u) << first;
    EXPECT_EQ(tags.count(first + count - 1), count == 0 ? 0u : 1u) << first;
  }
}

// ---- and read again

TEST_F(SetupSections, WithoutMainSectionNothingChangesAndWithoutAChannelTheLoadFails) {
  StoredContainer c = Written(*setup_);
  const FieldValues before = ValuesOf(*setup_);
  for (const std::size_t size : {0u, 12079u}) {
    StoredContainer cut = c;
    cut.Of(1000).payload.resize(size);
    EXPECT_FALSE(Load(*setup_, cut));
    setup_->setupFileName = "default.ast";
    EXPECT_EQ(ValuesOf(*setup_), before);
  }
  c.Of(1000).payload.resize(12090);  // read as far as it is known
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
    EXPECT_EQ(static_cast<bool>(setup_->channels), count <= 1 << 20) << count;
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

TEST_F(SetupSections, OldVersionsLackLaterFields) {
  setup_->detailKind = 3;
  setup_->mainField8192 = 7;
  setup_->binWidth = 9;
  setup_->spectrumField92 = 92;
  StoredContainer c = Written(*setup_);
  c.Of(1005).Put(84, 5);
  for (std::uint16_t version = 0; version <= 3; ++version) {
    c.Of(1000).version = c.Of(1005).version = version;
    const auto loaded = NewSetup();
    loaded->mainField8192 = loaded->spectrumField84 = 40;
    ASSERT_TRUE(Load(*loaded, c));
    EXPECT_EQ(loaded->detailKind, version >= 1 ? 3 : 0);
    EXPECT_EQ(loaded->mainField8192, version >= 2 ? 7 : 1);
    EXPECT_EQ(loaded->binWidth == 9, version >= 1);
    EXPECT_EQ(loaded->spectrumField84, version >= 2 ? 5 : 2);
    EXPECT_EQ(loaded->spectrumField92, version >= 3 ? 92 : 0);
  }
}

TEST_F(SetupSections, MissingSectionsLeaveTheirFieldsOrResetThem) {
  StoredContainer c = Written(*setup_);
  std::erase_if(c.records,
                [](const StoredRecord& r) { return r.tag != 1000 && (r.tag < 5000 || r.tag > 5031); });
  CSetup& s = *setup_;
  s.pointCount = s.paramsA.aCount = s.paramsC.cCount = s.displayOrder[0][0] = s.modified = 5;
  s.recordTable[0] = 5;
  s.block1010[0] = 5;
  s.auxInputs.auxSlope[0] = 5;
  s.sourceName = "mine";
  ASSERT_TRUE(Load(s, c));
  EXPECT_TRUE(s.pointCount == 5 && s.paramsC.cCount == 5 && s.recordTable[0] == 5);
  EXPECT_EQ(s.auxInputs.auxSlope[0], 5.0F);
  EXPECT_TRUE(s.displayOrder[0][0] == 0 && s.block1010[0] == 0 && s.modified == 0);
  EXPECT_EQ(s.paramsA.aCount, 10);
  EXPECT_EQ(s.sourceName, "Unknown");
  EXPECT_EQ(s.paramsB.bField44, 5) << "not what a new setup has";
}

TEST_F(SetupSections, ValuesThatCannotBeAreReplaced) {
  setup_->averagedSweeps = 6;
  setup_->channels[0].sweeps = 9;
  setup_->channels[1].signalRatio = std::numeric_limits<float>::quiet_NaN();
  setup_->auxInputs.auxRawHigh[4] = setup_->auxInputs.auxRawLow[4];
  setup_->recordTableCount = 1000;
  std::uint8_t& inLastRecord = setup_->recordTable[320 * 32 + 131];
  inLastRecord = 99;
  StoredContainer c = Written(*setup_);
  inLastRecord = 0;
  for (const std::uint32_t offset : {596u, 600u})
    c.Of(1001).Put(offset, std::numeric_limits<std::int32_t>::min());
  c.Of(1002).Put(0, 1);
  for (std::uint32_t i = 0; i < 10; ++i)
    if (i != 0 && i != 5) c.Of(31000 + i).Put(0, 0);
  c.Of(31005).PutText(4, "sixth");
  for (const auto& [stored, seconds] : {std::pair{50.0F, 0.05F}, std::pair{49.9F, 49.9F}}) {
    c.Of(1006).Put(16, stored);
    ASSERT_TRUE(Load(*setup_, c));
    EXPECT_EQ(setup_->windowSeconds, seconds) << "older software stored milliseconds";
  }
  EXPECT_EQ(setup_->acceptedSweeps, 9) << "the first channel's: the stored sum wraps around to 0";
  EXPECT_EQ(setup_->averagedSweeps, 6);
  EXPECT_EQ(setup_->channels[1].signalRatio, 0.0F);
  EXPECT_EQ(setup_->triggerMode, 2);
  EXPECT_EQ(setup_->auxInputs.auxSlope[4], 0.0F) << "no range, no slope";
  EXPECT_EQ(inLastRecord, 99) << "of all records that there can be";
  EXPECT_EQ(setup_->artifactLabelCount, 2);
  EXPECT_EQ(setup_->artifactLabels[5].text, "sixth") << "beyond the count";
  EXPECT_EQ(setup_->artifactLabels[1].text, "Blink") << "stays";
}

TEST_F(SetupSections, ParameterBlocksAreRepaired) {
  StoredContainer c = Written(*setup_);
  for (const std::uint32_t tag : {1008u, 1009u, 1011u})
    std::fill(c.Of(tag).payload.begin(), c.Of(tag).payload.end(), std::byte{});
  c.Of(1009).Put(40, 40);
  c.Of(1011).Put(56, 56);
  c.Of(1011).Put(4, 501);
  c.Of(5004).PutText(0, "EKG");
  const auto loaded = NewSetup();
  loaded->paramsB.bField56 = 7;
  // One behind the last channel may be, one more may not.
  for (const auto& [stored, taken] : {std::pair{33, 4}, {-1, 4}, {32, 32}}) {
    c.Of(1008).Put(32, stored);
    c.Of(1008).Put(96, -1);
    ASSERT_TRUE(Load(*loaded, c));
    EXPECT_EQ(loaded->paramsA.aChannel, taken);
    EXPECT_EQ(loaded->paramsA.aChannel2, taken);
  }
  EXPECT_EQ(loaded->paramsA.aCount, 10);
  EXPECT_EQ(loaded->paramsA.aRangeLow, ParamsA().aRangeLow);
  EXPECT_EQ(loaded->paramsA.aWindowEnd, 500.0F);
  EXPECT_EQ(loaded->paramsA.aLevel, 100.0F);
  EXPECT_EQ(loaded->paramsB.bCount, 3);
  EXPECT_EQ(loaded->paramsB.bLevel, 100.0F);
  EXPECT_EQ(loaded->paramsB.bWindowEnd, 2500.0F);
  EXPECT_EQ(loaded->paramsB.bField56, 7) << "never taken";
  EXPECT_EQ(loaded->paramsC.cWindowEnd, 400.0F);
  EXPECT_EQ(loaded->paramsC.cLevel, 200.0F);
  EXPECT_EQ(loaded->paramsC.cRangeLow, -800.0F);
  EXPECT_EQ(loaded->paramsC.cField60, 0.0F);
  c.Of(1008).version = 0;
  for (const auto& [length, field40] : {std::pair{48, 40}, {47, 0}, {40, 0}, {39, 7}}) {
    c.Of(1009).payload.resize(static_cast<std::size_t>(length));
    if (length == 39) loaded->paramsC.cField40 = 7;
    ASSERT_TRUE(Load(*loaded, c));
    EXPECT_EQ(loaded->paramsC.cField40, field40) << length;
    EXPECT_EQ(loaded->paramsC.cField60, 15.0F);
  }
  EXPECT_EQ(loaded->paramsA.aChannel, 4) << "version 0 tells nothing";
}

TEST_F(SetupSections, ShortWaveformsAndSubjectsReplaceOnlyTheirBeginning) {
  setup_->waveforms.sources[0].sourceA.value0 = 5;
  setup_->waveforms.sources[0].sourceA.value1 = 6;
  StoredContainer c = Written(*setup_);
  c.Of(1500).payload.resize(6);
  c.Of(40000).Put(0, 41);
  c.Of(40000).payload.resize(4);
  const auto loaded = NewSetup();
  loaded->waveforms.sources[0].sourceA.value1 = 0x01020304;
  loaded->waveforms.sources[0].sourceB.handle = 7;
  loaded->waveforms.sources[9].sourceNote = "kept";
  ASSERT_TRUE(Load(*loaded, c));
  EXPECT_EQ(loaded->waveforms.sources[0].sourceA.value0, 5);
  EXPECT_EQ(loaded->waveforms.sources[0].sourceA.value1, 0x01020006);
  EXPECT_EQ(loaded->waveforms.sources[0].sourceB.handle, 0);
  EXPECT_EQ(loaded->waveforms.sources[9].sourceNote, "kept");
  EXPECT_EQ(loaded->subject->age, 41);
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
  setup_->ldrEnabled = {};
  ASSERT_TRUE(Load(*setup_, Written(*setup_)));
  EXPECT_EQ(test_.user.messages.size(), 6u) << "files that are not in use are not looked at";
}

}  // namespace
}  // namespace wavelock

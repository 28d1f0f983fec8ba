// Opening finds a file by whatever a person types, says why when it cannot, never mixes two files up, and
// lays the setup in a tail over what the header gave.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"
#include "tests/support/setup_tail.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

RecordingBuilder Small(int revision = 16) {
  return RecordingBuilder().Revision(revision).Channels(2).Rate(250).Samples({1, 2, 3, 4, 5, 6});
}

TEST(Opening, AMissingFileIsToldWithItsPathAndTheSystemsWords) {
  TestHost test;
  EXPECT_FALSE(CRecordingFile(1, test.host).OpenFile("nothing.rec"));
  EXPECT_THAT(test.user.messages, IsEmpty());
  EXPECT_FALSE(CRecordingFile(0, test.host).OpenFile("100%s.rec"));
  EXPECT_THAT(test.user.messages.at(0).text, ::testing::HasSubstr(" 100%s.rec "));
  EXPECT_EQ(test.user.messages.at(1).source, ModalSource::kSystem);
  EXPECT_FALSE(test.user.messages.at(1).text.empty());
}

TEST(Opening, FoldersEmptyFilesAndTextsAreRefusedWithAMessage) {
  TemporaryFolder folder;
  TestHost test(Host::Default().files);
  EXPECT_FALSE(CRecordingFile(0, test.host).OpenFile(folder.Path("")));
  EXPECT_EQ(test.user.messages.at(0).number, 1765);
  EXPECT_THAT(NumbersOf(OpenedRecording(std::vector<std::byte>{}).test.user.messages),
              ElementsAre(1772, 1766));
  OpenedRecording asText(ByteWriter().Text("Very much like any other text, this one holds no recording.\n"));
  EXPECT_FALSE(asText.isOpen || asText.recording.file);
  EXPECT_THAT(NumbersOf(asText.test.user.messages), ElementsAre(1769, 1766));
}

// What a client may have asked of a file before stays true of it, but nothing of it gets into the next.
TEST(Opening, AnObjectServesOneFileAfterTheOther) {
  OpenedRecording opened(Small(13).Events({{.stimType = 7, .sample = 1}}));
  CRecordingFile& recording = opened.recording;
  EXPECT_EQ(recording.GetEventCount(), 1);
  EXPECT_TRUE(recording.CloseFile());
  EXPECT_FALSE(recording.CloseFile());
  const int dataStart = recording.dataStart;

  opened.test.memory.Put("bad.rec", Small().PutU16(370, 513).Build());
  opened.test.memory.Put("cut.rec", ByteWriter().Text("V").Written());
  EXPECT_FALSE(recording.OpenFile(" \" ") || recording.OpenFile("cut.rec") || recording.OpenFile("bad.rec"));
  EXPECT_EQ(recording.dataStart, dataStart);
  EXPECT_EQ(recording.headerRevision, 13);
  EXPECT_THAT(opened.Microvolts(0, 1), IsEmpty());

  opened.test.memory.Put("short.rec", Small().FileSize(950).Build());
  recording.OpenFile("short.rec");
  EXPECT_EQ(recording.dataStart, -1) << "a block that ends early is whole nowhere";

  opened.test.memory.Put("a recording.rec", Small().Channels(1).Build());
  EXPECT_TRUE(recording.OpenFile(" \t\"a recording.rec\" \n"));
  EXPECT_EQ(recording.GetFileName(), "a recording.rec");
  EXPECT_EQ(recording.GetEventCount(), 0);
  EXPECT_EQ(recording.setup->channelCount, 1);
  EXPECT_EQ(recording.GetContinuousSampleCount(), 6u);
}

// ---- tails

StoredContainer TailWithRevision(std::int32_t revision) {
  StoredContainer tail = TailOf([](CSetup&) {});
  tail.records.push_back({70000, 0, ByteWriter().I32(revision)});
  return tail;
}

// To be opened once what is expected of the person is said.
struct WithTail {
  explicit WithTail(const StoredContainer& tail, int silent = 0, int revision = 16)
      : recording(silent, test.host) {
    test.memory.Put("test.rec", Small(revision).Tail(tail.records).Build());
  }
  bool Open() { return recording.OpenFile("test.rec"); }

  TestHost test;
  CRecordingFile recording;
};

TEST(RecordingTail, OverridesTheHeaderAndAloneTellsThatSamplesHaveFourBytes) {
  const StoredContainer tail = TailOf([](CSetup& setup) {
    setup.dataKind = kEpochs;
    setup.pointCount = 2;
    setup.bands[0].mapFile = "missing.map";
    for (SetupChannel& channel : setup.Channels()) channel.countScale = channel.channelScale = 0.5f;
  });
  OpenedRecording file(RecordingBuilder()
                           .Epoched()
                           .Channels(2)
                           .Width(4)
                           .Epochs({{.samples = {100'000, -100'000, 7, 8}}})
                           .PutU32(16, 7)  // counts in large files alone
                           .Tail(tail.records));
  EXPECT_EQ(file.Setup().fromRecording, 1);
  EXPECT_EQ(file.Setup().bands[0].mapFile, "missing.map") << "nobody is told in a recording";
  EXPECT_THAT(file.test.user.messages, IsEmpty());
  std::vector<float> microvolts(4);
  ASSERT_TRUE(file.recording.ReadEpochFloat(0, microvolts.data(), 16));
  EXPECT_THAT(microvolts, ElementsAre(25'000, -25'000, 1.75f, 2));
  const auto plain = TailOf([](CSetup&) {}).records;
  OpenedRecording wide(Small().Width(4).Events({{.stimType = 1, .sample = 2}}).Tail(plain));
  EXPECT_EQ(wide.recording.GetEventTable().Elements()[0].point, 2u);
}

TEST(RecordingTail, StandsInRevisionsThatHaveATrustedOne) {
  const StoredContainer tail = TailOf([](CSetup& setup) { setup.channels[1].label = "tail"; });
  for (const int revision : {13, 14, 16}) {
    WithTail file(tail, 0, revision);
    EXPECT_TRUE(file.Open());
    EXPECT_EQ(file.recording.setup->channels[1].label == "tail", revision >= 14);
  }
  WithTail modified(tail, 0, 15);
  using Answer = ScriptedUser::DialogAnswer;
  for (const Answer& answer : {Answer{.accept = false, .checked = true}, Answer{}, Answer{.checked = true}}) {
    modified.test.user.ExpectDialog("CModifiedPrompt", answer);
    EXPECT_TRUE(modified.Open());
  }
  EXPECT_EQ(modified.recording.setup->channels[1].label, "2");
  EXPECT_TRUE(modified.Open()) << "is not asked a second time";
  EXPECT_TRUE(WithTail(tail, 1, 15).Open());
}

TEST(RecordingTail, DamagedOnesRefuseTheRecordingAndContinuousOnesAreInTheTimeDomain) {
  StoredContainer damaged = TailOf([](CSetup&) {});
  damaged.Remove(5001);
  WithTail refused(damaged);
  EXPECT_FALSE(refused.Open());
  EXPECT_THAT(NumbersOf(refused.test.user.messages), ElementsAre(1766));
  for (const int silent : {0, 1}) {
    WithTail file(TailOf([](CSetup& setup) { setup.frequencyDomain = 1; }), silent);
    ASSERT_TRUE(file.Open());
    EXPECT_THAT(NumbersOf(file.test.user.messages), ElementsAre(1760)) << "always shown";
    EXPECT_EQ(file.recording.setup->timeEnd, 0.999F);
  }
}

TEST(RecordingTail, OfANewerProgramIsOpenedWhenThePersonWantsIt) {
  for (const bool wants : {false, true}) {
    WithTail newer(TailWithRevision(2));
    newer.test.user.ExpectQuestion(1761, wants);
    EXPECT_EQ(newer.Open(), wants);
  }
  StoredContainer cut = TailWithRevision(1000);
  cut.records.back().payload.resize(3);
  EXPECT_TRUE(WithTail(cut).Open());
  EXPECT_TRUE(WithTail(TailWithRevision(1)).Open());
  EXPECT_TRUE(WithTail(TailWithRevision(2), 1).Open());
}

TEST(RecordingTail, OfANewerWriterIsToldUntilThePersonKnows) {
  StoredContainer tail = TailOf([](CSetup&) {});
  for (const auto& [major, minor] : {std::pair(4, 3), {5, 0}}) {
    tail.Of(1000).Put(8156, major);
    tail.Of(1000).Put(8160, minor);
    WithTail newer(tail, 1);
    for (const bool knows : {false, true}) {
      newer.test.user.ExpectDialog("CNewerVersionPrompt", {.checked = knows});
      EXPECT_TRUE(newer.Open()) << "told in silence too";
    }
    EXPECT_TRUE(newer.Open());
  }
}

TEST(RecordingTail, WithOtherChannelsThanTheHeaderNeverReadsOutside) {
  for (const std::int32_t count : {0, 1, 3, 515, -7}) {
    const StoredContainer tail = TailOf([count](CSetup& setup) { setup.channelCount = count; });
    OpenedRecording file(Small().Tail(tail.records));
    file.Raw<std::int16_t>(0, 2);
    EXPECT_THAT(file.Microvolts(0, 2), IsEmpty());
    EXPECT_EQ(file.recording.GetEventCount(), 0);
  }
}

}  // namespace
}  // namespace wavelock

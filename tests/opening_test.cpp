// Opening finds a file by whatever a person types, says why when it cannot, and never mixes two files up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"
#include "tests/support/temporary_folder.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

RecordingBuilder SmallRecording() {
  return RecordingBuilder().Channels(2).Rate(250).Samples({1, 2, 3, 4, 5, 6});
}

TEST(Opening, QuotesAndWhiteSpaceAroundAPathAreDropped) {
  TestHost test;
  test.memory.Put("a recording.rec", SmallRecording().Build());
  CRecordingFile recording(0, test.host);
  EXPECT_TRUE(recording.OpenFile(" \t\"a recording.rec\" \n"));
  EXPECT_EQ(recording.GetFileName(), "a recording.rec");
  EXPECT_TRUE(recording.CloseFile());
  EXPECT_FALSE(recording.CloseFile());
  EXPECT_EQ(recording.GetFileName(), "a recording.rec");
  EXPECT_FALSE(recording.OpenFile(" \" "));
}

TEST(Opening, AMissingFileIsToldWithItsPathAndTheSystemsWords) {
  TestHost test;
  CRecordingFile loud(0, test.host);
  EXPECT_FALSE(loud.OpenFile("100%s.rec"));
  ASSERT_EQ(test.user.messages.size(), 2u);
  EXPECT_EQ(test.user.messages[0].number, 1765);
  EXPECT_EQ(test.user.messages[0].insertion, "100%s.rec");
  EXPECT_THAT(test.user.messages[0].text, ::testing::HasSubstr(" 100%s.rec "));
  EXPECT_EQ(test.user.messages[1].source, ModalSource::kSystem);
  EXPECT_FALSE(test.user.messages[1].text.empty());

  test.user.messages.clear();
  CRecordingFile silent(1, test.host);
  EXPECT_FALSE(silent.OpenFile("nothing.rec"));
  EXPECT_THAT(test.user.messages, IsEmpty());
}

TEST(Opening, FoldersEmptyFilesAndTextsAreRefusedWithAMessage) {
  TemporaryFolder folder;
  TestHost test(Host::Default().files);
  CRecordingFile recording(0, test.host);
  EXPECT_FALSE(recording.OpenFile(folder.Path("")));
  EXPECT_EQ(test.user.messages.at(0).number, 1765);

  EXPECT_THAT(NumbersOf(OpenedRecording(std::vector<std::byte>{}).test.user.messages),
              ElementsAre(1772, 1766));
  const std::string text = "Very much like any other text, this one holds no recording.\n";
  const auto bytes = std::as_bytes(std::span(text));
  OpenedRecording asText(std::vector<std::byte>(bytes.begin(), bytes.end()));
  EXPECT_FALSE(asText.isOpen);
  EXPECT_THAT(NumbersOf(asText.test.user.messages), ElementsAre(1769, 1766));
  EXPECT_FALSE(asText.recording.file);
}

TEST(Opening, AnObjectServesOneFileAfterTheOther) {
  TestHost test;
  test.memory.Put("events.rec", SmallRecording().Events({{.stimType = 7, .sample = 1}}).Build());
  test.memory.Put("bad.rec", RecordingBuilder(SmallRecording()).PutU16(370, 513).Build());
  test.memory.Put("plain.rec", RecordingBuilder(SmallRecording()).Channels(1).Build());
  CRecordingFile recording(0, test.host);

  EXPECT_TRUE(recording.OpenFile("events.rec"));
  EXPECT_EQ(recording.GetEventCount(), 1);
  EXPECT_EQ(recording.GetContinuousSampleCount(), 3u);
  recording.CloseFile();

  EXPECT_FALSE(recording.OpenFile("bad.rec"));
  EXPECT_THAT(NumbersOf(test.user.messages), ElementsAre(1769, 1766));
  float out[2];
  EXPECT_FALSE(recording.ReadContinuousFloat(0, 1, out, sizeof out, 0, 0));

  EXPECT_TRUE(recording.OpenFile("plain.rec"));
  EXPECT_EQ(recording.GetEventCount(), 0);
  EXPECT_EQ(recording.setup->channelCount, 1);
  EXPECT_EQ(recording.GetContinuousSampleCount(), 6u);
}

// What a client may have asked of the file before stays true of it; its heads are not taken for the next
// one's.
TEST(Opening, AFileThatIsRefusedLeavesWhereTheSamplesOfTheOneBeforeBegan) {
  OpenedRecording opened(RecordingBuilder().Revision(13).Channels(2).Samples({1, 2, 3, 4}));
  const int dataStart = opened.recording.dataStart;
  opened.test.memory.Put("many.rec", RecordingBuilder().Channels(2).Samples({1, 2}).PutU16(370, 600).Build());
  EXPECT_FALSE(opened.recording.OpenFile("many.rec"));
  EXPECT_EQ(opened.recording.dataStart, dataStart);
  EXPECT_EQ(opened.recording.headerRevision, 13);
}

TEST(Opening, HeadsOfAFileThatWasNotClosedAreNotThoseOfTheNext) {
  const auto epochsOf = [](std::uint16_t trialType) {
    return RecordingBuilder().Epoched().Channels(1).Points(1).Epochs(
        {{.trialType = trialType, .samples = {1}}});
  };
  OpenedRecording opened(epochsOf(11));
  opened.test.memory.Put("next.rec", epochsOf(22).Build());
  std::uint16_t trialType = 0;
  ASSERT_TRUE(opened.recording.GetEpochInfo(0, &trialType, nullptr, nullptr, nullptr, nullptr));
  ASSERT_TRUE(opened.recording.OpenFile("next.rec"));
  ASSERT_TRUE(opened.recording.GetEpochInfo(0, &trialType, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(trialType, 22);
}

TEST(Opening, ImpossibleRatesAreReportedAndTheSamplesStayReadable) {
  OpenedRecording zero(RecordingBuilder(SmallRecording()).PutU16(376, 0));
  EXPECT_TRUE(zero.isOpen);
  EXPECT_THAT(NumbersOf(zero.test.user.messages), ElementsAre(1770));
  EXPECT_THAT(zero.Raw<std::int16_t>(0, 3), ElementsAre(1, 2, 3, 4, 5, 6));
}

}  // namespace
}  // namespace wavelock

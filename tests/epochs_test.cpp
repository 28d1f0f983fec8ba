// What requests for epochs and channel pairs give where files are cut, setups disagree with headers, or
// nothing is there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/failing_files.h"
#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Epoch = RecordingBuilder::Epoch;

RecordingBuilder ThreeEpochs() {
  return RecordingBuilder().Epoched().Channels(2).Points(2).Epochs(
      {{.trialType = 9, .response = 7, .samples = {1, 2, 3, 4}},
       {.trialType = 65535, .samples = {5, 6, 7, -8}},
       {.trialType = 3, .samples = {-32768, 0, 32767, 1}}});
}

std::vector<std::int16_t> RawEpoch(CRecordingFile& recording, std::uint32_t index, std::size_t values = 4) {
  std::vector<std::int16_t> out(values);
  if (!recording.ReadEpochRaw(index, out.data(), static_cast<std::uint32_t>(2 * values))) out.clear();
  return out;
}

std::vector<float> FloatEpoch(CRecordingFile& recording, std::uint32_t index, std::size_t values = 4) {
  std::vector<float> out(values);
  if (!recording.ReadEpochFloat(index, out.data(), static_cast<std::uint32_t>(4 * values))) out.clear();
  return out;
}

std::optional<int> TrialType(CRecordingFile& recording, std::int32_t index) {
  std::uint16_t type = 0;
  const bool done = recording.GetEpochInfo(index, &type, nullptr, nullptr, nullptr, nullptr);
  return done ? std::optional<int>(type) : std::nullopt;
}

TEST(Epochs, WrongRequestsFail) {
  OpenedRecording opened(ThreeEpochs());
  CRecordingFile& recording = opened.recording;
  for (const std::uint32_t index : {3u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_TRUE(RawEpoch(recording, index).empty() && FloatEpoch(recording, index).empty());
    EXPECT_FALSE(TrialType(recording, static_cast<std::int32_t>(index)));
  }
  for (const std::size_t values : {3u, 5u})
    EXPECT_TRUE(RawEpoch(recording, 0, values).empty() && FloatEpoch(recording, 0, values).empty());
  EXPECT_FALSE(recording.ReadEpochRaw(0, nullptr, 8) || recording.ReadEpochFloat(0, nullptr, 16));
  EXPECT_TRUE(TrialType(recording, 2));
  recording.CloseFile();
  EXPECT_TRUE(RawEpoch(recording, 0).empty());
  EXPECT_FALSE(TrialType(recording, 0));

  OpenedRecording continuous(RecordingBuilder().Channels(2).Samples({1, 2, 3, 4}));
  EXPECT_EQ(continuous.recording.GetEpochCount(), 1u);
  EXPECT_TRUE(RawEpoch(continuous.recording, 0).empty());
  EXPECT_FALSE(TrialType(continuous.recording, 0));
  EXPECT_EQ(continuous.recording.GetEpochPosition(1), 0u);
}

TEST(Epochs, CutFileKeepsTheEpochsThatAreWhole) {
  const std::uint64_t end = ThreeEpochs().Build().size();
  OpenedRecording cutInData(ThreeEpochs().FileSize(end - 1));
  EXPECT_EQ(RawEpoch(cutInData.recording, 1).size(), 4u);
  EXPECT_TRUE(RawEpoch(cutInData.recording, 2).empty() && FloatEpoch(cutInData.recording, 2).empty());
  EXPECT_EQ(TrialType(cutInData.recording, 2), 3) << "its head is still there";

  OpenedRecording cutInHead(ThreeEpochs().FileSize(end - 8 - 1));
  EXPECT_FALSE(TrialType(cutInHead.recording, 0)) << "facts come for all epochs or for none";
  EXPECT_TRUE(cutInHead.recording.epochHeaders.IsEmpty());
}

TEST(Epochs, HeadsAreReadOnceAndTriedAgainAfterAFailure) {
  MemoryFiles memory;
  memory.Put("a.rec", ThreeEpochs().Build());
  FailingFiles failing(memory);
  TestHost test(failing);
  CRecordingFile recording(0, test.host);
  ASSERT_TRUE(recording.OpenFile("a.rec"));
  failing.FailAt(failing.Calls().size() + 1, FaultKind::kShort);
  EXPECT_FALSE(TrialType(recording, 0));
  EXPECT_EQ(TrialType(recording, 2), 3);
  const std::size_t loaded = failing.Calls().size();
  EXPECT_EQ(TrialType(recording, 1), 65535);
  EXPECT_EQ(failing.Calls().size(), loaded);

  for (const int revision : {2, 3}) {  // heads have three bytes, and more from there on
    const Epoch other{.trialType = static_cast<std::uint16_t>(revision), .samples = {1, 2, 3, 4}};
    memory.Put("next.rec", ThreeEpochs().Revision(revision).Epochs({other, other}).Build());
    ASSERT_TRUE(recording.OpenFile("next.rec")) << "the one before was not closed";
    EXPECT_EQ(TrialType(recording, 1), revision);
  }
}

// Heads that lie close together come with few reads, those that lie far apart one by one; long epochs come in
// pieces.
TEST(Epochs, HeadsAndValuesComeWholeWhateverLiesBetween) {
  for (const std::size_t points : {0u, 700u, 60'000u}) {
    std::vector<Epoch> epochs(points > 700 ? 2 : 700);
    for (std::size_t i = 0; i < epochs.size(); ++i) {
      epochs[i].trialType = static_cast<std::uint16_t>(i * 3);
      for (std::size_t p = 0; p < 3 * points; ++p)
        epochs[i].samples.push_back(static_cast<std::int16_t>((p + i) * 77));
    }
    OpenedRecording opened(
        RecordingBuilder().Epoched().Channels(3).Points(static_cast<int>(points)).Epochs(epochs));
    for (std::size_t i = 0; i < epochs.size(); ++i)
      ASSERT_EQ(TrialType(opened.recording, static_cast<std::int32_t>(i)), i * 3) << points;
    const auto& last = epochs.back().samples;
    EXPECT_EQ(FloatEpoch(opened.recording, static_cast<std::uint32_t>(epochs.size() - 1), 3 * points),
              std::vector<float>(last.begin(), last.end()));
  }
}

TEST(Epochs, SetupWithAnotherShapeConvertsWhatBothHave) {
  OpenedRecording opened(
      RecordingBuilder().Epoched().Channels(3).Points(2).Epochs({{.samples = {1, 2, 3, 4, 5, 6}}}));
  const auto epochWith = [&opened](std::int32_t channels, std::int32_t points) {
    opened.Setup().channelCount = channels;
    opened.Setup().pointCount = points;
    std::vector<float> out(6, -1);
    EXPECT_TRUE(opened.recording.ReadEpochFloat(0, out.data(), 24));
    return out;
  };
  EXPECT_THAT(epochWith(2, 2), ElementsAre(1, 2, -1, 4, 5, -1));
  EXPECT_THAT(epochWith(500, 1), ElementsAre(1, 2, 3, -1, -1, -1));
  EXPECT_THAT(epochWith(500, -5), Each(-1));
}

// ---- pairs

constexpr std::uint32_t kStart = 900 + 3 * 75;
constexpr std::uint32_t kEntry = 8 + 2 * 8;

// Three channels of two points; pairs (0, 2) and (1, 2), the second one first in the file. The matrix ends
// with the file.
RecordingBuilder TwoPairs(std::uint32_t place02 = kStart + kEntry, std::uint32_t place12 = kStart) {
  ByteWriter data;
  data.U16(9).U16(9).U32(0).F32(1).F32(2).F32(3).F32(4);
  data.U16(9).U16(9).U32(0).F32(5).F32(6).F32(7).F32(8);
  const std::uint32_t matrix[] = {700, 0, place02, 1, 0, place12, place02, place12, 0};
  for (const std::uint32_t place : matrix) data.U32(place);
  return RecordingBuilder().Revision(13).TimeFrequency().Channels(3).Points(2).Data(data);
}

TEST(PairedData, PairsAreBuiltOnceAndGoWithTheFile) {
  constexpr std::uint32_t kEnd = kStart + 2 * kEntry + 9 * 4;
  for (const RecordingBuilder& builder :
       {TwoPairs(), TwoPairs().Revision(15).PutU32(12, kEnd).Append(std::vector<std::byte>(100))}) {
    OpenedRecording opened(builder, "test.rec", 1);
    CTFDPaired* const pairs = opened.recording.BuildPairedData();
    ASSERT_NE(pairs, nullptr);
    EXPECT_THAT(pairs->pairIndex.All(), ElementsAre(0, 1, 2, 2));
    EXPECT_THAT(pairs->real.All(), ElementsAre(5, 6, 1, 2));
    EXPECT_THAT(pairs->imaginary.All(), ElementsAre(7, 8, 3, 4));
    EXPECT_EQ(opened.recording.BuildPairedData(), pairs);
    opened.recording.CloseFile();
    EXPECT_EQ(opened.recording.BuildPairedData(), nullptr);
  }
}

TEST(PairedData, PlacesThatCountAsNoneAreLeftOut) {
  EXPECT_EQ(OpenedRecording(TwoPairs(2)).recording.BuildPairedData()->GetPairCount(), 2);
  for (const std::uint32_t none : {0u, 1u, 0x80000000u, 0xFFFFFFFFu}) {
    OpenedRecording one(TwoPairs(none));
    ASSERT_NE(one.recording.BuildPairedData(), nullptr);
    EXPECT_EQ(one.recording.BuildPairedData()->GetPairCount(), 1);
    EXPECT_EQ(OpenedRecording(TwoPairs(none, none)).recording.BuildPairedData(), nullptr);
  }
}

TEST(PairedData, PairBeyondTheFileLeavesWhatCameBefore) {
  OpenedRecording opened(TwoPairs(kStart, 0x7FFFFFFF));
  EXPECT_EQ(opened.recording.BuildPairedData(), nullptr);
  const CTFDPaired* const pairs = opened.recording.BuildPairedData();
  ASSERT_NE(pairs, nullptr);
  EXPECT_THAT(pairs->real.All(), ElementsAre(1, 2, 0, 0));
}

TEST(PairedData, MatrixThatIsNotThereIsTold) {
  for (const std::uint32_t tail : {0u, 0x80000000u, 0xFFFFFFF0u}) {
    OpenedRecording opened(TwoPairs().Revision(16).PutU32(12, tail));
    EXPECT_THAT(NumbersOf(opened.test.user.messages), ElementsAre(1768)) << tail;
    EXPECT_FALSE(opened.recording.pairMatrix);
    EXPECT_EQ(opened.recording.BuildPairedData(), nullptr);
  }
}

}  // namespace
}  // namespace wavelock

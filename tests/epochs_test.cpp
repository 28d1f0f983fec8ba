// Epochs come out with their facts, from short and long heads and in both domains.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "tests/support/failing_files.h"
#include "tests/support/opened_recording.h"
#include "wavelock/annotations/epoch_info.h"
#include "wavelock/recording/sample_conversion.h"

namespace wavelock {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Epoch = RecordingBuilder::Epoch;

RecordingBuilder ThreeEpochs() {
  return RecordingBuilder().Epoched().Channels(2).Points(2).Epochs(
      {{.accept = 1,
        .trialType = 9,
        .correct = 2,
        .reactionTime = 0.5f,
        .response = 7,
        .samples = {1, 2, 3, 4}},
       {.accept = 0, .trialType = 65535, .samples = {5, 6, 7, -8}},
       {.trialType = 3, .samples = {-32768, 0, 32767, 1}}});
}

RecordingBuilder TwoSpectra() {
  return RecordingBuilder()
      .Epoched()
      .FrequencyDomain()
      .Channels(2)
      .Points(1)
      .PutU8(675, 1)  // amplitudes
      .Epochs({{.spectrum = {1.5f, 2.5f, 3.5f, 4.5f}}, {.spectrum = {5, 6, 7, 8}}});
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

std::optional<EpochInfo> Facts(CRecordingFile& recording, std::int32_t index) {
  EpochInfo info;
  const bool done = recording.GetEpochInfo(index, &info.trialType, &info.accept, &info.correct,
                                           &info.reactionTime, &info.response);
  return done ? std::optional(info) : std::nullopt;
}

TEST(Epochs, DataAndFactsAreThoseOfTheirEpoch) {
  OpenedRecording opened(ThreeEpochs().Sensitivity(1, 0.5f));
  EXPECT_EQ(opened.recording.GetEpochCount(), 3u);
  EXPECT_EQ(opened.recording.GetEpochPosition(2), 900u + 2 * 75 + 2 * (13 + 8));
  EXPECT_THAT(RawEpoch(opened.recording, 1), ElementsAre(5, 6, 7, -8));
  EXPECT_THAT(FloatEpoch(opened.recording, 2), ElementsAre(-32768.0f, 0.0f, 32767.0f, 0.5f));
  const EpochInfo first = Facts(opened.recording, 0).value();
  EXPECT_EQ(first.accept, 1);
  EXPECT_EQ(first.trialType, 9);
  EXPECT_EQ(first.correct, 2);
  EXPECT_EQ(first.reactionTime, 0.5f);
  EXPECT_EQ(first.response, 7);
  EXPECT_EQ(Facts(opened.recording, 1)->accept, 0);
  EXPECT_EQ(Facts(opened.recording, 1)->trialType, 65535);
  EXPECT_TRUE(opened.recording.GetEpochInfo(2, nullptr, nullptr, nullptr, nullptr, nullptr));
}

TEST(Epochs, WrongRequestsFail) {
  OpenedRecording opened(ThreeEpochs());
  CRecordingFile& recording = opened.recording;
  for (const std::uint32_t index : {3u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_TRUE(RawEpoch(recording, index).empty());
    EXPECT_TRUE(FloatEpoch(recording, index).empty());
    EXPECT_FALSE(Facts(recording, static_cast<std::int32_t>(index)));
  }
  for (const std::uint32_t values : {0u, 3u, 5u}) {
    EXPECT_FALSE(recording.ReadEpochRaw(0, std::vector<std::int16_t>(8).data(), 2 * values));
    EXPECT_FALSE(recording.ReadEpochFloat(0, std::vector<float>(8).data(), 4 * values));
  }
  EXPECT_FALSE(recording.ReadEpochRaw(0, nullptr, 8));
  EXPECT_FALSE(recording.ReadEpochFloat(0, nullptr, 16));
  recording.CloseFile();
  EXPECT_TRUE(RawEpoch(recording, 0).empty());
  EXPECT_FALSE(Facts(recording, 0));

  OpenedRecording continuous(RecordingBuilder().Channels(2).Samples({1, 2, 3, 4}));
  EXPECT_EQ(continuous.recording.GetEpochCount(), 1u);
  EXPECT_TRUE(RawEpoch(continuous.recording, 0).empty());
  EXPECT_FALSE(Facts(continuous.recording, 0));
  EXPECT_EQ(continuous.recording.GetEpochPosition(1), 0u);
}

TEST(Epochs, OldHeadsHaveThreeBytes) {
  for (const int revision : {2, 3}) {
    OpenedRecording opened(ThreeEpochs().Revision(revision));
    EXPECT_EQ(opened.recording.GetEpochHeaderSize(), revision == 2 ? 3 : 13);
    EXPECT_THAT(RawEpoch(opened.recording, 2), ElementsAre(-32768, 0, 32767, 1)) << revision;
    const EpochInfo first = Facts(opened.recording, 0).value();
    EXPECT_EQ(first.trialType, 9);
    EXPECT_EQ(first.response, revision == 2 ? 0 : 7);
    EXPECT_EQ(first.reactionTime, revision == 2 ? 0.0f : 0.5f);
    EXPECT_EQ(Facts(opened.recording, 1)->trialType, 65535);
  }
}

TEST(Epochs, SpectraComeAsTheyAreStored) {
  OpenedRecording opened(TwoSpectra());
  EXPECT_THAT(FloatEpoch(opened.recording, 0), ElementsAre(1.5f, 2.5f, 3.5f, 4.5f));
  EXPECT_THAT(FloatEpoch(opened.recording, 1), ElementsAre(5, 6, 7, 8));
  EXPECT_TRUE(FloatEpoch(opened.recording, 0, 2).empty());
  EXPECT_THAT(RawEpoch(opened.recording, 1, 2), ElementsAre(0, 0x40A0)) << "the first bytes of the float 5";
  EXPECT_TRUE(Facts(opened.recording, 1));

  OpenedRecording unscaled(TwoSpectra().PutU8(675, 2));
  unscaled.test.user.messages.clear();
  EXPECT_EQ(FloatEpoch(unscaled.recording, 0).size(), 4u);
  EXPECT_EQ(FloatEpoch(unscaled.recording, 1).size(), 4u);
  EXPECT_THAT(NumbersOf(unscaled.test.user.messages), ElementsAre(1763)) << "told once";
  EXPECT_EQ(unscaled.Setup().spectrumScale, 1);
}

TEST(Epochs, CutFileKeepsTheEpochsThatAreWhole) {
  const std::uint64_t end = ThreeEpochs().Build().size();
  OpenedRecording cutInData(ThreeEpochs().FileSize(end - 1));
  EXPECT_EQ(RawEpoch(cutInData.recording, 1).size(), 4u);
  EXPECT_TRUE(RawEpoch(cutInData.recording, 2).empty());
  EXPECT_TRUE(FloatEpoch(cutInData.recording, 2).empty());
  EXPECT_EQ(Facts(cutInData.recording, 2)->trialType, 3) << "its head is still there";

  OpenedRecording cutInHead(ThreeEpochs().FileSize(end - 8 - 1));
  EXPECT_FALSE(Facts(cutInHead.recording, 0)) << "facts come for all epochs or for none";
  EXPECT_TRUE(cutInHead.recording.epochHeaders.IsEmpty());
}

TEST(Epochs, FailedLoadOfTheHeadsIsTriedAgain) {
  MemoryFiles memory;
  memory.Put("a.rec", ThreeEpochs().Build());
  FailingFiles failing(memory);
  TestHost test(failing);
  CRecordingFile recording(0, test.host);
  ASSERT_TRUE(recording.OpenFile("a.rec"));
  const std::size_t next = failing.Calls().size();
  failing.FailAt(next + 1, FaultKind::kShort);
  EXPECT_FALSE(Facts(recording, 0));
  EXPECT_TRUE(Facts(recording, 2));
  const std::size_t loaded = failing.Calls().size();
  EXPECT_TRUE(Facts(recording, 1));
  EXPECT_EQ(failing.Calls().size(), loaded) << "heads are read once";
}

// Heads that lie close together come with few reads, those that lie far apart one by one.
TEST(Epochs, AllHeadsAreReadWhateverLiesBetween) {
  for (const int points : {0, 1, 700, 5000}) {
    std::vector<Epoch> epochs(700);
    for (std::size_t i = 0; i < epochs.size(); ++i) {
      epochs[i].trialType = static_cast<std::uint16_t>(i * 3);
      epochs[i].samples.assign(static_cast<std::size_t>(points), 1);
    }
    OpenedRecording opened(RecordingBuilder().Epoched().Channels(1).Points(points).Epochs(epochs));
    for (std::size_t i = 0; i < epochs.size(); ++i) {
      ASSERT_EQ(Facts(opened.recording, static_cast<std::int32_t>(i))->trialType, i * 3) << points;
    }
  }
}

TEST(Epochs, ValuesAreRoundedOnce) {
  std::mt19937 random(1);
  CSetup setup(0);
  setup.channelCount = setup.channelCapacity = 3;
  ASSERT_TRUE(setup.MakeChannels());
  const std::size_t points = 500;
  std::vector<std::int32_t> wide(points * 3);
  std::vector<std::int16_t> narrow(points * 3);
  for (std::size_t i = 0; i < wide.size(); ++i) {
    wide[i] = static_cast<std::int32_t>(random());
    narrow[i] = static_cast<std::int16_t>(wide[i]);
  }
  for (const float scale : {1.0f, 0.7310582f}) {
    for (SetupChannel& channel : setup.Channels()) {
      channel.countScale = static_cast<float>(random()) * 1e-10f;
      channel.channelScale = scale;
    }
    std::vector<float> from16(wide.size());
    std::vector<float> from32(wide.size());
    EpochToFloat16(narrow.data(), from16.data(), {.points = points, .channels = 3}, setup);
    EpochToFloat32(wide.data(), from32.data(), {.points = points, .channels = 3}, setup);
    for (std::size_t i = 0; i < wide.size(); ++i) {
      const double count = setup.channels[i % 3].countScale;
      ASSERT_EQ(from16[i], static_cast<float>(narrow[i] * count * scale)) << i;
      ASSERT_EQ(from32[i], static_cast<float>(wide[i] * count * scale)) << i;
    }
  }
}

TEST(Epochs, SetupWithAnotherShapeConvertsWhatBothHave) {
  OpenedRecording opened(
      RecordingBuilder().Epoched().Channels(3).Points(2).Epochs({{.samples = {1, 2, 3, 4, 5, 6}}}));
  std::vector<float> out(6, -1);
  opened.Setup().channelCount = 2;
  EXPECT_TRUE(opened.recording.ReadEpochFloat(0, out.data(), 24));
  EXPECT_THAT(out, ElementsAre(1, 2, -1, 4, 5, -1));
  opened.Setup().channelCount = 500;
  opened.Setup().pointCount = 1;
  out.assign(6, -1);
  EXPECT_TRUE(opened.recording.ReadEpochFloat(0, out.data(), 24));
  EXPECT_THAT(out, ElementsAre(1, 2, 3, -1, -1, -1));
  opened.Setup().pointCount = -5;
  out.assign(6, -1);
  EXPECT_TRUE(opened.recording.ReadEpochFloat(0, out.data(), 24));
  EXPECT_THAT(out, Each(-1));
}

TEST(Epochs, LongEpochComesWhole) {
  const std::size_t points = 60000;
  std::vector<std::int32_t> samples(points * 3);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::int16_t>(i * 77);
  OpenedRecording opened(
      RecordingBuilder().Epoched().Channels(3).Points(points).Epochs({{.samples = samples}}));
  const std::vector<float> expected(samples.begin(), samples.end());
  EXPECT_EQ(FloatEpoch(opened.recording, 0, samples.size()), expected);
}

}  // namespace
}  // namespace wavelock

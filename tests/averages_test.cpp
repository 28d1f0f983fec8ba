// The sections of an averaged file come out scaled by the rules of their generation, and go in again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

// Offsets in the header and in a channel's record.
constexpr std::size_t kAveragedSweeps = 362;
constexpr std::size_t kAcceptedSweeps = 364;
constexpr std::size_t kHasVariance = 375;
constexpr std::size_t kSpectrumSource = 559;
constexpr std::size_t kSpectrumScale = 675;
constexpr std::size_t kSweeps = 15;

// Two channels of two points with a variance.
RecordingBuilder Average() {
  ByteWriter data;
  data.Zeros(5).F32(10).F32(20).Text("\xFF\xFF\xFF\xFF\xFF").F32(-3).F32(5);
  data.F32(1).F32(2).F32(3).F32(4);
  return RecordingBuilder().Averaged().Channels(2).Points(2).PutU8(kHasVariance, 1).Data(data);
}

RecordingBuilder OldSpectrum(int revision, std::uint8_t scale) {
  return Average().Revision(revision).FrequencyDomain().PutU8(kSpectrumScale, scale);
}

// What the open kept; empty when there is nothing.
std::vector<float> Values(OpenedRecording& opened, FloatMatrix CTFDEpoch::*matrix = &CTFDEpoch::main) {
  const CTFDEpoch* const data = opened.recording.LoadDataObject(0);
  if (data == nullptr) return {};
  return {(data->*matrix).All().begin(), (data->*matrix).All().end()};
}

std::vector<float> Variance(OpenedRecording& opened) {
  return Values(opened, &CTFDEpoch::variance);
}

TEST(Averages, OpenKeepsThemScaledAndClosesTheFile) {
  OpenedRecording opened(Average().PutChannelU16(0, kSweeps, 4).Sensitivity(1, 0.5f));
  ASSERT_TRUE(opened.isOpen);
  EXPECT_EQ(opened.recording.file, nullptr);
  EXPECT_THAT(Values(opened), ElementsAre(2.5f, -1.5f, 5.0f, 2.5f)) << "points x channels";
  EXPECT_THAT(Variance(opened), ElementsAre(1, 3, 2, 4)) << "unscaled";
  EXPECT_EQ(opened.Setup().channels[1].sweeps, 1) << "no sweeps count as one";
  EXPECT_FALSE(opened.recording.CloseFile());
  EXPECT_FALSE(Values(opened).empty());
  opened.test.memory.Put("c.rec", RecordingBuilder().Samples({1, 2}).Build());
  ASSERT_TRUE(opened.recording.OpenFile("c.rec"));
  EXPECT_EQ(opened.recording.LoadDataObject(0), nullptr) << "the next file has none";
}

TEST(Averages, OnlySectionsThatExistAreRead) {
  OpenedRecording opened(Average().PutU8(kHasVariance, 0));
  CRecordingFile& recording = opened.recording;
  recording.file = opened.test.memory.Open("test.rec", OpenMode::kReadOnly);
  std::vector<float> out(12, -1);
  ASSERT_TRUE(recording.file->SeekTo(7));
  EXPECT_TRUE(recording.ReadAveragedSection(1, out.data(), 1));
  EXPECT_THAT(std::span(out).first(4), ElementsAre(10, -3, -1, -1)) << "no more points than asked for";
  EXPECT_EQ(recording.file->Position(), 7u);
  EXPECT_TRUE(recording.ReadAveragedSection(4, out.data(), 1));
  EXPECT_THAT(std::span(out).first(8), ElementsAre(10, -3, 20, 5, 0, 0, 0, 0)) << "there are two points";
  for (const int section : {-1, 0, 2, 3, 4, 5})
    EXPECT_FALSE(recording.ReadAveragedSection(1, out.data(), section));
  EXPECT_FALSE(recording.ReadAveragedSection(0, out.data(), 1));
  EXPECT_FALSE(recording.ReadAveragedSection(1, nullptr, 1));

  EXPECT_FALSE(OpenedRecording(Average().FileSize(Average().Build().size() - 1)).isOpen) << "a cut variance";
}

TEST(Averages, SpectraBeforeRevision11AreBroughtToAmplitudes) {
  OpenedRecording rootMeanSquare(OldSpectrum(10, 1));
  EXPECT_THAT(Values(rootMeanSquare),
              ElementsAre(10 * 1.41421354f, -3 * 1.41421354f, 20 * 1.41421354f, 5 * 1.41421354f));
  EXPECT_THAT(Variance(rootMeanSquare), ElementsAre(2, 6, 4, 8));
  OpenedRecording halves(OldSpectrum(10, 2));
  EXPECT_THAT(Values(halves), ElementsAre(20, -6, 40, 10));
  EXPECT_THAT(Variance(halves), ElementsAre(4, 12, 8, 16));
  for (const RecordingBuilder& current : {OldSpectrum(11, 1), OldSpectrum(10, 1).PutU8(kSpectrumSource, 1),
                                          OldSpectrum(10, 1).FrequencyDomain(0)}) {
    OpenedRecording opened(current);
    EXPECT_THAT(Values(opened), ElementsAre(10, -3, 20, 5));
  }
}

TEST(Averages, PowersBeforeRevision13TakeTheSensitivityTwiceMore) {
  OpenedRecording opened(OldSpectrum(12, 2).PutU16(kAveragedSweeps, 2).Sensitivity(1, 3.0f));
  EXPECT_THAT(Values(opened), ElementsAre(10, -3 * 9 * 3, 20, 5 * 9 * 3));
  EXPECT_THAT(Variance(opened), ElementsAre(1, 3, 2, 4)) << "the rule is used up by the average";
  EXPECT_EQ(opened.Channel(1).sensitivity, 1.0f);
  EXPECT_EQ(opened.Setup().channels[1].channelScale, 3.0f);
  OpenedRecording fewAverages(OldSpectrum(12, 2).PutU16(kAveragedSweeps, 1).Sensitivity(1, 3.0f));
  EXPECT_THAT(Values(fewAverages), ElementsAre(10, -9, 20, 15));
}

TEST(Averages, SpectrumWithoutScaleIsHalvedAndTold) {
  OpenedRecording opened(OldSpectrum(16, 0));
  EXPECT_THAT(Values(opened), ElementsAre(5, -1.5f, 10, 2.5f));
  EXPECT_THAT(Variance(opened), ElementsAre(1, 3, 2, 4));
  EXPECT_THAT(NumbersOf(opened.test.user.messages), ElementsAre(1763));
  EXPECT_EQ(opened.recording.halveSpectrum, 1);
}

TEST(Averages, OfStatisticsAsManyBytesAreWrittenAsAreAskedForAndThereAre) {
  TestHost test;
  CRecordingFile recording(0, test.host);
  recording.setup->dataKind = kAverageWithStatistics;
  recording.setup->channelCount = 3;
  recording.setup->pointCount = 21;
  recording.setup->acceptedSweeps = 2;
  ASSERT_TRUE(recording.CreateFile("a.rec", 2));
  const std::vector<float> values(3 * 21, 1);
  const auto size = [&test] { return test.memory.Contents("a.rec")->size(); };
  const auto before = size();
  EXPECT_EQ(recording.WriteAverageSection(values.data(), 7, 3), 24);
  EXPECT_EQ(size(), before + 7);
  EXPECT_EQ(recording.wroteStatistics, 0);
  EXPECT_EQ(recording.WriteAverageSection(values.data(), 1000, 4), 24) << "no more than there is";
  EXPECT_EQ(size(), before + 7 + 24);
  test.memory.LimitSize(before + 32);
  EXPECT_EQ(recording.WriteVarianceSection(values.data(), 0), 3 * 21 * 4) << "also when it fails";
  EXPECT_EQ(recording.wroteStatistics + recording.wroteVariance, 2);
}

}  // namespace
}  // namespace wavelock

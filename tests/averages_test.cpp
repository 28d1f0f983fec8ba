// The sections of an averaged file come out scaled by the rules of their generation, and go in again; the
// figures for noise and ratios follow their definitions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/opened_recording.h"
#include "tests/support/setup_tail.h"
#include "wavelock/recording/statistics.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

// Two channels of two points with a variance; the first channel counts four sweeps.
RecordingBuilder Average() {
  ByteWriter data;
  data.Zeros(5).F32(10).F32(20).Text("\xFF\xFF\xFF\xFF\xFF").F32(-3).F32(5);
  data.F32(1).F32(2).F32(3).F32(4);
  return RecordingBuilder().Averaged().Channels(2).Points(2).PutU8(375, 1).PutChannelU16(0, 15, 4).Data(data);
}

// What the open kept; empty when there is nothing.
std::vector<float> Values(OpenedRecording& opened, FloatMatrix CTFDEpoch::*matrix = &CTFDEpoch::main) {
  const CTFDEpoch* const data = opened.recording.LoadDataObject(0);
  if (data == nullptr) return {};
  return {(data->*matrix).All().begin(), (data->*matrix).All().end()};
}

TEST(Averages, OpenKeepsThemAndClosesTheFile) {
  OpenedRecording opened(Average());
  EXPECT_FALSE(opened.recording.CloseFile());
  EXPECT_THAT(Values(opened), ElementsAre(2.5f, -3, 5, 5)) << "points x channels";
  EXPECT_EQ(opened.recording.LoadDataObject(0)->errorText, "");
  opened.test.memory.Put("c.rec", RecordingBuilder().Samples({1, 2}).Build());
  ASSERT_TRUE(opened.recording.OpenFile("c.rec"));
  EXPECT_EQ(opened.recording.LoadDataObject(0), nullptr) << "the next file has none";
}

TEST(Averages, OnlySectionsThatExistAreRead) {
  OpenedRecording opened(Average().PutU8(375, 0));
  CRecordingFile& recording = opened.recording;
  recording.file = opened.test.memory.Open("test.rec", OpenMode::kReadOnly);
  opened.Setup().channels[1].sweeps = -5;  // counts as one
  std::vector<float> out(12, -1);
  ASSERT_TRUE(recording.file->SeekTo(7));
  EXPECT_TRUE(recording.ReadAveragedSection(1, out.data(), 1));
  EXPECT_THAT(std::span(out).first(4), ElementsAre(2.5f, -3, -1, -1)) << "no more points than asked for";
  EXPECT_EQ(recording.file->Position(), 7u);
  EXPECT_TRUE(recording.ReadAveragedSection(4, out.data(), 1));
  EXPECT_THAT(std::span(out).first(8), ElementsAre(2.5f, -3, 5, 5, 0, 0, 0, 0)) << "there are two points";
  for (const int section : {-1, 0, 2, 3, 4, 5})
    EXPECT_FALSE(recording.ReadAveragedSection(1, out.data(), section));
  EXPECT_FALSE(recording.ReadAveragedSection(0, out.data(), 1) ||
               recording.ReadAveragedSection(1, nullptr, 1));
  EXPECT_FALSE(OpenedRecording(Average().FileSize(Average().Build().size() - 1)).isOpen) << "a cut variance";
  const StoredContainer oneChannel = TailOf(
      [](CSetup& setup) {
        setup.dataKind = kAverage;
        setup.pointCount = 2;
        setup.hasVariance = 0;
      },
      1);
  EXPECT_FALSE(OpenedRecording(Average().Tail(oneChannel.records)).isOpen)
      << "the sections have two channels";
}

TEST(Averages, PowersBeforeRevision13TakeTheSensitivityTwiceMore) {
  const auto powers = [](int revision, std::uint16_t averages, int domain = 1, std::uint8_t form = 0) {
    OpenedRecording opened(Average()
                               .Revision(revision)
                               .FrequencyDomain(domain)
                               .PutU8(675, 2)
                               .PutU8(20, form)
                               .PutU16(362, averages)
                               .Sensitivity(1, 3.0f));
    EXPECT_THAT(Values(opened, &CTFDEpoch::variance), ElementsAre(1, 3, 2, 4)) << "used up by the average";
    return Values(opened);
  };
  EXPECT_THAT(powers(12, 2), ElementsAre(2.5f, -3 * 9 * 3, 5, 5 * 9 * 3));
  for (const auto& others : {powers(12, 1), powers(13, 2), powers(10, 1, 0), powers(12, 2, 1, 3)})
    EXPECT_THAT(others, ElementsAre(2.5f, -9, 5, 15));
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

// ---- figures

// Four points of three channels, of which the second takes no part. The others are already centred.
TEST(SignalStatistics, FiguresFollowTheirDefinition) {
  const int flags[] = {1, 0, 7};
  CSignalStats stats;
  ASSERT_TRUE(stats.Prepare(3, 4, flags));
  EXPECT_EQ(stats.GetNoise(0, 2, 0), -1) << "not loaded";
  stats.Load(std::vector<float>{1, 99, -1, -1, 99, 1, 3, 99, -3, -3, 99, 3});
  EXPECT_THAT(stats.pointSpread.All(), ElementsAre(1, 1, 3, 3));
  EXPECT_EQ(stats.GetLowSpread(), 1);
  EXPECT_DOUBLE_EQ(stats.GetNoise(-5, 2, 0), std::sqrt(2));
  EXPECT_DOUBLE_EQ(stats.GetNoise(2, 9, 0), std::sqrt(18));
  EXPECT_DOUBLE_EQ(stats.GetNoise(1, 3, 0), std::sqrt(8));
  EXPECT_DOUBLE_EQ(stats.GetNoise(1, 4, 0), std::sqrt(28.0 / 3));
  EXPECT_EQ(stats.GetNoise(1, 2, 0), -1);
  EXPECT_DOUBLE_EQ(stats.GetChannelRatio(1, 0, 2, 2, 4, 0), 3);
  EXPECT_DOUBLE_EQ(stats.GetChannelRatio(1, 0, 2, 2, 4, 1), std::sqrt(18));
  EXPECT_EQ(stats.GetChannelRatio(0, 1, 2, 2, 4, 0), 0) << "one point has no spread";
  EXPECT_EQ(stats.GetBestRatio(), std::sqrt(18.0F));
  for (const int beyond : {2, -1}) EXPECT_EQ(stats.GetChannelRatio(beyond, 0, 2, 2, 4, 0), -1);
  stats.Load(std::vector<float>(12));
  EXPECT_EQ(stats.GetNoise(2, 4, 0), 0) << "not that of the data before";
}

TEST(SignalStatistics, LowSpreadLiesAFifthOfTheWayUp) {
  const int flags[] = {1, 1};
  for (const auto& [points, place] : {std::pair(1, 0), {2, 1}, {4, 1}, {5, 0}, {10, 2}, {11, 1}, {100, 20}}) {
    CSignalStats stats;
    ASSERT_TRUE(stats.Prepare(2, points, flags));
    for (int p = 0; p < points; ++p)
      stats.pointSpread[static_cast<std::size_t>(p)] = static_cast<float>((p * 37) % points);
    EXPECT_EQ(stats.GetLowSpread(), static_cast<float>(place)) << points;
  }
}

// Of six points at 100 Hz four lie before time zero, of which the first and the last do not count for the
// noise. The first channel takes no part, the others are centred.
TEST(SignalStatistics, FirstReadFillsWhatIsMissing) {
  ByteWriter data;
  for (const float sign : {1.0f, 1.0f, -1.0f}) {
    data.Zeros(5);
    for (const float value : {5.0f, 1.0f, -1.0f, 0.0f, 3.0f, -3.0f}) data.F32(sign * value);
  }
  OpenedRecording opened(RecordingBuilder()
                             .Averaged()
                             .Channels(3)
                             .Rate(100)
                             .Points(6)
                             .Times(-0.04f, 0.02f)
                             .Data(data)
                             .PutChannelU8(0, 11, 1)
                             .PutChannelF32(0, 35, 7)
                             .PutChannelF32(2, 35, 99));
  EXPECT_FLOAT_EQ(opened.Setup().mainField8164, std::sqrt(2.0f));
  EXPECT_EQ(opened.Setup().channels[2].signalRatio, 99) << "what is set stays";
  EXPECT_EQ(opened.Setup().channels[0].signalRatio, 0);
  EXPECT_EQ(opened.Setup().mainField8168, opened.Setup().channels[1].signalRatio);

  opened.recording.file = opened.test.memory.Open("test.rec", OpenMode::kReadOnly);
  opened.Setup().mainField8168 = 0;
  std::vector<float> out(18);
  EXPECT_TRUE(opened.recording.ReadAveragedSection(6, out.data(), 1));
  EXPECT_EQ(opened.Setup().mainField8168, opened.Setup().channels[1].signalRatio);
}

TEST(SignalStatistics, NothingToWorkOnIsRefused) {
  const int flags[] = {0, 0, 1};
  CSignalStats stats;
  EXPECT_FALSE(stats.Prepare(2, 3, flags) || stats.Prepare(-2, 3, flags) || stats.Prepare(3, -3, flags));
  EXPECT_TRUE(stats.Prepare(3, 10, flags));
  EXPECT_FALSE(stats.Prepare(100, 10, nullptr));
  stats.Load(std::vector<float>(1000));
  EXPECT_EQ(stats.GetNoise(0, 5, 0), -1);
  EXPECT_EQ(stats.GetChannelRatio(0, 0, 1, 1, 2, 0), -1);
}

}  // namespace
}  // namespace wavelock

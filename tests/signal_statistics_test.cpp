// The figures for noise and ratios follow their definitions, and a first read fills those that are missing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/opened_recording.h"
#include "wavelock/recording/statistics.h"

namespace wavelock {
namespace {

double Spread(const std::vector<double>& values, double divisorLess) {
  double sum = 0;
  double squares = 0;
  for (const double value : values) {
    sum += value;
    squares += value * value;
  }
  const auto count = static_cast<double>(values.size());
  return std::sqrt((squares - sum * sum / count) / (count - divisorLess));
}

TEST(SignalStatistics, FiguresFollowTheirDefinition) {
  constexpr std::size_t kPoints = 19;  // more than go through the sums at once
  const int flags[] = {1, 0, 7, 1};
  std::mt19937 random(1);
  std::vector<float> data(kPoints * 4);
  for (float& value : data) value = static_cast<float>(random() % 1000);
  CSignalStats stats;
  ASSERT_TRUE(stats.Prepare(4, kPoints, flags));
  EXPECT_EQ(stats.GetNoise(0, 5, 0), -1) << "not loaded";
  stats.Load(data);

  std::vector<std::vector<double>> columns(3);
  for (std::size_t p = 0; p < kPoints; ++p) {
    const double mean = (static_cast<double>(data[p * 4]) + data[p * 4 + 2] + data[p * 4 + 3]) / 3;
    std::vector<double> row;
    for (const std::size_t c : {0, 2, 3}) row.push_back(static_cast<float>(data[p * 4 + c] - mean));
    for (std::size_t c = 0; c < 3; ++c) columns[c].push_back(row[c]);
    EXPECT_FLOAT_EQ(stats.pointSpread[p], static_cast<float>(Spread(row, 0))) << p;
  }
  const auto part = [&](std::size_t c, int from, int to) {
    return Spread({columns[c].begin() + from, columns[c].begin() + to}, 1);
  };
  EXPECT_NEAR(stats.GetNoise(2, 9, 0), (part(0, 2, 9) + part(1, 2, 9) + part(2, 2, 9)) / 3, 1e-9);
  EXPECT_NEAR(stats.GetChannelRatio(1, 0, 5, 5, kPoints, 0), part(1, 5, kPoints) / part(1, 0, 5), 1e-9);
  EXPECT_NEAR(stats.GetChannelRatio(2, 0, 5, 5, kPoints, 1), part(2, 5, kPoints) / stats.GetLowSpread(),
              1e-6);
  EXPECT_EQ(stats.GetChannelRatio(0, 3, 4, 5, kPoints, 0), 0) << "one point has no spread";
  EXPECT_EQ(stats.GetBestRatio(), std::max(stats.ratios[1], stats.ratios[2]));
  EXPECT_EQ(stats.GetNoise(4, 5, 0), -1);
  EXPECT_EQ(stats.GetNoise(4, 6, 1), stats.GetLowSpread());
  EXPECT_EQ(stats.GetChannelRatio(3, 0, 5, 5, 9, 0), -1) << "three channels take part";
  EXPECT_EQ(stats.GetChannelRatio(-1, 0, 5, 5, 9, 0), -1);
  EXPECT_GT(stats.GetNoise(-100, 1000, 0), 0) << "points outside count for nothing";
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

TEST(SignalStatistics, NothingToWorkOnIsRefused) {
  const int none[] = {0, 0};
  CSignalStats stats;
  EXPECT_FALSE(stats.Prepare(2, 3, nullptr));
  EXPECT_FALSE(stats.Prepare(2, 3, none));
  EXPECT_FALSE(stats.Prepare(-2, 3, none));
  EXPECT_FALSE(stats.Prepare(2, -3, none));
  EXPECT_EQ(stats.GetChannelRatio(0, 0, 1, 1, 2, 0), -1);

  const int one[] = {1};
  EXPECT_TRUE(stats.Prepare(1, 10, one));
  EXPECT_FALSE(stats.Prepare(100, 10, nullptr));
  stats.Load(std::vector<float>(1000));
  EXPECT_EQ(stats.GetNoise(0, 5, 0), -1);
}

// Three channels of 40 points at 100 Hz, of which the first 20 lie before time zero and are quieter. The last
// channel does not take part.
RecordingBuilder Average() {
  ByteWriter data;
  for (int c = 0; c < 3; ++c) {
    data.Zeros(5);
    for (int p = 0; p < 40; ++p) data.F32(static_cast<float>((p * (c + 3)) % 7) * (p < 20 ? 1.0f : 10.0f));
  }
  return RecordingBuilder()
      .Averaged()
      .Channels(3)
      .Rate(100)
      .Points(40)
      .Times(-0.2f, 0.2f)
      .Data(data)
      .PutChannelU8(2, 11, 1);
}

constexpr std::size_t kSignalRatio = 35;

TEST(SignalStatistics, FirstReadFillsWhatIsMissing) {
  OpenedRecording opened(Average());
  ASSERT_TRUE(opened.isOpen);
  const CSetup& setup = opened.Setup();
  EXPECT_GT(setup.mainField8164, 0);
  EXPECT_GT(setup.channels[0].signalRatio, 5);
  EXPECT_EQ(setup.channels[2].signalRatio, 0);
  EXPECT_EQ(setup.mainField8168, std::max(setup.channels[0].signalRatio, setup.channels[1].signalRatio));

  OpenedRecording withRatio(Average().PutChannelF32(1, kSignalRatio, 99));
  EXPECT_EQ(withRatio.Setup().channels[1].signalRatio, 99) << "what is set stays";
  EXPECT_EQ(withRatio.Setup().mainField8168, 99);
  EXPECT_EQ(withRatio.Setup().channels[0].signalRatio, setup.channels[0].signalRatio);
}

TEST(SignalStatistics, SetWithoutTimeBeforeZeroHasNoNoise) {
  OpenedRecording opened(Average().Times(0, 0.4f));
  EXPECT_EQ(opened.Setup().mainField8164, -1);
  EXPECT_EQ(opened.Setup().mainField8168, 0);
}

TEST(SignalStatistics, AverageWithoutAChannelThatTakesPartCannotBeOpened) {
  EXPECT_FALSE(OpenedRecording(Average().PutChannelU8(0, 11, 1).PutChannelU8(1, 14, 1)).isOpen);
}

}  // namespace
}  // namespace wavelock

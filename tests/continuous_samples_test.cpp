// Samples come out sample-major and exact from every layout, width and range, and nothing comes out of a
// wrong request.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <tuple>

#include "tests/support/opened_recording.h"
#include "wavelock/recording/sample_conversion.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

std::vector<std::int32_t> RandomSamples(std::size_t count, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::vector<std::int32_t> values(count);
  for (auto& value : values) value = static_cast<std::int16_t>(random());
  return values;
}

// Layout, channels, samples of a block.
class ContinuousLayouts : public ::testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(ContinuousLayouts, EveryRangeGivesTheSamplesAsTheyWereStored) {
  const auto [layout, channels, blockSamples] = GetParam();
  const int blocks = 3;
  const auto samples = static_cast<std::size_t>(blocks * blockSamples);
  const auto perSample = static_cast<std::size_t>(channels);
  const std::vector<std::int32_t> values = RandomSamples(samples * perSample, 1);
  OpenedRecording recording(RecordingBuilder()
                                .Revision(layout == 0 ? 6 : 16)
                                .Layout(layout)
                                .BlockSamples(blockSamples)
                                .LeadingWord(-5)
                                .TriggerWords(2, 7, 1)
                                .Channels(channels)
                                .Samples(values));
  ASSERT_TRUE(recording.isOpen);
  ASSERT_EQ(recording.recording.GetContinuousSampleCount(), samples);

  std::mt19937_64 random(2);
  std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges = {
      {0, samples}, {0, 1}, {samples - 1, samples}, {samples / 3 - 1, samples / 3 + 1}, {1, samples / 3}};
  for (int i = 0; i < 20; ++i) {
    const std::uint64_t start = random() % samples;
    ranges.emplace_back(start, start + 1 + random() % (samples - start));
  }
  for (const auto& [start, end] : ranges) {
    const auto first = values.begin() + static_cast<std::ptrdiff_t>(start * perSample);
    const std::vector<std::int16_t> expected(first,
                                             first + static_cast<std::ptrdiff_t>((end - start) * perSample));
    ASSERT_EQ(recording.Raw<std::int16_t>(start, end), expected) << start << " to " << end;
    const std::vector<float> floats(expected.begin(), expected.end());
    ASSERT_EQ(recording.Microvolts(start, end), floats) << start << " to " << end;
  }
}

// The last blocks are larger than those that are read whole.
INSTANTIATE_TEST_SUITE_P(All, ContinuousLayouts,
                         ::testing::Values(std::tuple(0, 5, 40), std::tuple(1, 1, 40), std::tuple(1, 7, 9000),
                                           std::tuple(2, 6, 9000), std::tuple(3, 1, 1), std::tuple(3, 3, 50),
                                           std::tuple(3, 9, 33), std::tuple(3, 64, 700),
                                           std::tuple(3, 7, 20000), std::tuple(3, 17, 40000)));

TEST(ContinuousSamples, WideSamplesComeAsTheyAre) {
  OpenedRecording wide(RecordingBuilder().Channels(2).Width(4).Samples({1 << 30, -7, 3, 4}));
  wide.recording.sampleWidth = 4;
  EXPECT_THAT(wide.Raw<std::int32_t>(0, 2), ElementsAre(1 << 30, -7, 3, 4));
  EXPECT_THAT(wide.Microvolts(0, 1), ElementsAre(static_cast<float>(1 << 30), -7.0f));
  wide.Header().sampleLayout = 3;
  std::int32_t out[2];
  EXPECT_FALSE(wide.recording.ReadContinuousRaw(0, 1, out, sizeof out, 0, 0)) << "blocks have 2-byte samples";
}

TEST(ContinuousSamples, WrongRequestsFail) {
  OpenedRecording recording(RecordingBuilder().Channels(2).Samples({1, 2, 3, 4, 5, 6}));
  std::int16_t raw[8];
  float floats[8];
  const auto readRaw = [&](std::uint64_t start, std::uint64_t end, std::int32_t bytes) {
    return recording.recording.ReadContinuousRaw(start, end, raw, bytes, 0, 0);
  };
  const auto readFloat = [&](std::uint64_t start, std::uint64_t end, std::uint32_t bytes) {
    return recording.recording.ReadContinuousFloat(start, end, floats, bytes, 0, 0);
  };
  EXPECT_TRUE(readRaw(2, 3, 4));
  EXPECT_TRUE(readFloat(2, 3, 8));
  EXPECT_TRUE(readFloat(2, 3, 11)) << "bytes of no whole value are not looked at";
  for (const std::int32_t bytes : {0, 2, 3, 5, 8, -4}) EXPECT_FALSE(readRaw(2, 3, bytes)) << bytes;
  for (const std::uint32_t bytes : {0u, 4u, 7u, 12u, 0xFFFFFFF8u})
    EXPECT_FALSE(readFloat(2, 3, bytes)) << bytes;
  const auto minusOne = std::numeric_limits<std::uint64_t>::max();
  EXPECT_FALSE(readRaw(1, 1, 0));
  EXPECT_FALSE(readRaw(2, 1, 4));
  EXPECT_FALSE(readRaw(3, 4, 4));
  EXPECT_FALSE(readFloat(2, 4, 16));
  EXPECT_FALSE(readRaw(minusOne, 1, 4));
  EXPECT_FALSE(readFloat(0, minusOne, 8));
  EXPECT_FALSE(recording.recording.ReadContinuousRaw(0, 1, nullptr, 4, 0, 0));
  EXPECT_FALSE(recording.recording.ReadContinuousFloat(0, 1, nullptr, 8, 0, 0));
  EXPECT_FALSE(OpenedRecording(RecordingBuilder().Epoched().Points(4)).Raw<std::int16_t>(0, 1).size());
}

TEST(ContinuousSamples, DamagedBlockSizesNeverRead) {
  for (const std::uint32_t blockBytes : {0u, 1u, 3u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    OpenedRecording recording(RecordingBuilder()
                                  .Layout(3)
                                  .BlockSamples(2)
                                  .Channels(2)
                                  .Samples({1, 2, 3, 4, 5, 6, 7, 8})
                                  .PutU32(894, blockBytes));
    ASSERT_TRUE(recording.isOpen);
    const std::uint64_t count = recording.recording.GetContinuousSampleCount();
    if (count > 0 && count < 100) recording.Raw<std::int16_t>(0, count);
  }
}

TEST(ContinuousSamples, ATableThatClaimsToLieBeforeTheSamplesGivesNoSamples) {
  OpenedRecording recording(RecordingBuilder().Channels(2).Samples({1, 2, 3, 4}).PutU32(886, 0));
  EXPECT_GT(recording.recording.GetContinuousSampleCount(), std::uint64_t{1} << 60);
  EXPECT_EQ(recording.Raw<std::int16_t>(0, 2).size(), 4u) << "the samples themselves are there";
  EXPECT_TRUE(recording.Raw<std::int16_t>(100, 102).empty());
}

// ---- conversion

TEST(SampleConversion, FactorsAreRoundedBeforeTheyAreApplied) {
  CSetup setup(0);
  ASSERT_TRUE(setup.ResetToDefaults());
  setup.channelCount = 2;
  setup.channels[0].countScale = 0.1f;
  setup.channels[0].channelScale = 3.3f;
  setup.channels[1].countScale = 1;
  const float factor = static_cast<float>(0.1f * static_cast<double>(3.3f));
  const std::int16_t narrow[] = {32767, -32768, -1, 5};
  float out[4];
  RawToFloat16(narrow, out, 2, setup);
  EXPECT_THAT(out, ElementsAre(static_cast<float>(32767.0 * factor), -32768.0f,
                               static_cast<float>(-1.0 * factor), 5.0f));
  const std::int32_t wide[] = {2147483647, 16777217, -3, 7};
  RawToFloat32(wide, out, 2, setup);
  EXPECT_THAT(out, ElementsAre(static_cast<float>(2147483647.0 * factor), 16777216.0f,
                               static_cast<float>(-3.0 * factor), 7.0f));
  const CSetup copy(setup);
  setup.channels[0].countScale = 5;
  RawToFloat16(narrow, out, 1, copy);
  EXPECT_EQ(out[0], static_cast<float>(32767.0 * factor));
}

TEST(SampleConversion, WritingRoundsHalvesAwayFromZeroAndLimits) {
  TestHost test;
  CRecordingFile recording(0, test.host);
  recording.setup->channelCount = 1;
  recording.setup->channels[0].countScale = 1;
  const float fine[] = {100.4f, 100.5f, -100.5f, -0.4f, 32767.4f, -32767.0f};
  std::int16_t raw[6];
  recording.FloatToRaw16(raw, fine, 6, *recording.setup);
  EXPECT_THAT(raw, ElementsAre(100, 101, -101, 0, 32767, -32767));
  EXPECT_EQ(recording.pendingConversionNotice, 0);
  const float beyond[] = {40000, -40000, std::numeric_limits<float>::infinity(),
                          std::numeric_limits<float>::quiet_NaN()};
  recording.FloatToRaw16(raw, beyond, 4, *recording.setup);
  EXPECT_THAT(std::vector(raw, raw + 4), ElementsAre(32767, -32767, 32767, 0));
  EXPECT_EQ(recording.pendingConversionNotice, 1);
  std::int32_t wide[2];
  const float large[] = {3.0e9f, -3.0e9f};
  recording.FloatToRaw32(wide, large, 2, *recording.setup);
  EXPECT_THAT(wide, ElementsAre(2147483647, -2147483647));
}

}  // namespace
}  // namespace wavelock

// Samples come out sample-major and exact from every layout, width and range, nothing comes out of a wrong
// request, and microvolts become the counts that two divisions give.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
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
}

constexpr std::int32_t kChannels = 7;

// False for a value that was limited.
bool CountOf(float value, const SetupChannel& channel, double limit, double& count) {
  const double divided = static_cast<double>(value) / channel.countScale / channel.channelScale;
  if (std::isnan(divided)) {
    count = 0;
    return false;
  }
  const double rounded = std::trunc(divided < 0 ? divided - 0.5 : divided + 0.5);
  count = std::max(-limit, std::min(limit, rounded));
  return count == rounded;
}

void ScaleChannels(CSetup& setup, std::mt19937& random) {
  constexpr float kScales[] = {0.1678467f, 1.0f, 0.1f, 3.0f, 1e-3f, 0.0f, -0.25f};
  setup.channelCount = kChannels;
  for (SetupChannel& channel : setup.Channels()) {
    channel.countScale = kScales[random() % std::size(kScales)];
    channel.channelScale = random() % 2 == 0 ? 1.0f : kScales[random() % 4];
  }
}

// Around the borders between counts, at the ends of the range, and anywhere.
float AnyValue(const SetupChannel& channel, double limit, std::mt19937& random) {
  const double unit = static_cast<double>(channel.countScale) * channel.channelScale;
  const auto near = static_cast<double>(static_cast<std::int16_t>(random()));
  switch (random() % 8) {
    case 0:
      return std::numeric_limits<float>::quiet_NaN();
    case 1:
      return std::numeric_limits<float>::infinity();
    case 2:
      return static_cast<float>((limit + near / 32768.0) * unit);
    case 3:
      return static_cast<float>(near);
    default:
      return static_cast<float>((near + 0.5) * unit);
  }
}

template <class Raw, class Convert>
void ExpectTwoDivisions(Convert convert) {
  constexpr std::uint32_t kSamples = 90;
  constexpr double kLimit = std::numeric_limits<Raw>::max();
  std::mt19937 random(5);
  CRecordingFile recording(1);
  for (int round = 0; round < 200; ++round) {
    CSetup& setup = *recording.setup;
    ScaleChannels(setup, random);
    std::vector<float> in;
    std::vector<Raw> expected;
    bool isInside = true;
    for (std::uint32_t i = 0; i < kSamples * kChannels; ++i) {
      const SetupChannel& channel = setup.channels[i % kChannels];
      // Every other round has none but values inside the range.
      const bool isPlain = round % 2 == 0 && channel.countScale != 0;
      in.push_back(isPlain ? static_cast<float>(static_cast<int>(random() % 2000)) * 1e-3f
                           : AnyValue(channel, kLimit, random));
      double count = 0;
      isInside = CountOf(in.back(), channel, kLimit, count) && isInside;
      expected.push_back(static_cast<Raw>(count));
    }
    std::vector<Raw> raw(in.size());
    recording.pendingConversionNotice = 0;
    convert(recording, raw.data(), in.data(), kSamples);
    ASSERT_EQ(raw, expected);
    ASSERT_EQ(recording.pendingConversionNotice, isInside ? 0 : 1);
  }
}

TEST(SampleConversion, CountsAreThoseOfTwoDivisions) {
  ExpectTwoDivisions<std::int16_t>([](CRecordingFile& r, std::int16_t* raw, const float* in,
                                      std::uint32_t n) { r.FloatToRaw16(raw, in, n, *r.setup); });
  ExpectTwoDivisions<std::int32_t>([](CRecordingFile& r, std::int32_t* raw, const float* in,
                                      std::uint32_t n) { r.FloatToRaw32(raw, in, n, *r.setup); });
}

}  // namespace
}  // namespace wavelock

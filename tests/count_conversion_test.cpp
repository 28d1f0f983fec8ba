// Microvolts become the counts that two divisions give, for every value.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

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

TEST(CountConversion, NarrowCountsAreThoseOfTwoDivisions) {
  ExpectTwoDivisions<std::int16_t>([](CRecordingFile& r, std::int16_t* raw, const float* in,
                                      std::uint32_t n) { r.FloatToRaw16(raw, in, n, *r.setup); });
}

TEST(CountConversion, WideCountsAreThoseOfTwoDivisions) {
  ExpectTwoDivisions<std::int32_t>([](CRecordingFile& r, std::int32_t* raw, const float* in,
                                      std::uint32_t n) { r.FloatToRaw32(raw, in, n, *r.setup); });
}

}  // namespace
}  // namespace wavelock

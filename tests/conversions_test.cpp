// Conversions have a stated result for every number, and samples that of the arithmetic they are defined by.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "wavelock/numerics/conversions.h"
#include "wavelock/numerics/positions.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/recording/sample_conversion.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(NumberConversion, TruncationIsDefinedForEveryDouble) {
  const double values[] = {2.9, -2.9, 2147483647.5, 2147483648.0, -2147483648.9, -kInfinity, kNaN};
  std::vector<std::int32_t> whole;
  for (const double value : values) whole.push_back(TruncateToInt32(value));
  EXPECT_THAT(whole, ElementsAre(2, -2, 0x7FFFFFFF, 0x7FFFFFFF, -0x7FFFFFFF - 1, -0x7FFFFFFF - 1, 0));
  EXPECT_EQ(Truncate<std::int64_t>(0x1p63), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Truncate<std::uint16_t>(-0.5), 0);
}

TEST(NumberConversion, WrappingKeepsTheLowBitsOfEveryInteger) {
  const double values[] = {-2.9, 0x1p40 + 5.5, -0x1p63 - 4096.0, 0x1p63 + 4096.0, 1e300, kInfinity, kNaN};
  std::vector<std::uint32_t> bits;
  for (const double value : values) bits.push_back(TruncateAndWrap(value));
  EXPECT_THAT(bits, ElementsAre(0xFFFFFFFE, 5, 0xFFFFF000, 0x1000, 0, 0, 0));
}

TEST(Positions, TellWhenTheyLeaveTheFile) {
  constexpr auto kLast = std::numeric_limits<std::uint64_t>::max();
  EXPECT_FALSE(CheckedAdd(kLast, 1));
  EXPECT_EQ(CheckedAdd(kLast - 1, 1), kLast);
  EXPECT_FALSE(CheckedMultiply(1ull << 32, 1ull << 32));
  EXPECT_EQ(CheckedMultiply(kLast, 1), kLast);
  EXPECT_TRUE(LiesInside(10, 0, 10));
  EXPECT_FALSE(LiesInside(10, 1, 10) || LiesInside(kLast, 2, 10));
}

// Samples have one factor, rounded before it is applied; epochs have two, and one rounding of the product.
TEST(SampleConversion, MicrovoltsAreRoundedAsTheirKindIs) {
  constexpr float kCount = 0.1f;
  constexpr float kScale = 3.3f;
  CSetup setup(0);
  ASSERT_TRUE(setup.ResetToDefaults());
  setup.channelCount = 1;
  setup.channels[0].countScale = kCount;
  setup.channels[0].channelScale = kScale;
  CSetup copy(setup);
  copy.channels[0].countScale = 7;  // what a copy converts keeps the channels that it had
  const double factor = static_cast<float>(double{kCount} * kScale);
  const std::int16_t narrow[] = {32767, -1, 12345};
  const std::int32_t wide[] = {2147483647, 16777217, -987654321};
  for (std::size_t i = 0; i < 3; ++i) {
    float out = 0;
    RawToFloat16(narrow + i, &out, 1, copy);
    EXPECT_EQ(out, static_cast<float>(narrow[i] * factor));
    RawToFloat32(wide + i, &out, 1, setup);
    EXPECT_EQ(out, static_cast<float>(wide[i] * factor));
    EpochToFloat16(narrow + i, &out, {.points = 1, .channels = 1}, setup);
    EXPECT_EQ(out, static_cast<float>(narrow[i] * double{kCount} * kScale));
    EpochToFloat32(wide + i, &out, {.points = 1, .channels = 1}, setup);
    EXPECT_EQ(out, static_cast<float>(wide[i] * double{kCount} * kScale));
  }
}

// Values around the borders between counts, at the ends of the range, and anywhere.
template <class Raw, class Convert>
void ExpectTwoDivisions(Convert convert) {
  constexpr float kScales[] = {0.1678467f, 1.0f, 0.1f, 3.0f, 1e-3f, 0.0f, -0.25f};
  constexpr double kLimit = std::numeric_limits<Raw>::max();
  std::mt19937 random(5);
  CRecordingFile recording(1);
  recording.setup->channelCount = 7;
  for (int round = 0; round < 200; ++round) {
    for (SetupChannel& channel : recording.setup->Channels()) {
      channel.countScale = kScales[random() % 7];
      channel.channelScale = random() % 2 == 0 ? 1.0f : kScales[random() % 4];
    }
    std::vector<float> in;
    std::vector<Raw> expected;
    bool isInside = true;
    for (std::size_t i = 0; i < 90 * 7; ++i) {
      const SetupChannel& channel = recording.setup->channels[i % 7];
      const double unit = static_cast<double>(channel.countScale) * channel.channelScale;
      const double near = static_cast<std::int16_t>(random());
      const double any[] = {kNaN, kInfinity, (kLimit + near / 32768) * unit, near, (near + 0.5) * unit};
      // Every other round has none but values inside the range, few of them at a border.
      const double inside =
          random() % 64 == 0 ? std::trunc(near / 2) + 0.5 : static_cast<double>(random() % 2000) / 7;
      const bool isPlain = round % 2 == 0 && unit != 0;
      in.push_back(static_cast<float>(isPlain ? inside * unit : any[random() % 5]));
      const double count = static_cast<double>(in.back()) / channel.countScale / channel.channelScale;
      const double rounded = std::trunc(count + std::copysign(0.5, count));
      isInside = isInside && std::fabs(rounded) <= kLimit;
      expected.push_back(static_cast<Raw>(std::isnan(count) ? 0 : std::clamp(rounded, -kLimit, kLimit)));
    }
    std::vector<Raw> raw(in.size());
    recording.pendingConversionNotice = 0;
    (recording.*convert)(raw.data(), in.data(), 90, *recording.setup);
    ASSERT_EQ(raw, expected);
    ASSERT_EQ(recording.pendingConversionNotice, isInside ? 0 : 1);
  }
}

TEST(SampleConversion, CountsAreThoseOfTwoDivisions) {
  ExpectTwoDivisions<std::int16_t>(&CRecordingFile::FloatToRaw16);
  ExpectTwoDivisions<std::int32_t>(&CRecordingFile::FloatToRaw32);
  CRecordingFile recording(1);
  recording.setup->channelCount = 1;
  recording.setup->channels[0].countScale = recording.setup->channels[0].channelScale = 1;
  const float last = 32767.25f;
  std::int16_t raw = 0;
  recording.FloatToRaw16(&raw, &last, 1, *recording.setup);
  EXPECT_EQ(raw, 32767);
  EXPECT_EQ(recording.pendingConversionNotice, 0) << "it was rounded, not limited";
}

}  // namespace
}  // namespace wavelock

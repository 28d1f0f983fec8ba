// Conversions of numbers that come from files give a stated result for every value.
#include <gtest/gtest.h>

#include <limits>

#include "wavelock/numerics/conversions.h"
#include "wavelock/numerics/positions.h"

namespace wavelock {
namespace {

TEST(NumberConversion, TruncationIsDefinedForEveryDouble) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(TruncateToInt32(2.9), 2);
  EXPECT_EQ(TruncateToInt32(-2.9), -2);
  EXPECT_EQ(TruncateToInt32(2147483647.5), 2147483647);
  EXPECT_EQ(TruncateToInt32(2147483648.0), 2147483647);
  EXPECT_EQ(TruncateToInt32(-2147483648.9), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(TruncateToInt32(-kInfinity), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(TruncateToInt32(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(Truncate<std::int64_t>(0x1p63), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Truncate<std::int64_t>(-0x1p63), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Truncate<std::uint16_t>(-0.5), 0);
}

TEST(NumberConversion, WrappingKeepsTheLowBitsOfEveryInteger) {
  EXPECT_EQ(TruncateAndWrap(-2.9), 0xFFFFFFFEu);
  EXPECT_EQ(TruncateAndWrap(0x1p40 + 5.5), 5u);
  EXPECT_EQ(TruncateAndWrap(-0x1p63 - 4096.0), 0xFFFFF000u);
  EXPECT_EQ(TruncateAndWrap(0x1p63 + 4096.0), 0x1000u);
  EXPECT_EQ(TruncateAndWrap(1e300), 0u);
  EXPECT_EQ(TruncateAndWrap(std::numeric_limits<double>::infinity()), 0u);
  EXPECT_EQ(TruncateAndWrap(std::numeric_limits<double>::quiet_NaN()), 0u);
}

TEST(Positions, TellWhenTheyLeaveTheFile) {
  constexpr auto kLast = std::numeric_limits<std::uint64_t>::max();
  EXPECT_FALSE(CheckedAdd(kLast, 1));
  EXPECT_EQ(CheckedAdd(kLast - 1, 1), kLast);
  EXPECT_FALSE(CheckedMultiply(1ull << 32, 1ull << 32));
  EXPECT_EQ(CheckedMultiply(kLast, 1), kLast);
  EXPECT_TRUE(LiesInside(10, 0, 10));
  EXPECT_FALSE(LiesInside(10, 1, 10));
  EXPECT_FALSE(LiesInside(kLast, 2, 10));
}

}  // namespace
}  // namespace wavelock

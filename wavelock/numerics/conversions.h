// Conversions between kinds of numbers that are defined for every value, whatever a file holds.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace wavelock {

// Toward zero. Values beyond the range give its ends, NaN gives 0.
template <class Integer>
constexpr Integer Truncate(double value) {
  // Exact as doubles: the least value, and the first one above the range.
  constexpr double kLeast = static_cast<double>(std::numeric_limits<Integer>::min());
  constexpr double kAbove =
      static_cast<double>(Integer{1} << (std::numeric_limits<Integer>::digits - 1)) * 2.0;
  if (value != value) return 0;
  if (value >= kAbove) return std::numeric_limits<Integer>::max();
  if (value < kLeast) return std::numeric_limits<Integer>::min();
  return static_cast<Integer>(value);
}

constexpr std::int32_t TruncateToInt32(double value) {
  return Truncate<std::int32_t>(value);
}

// Toward zero, and of that integer, however large it is, the low 32 bits. NaN and infinities give 0.
inline std::uint32_t TruncateAndWrap(double value) {
  constexpr double kAbove = 9223372036854775808.0;  // the first one above 64 bits with a sign
  constexpr double kWrap = 4294967296.0;
  if (!std::isfinite(value)) return 0;
  const double held = std::fabs(value) < kAbove ? value : std::fmod(value, kWrap);
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(held));
}

// The low 32 bits as a signed number.
constexpr std::int32_t WrapToInt32(std::int64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

}  // namespace wavelock

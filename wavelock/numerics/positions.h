// Arithmetic on file positions and sizes that tells when it leaves 64 bits.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>

namespace wavelock {

inline std::optional<std::uint64_t> CheckedAdd(std::uint64_t a, std::uint64_t b) {
  if (a > std::numeric_limits<std::uint64_t>::max() - b) return std::nullopt;
  return a + b;
}

inline std::optional<std::uint64_t> CheckedMultiply(std::uint64_t a, std::uint64_t b) {
  if (b != 0 && a > std::numeric_limits<std::uint64_t>::max() / b) return std::nullopt;
  return a * b;
}

// True when `size` bytes from `position` on lie inside a file of `fileSize` bytes.
inline bool LiesInside(std::uint64_t position, std::uint64_t size, std::uint64_t fileSize) {
  return position <= fileSize && size <= fileSize - position;
}

}  // namespace wavelock

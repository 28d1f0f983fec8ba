#include "wavelock/platform/file_service.h"

#include <limits>

namespace wavelock {
namespace {

constexpr std::uint64_t kLastPosition = std::numeric_limits<std::int64_t>::max();

}  // namespace

bool File::SeekTo(std::uint64_t position) {
  return position <= kLastPosition &&
         Seek(static_cast<std::int64_t>(position), SeekOrigin::kStart) == position;
}

bool File::ReadExactly(std::span<std::byte> buffer) {
  return Read(buffer) == buffer.size();
}

std::optional<std::uint64_t> MovedPosition(std::uint64_t base, std::int64_t offset) {
  const auto distance = static_cast<std::uint64_t>(offset);
  if (base > kLastPosition) return std::nullopt;
  // Unsigned sums wrap, so a move backwards past the start lands above the last position as well.
  const std::uint64_t target = base + distance;
  if (target > kLastPosition) return std::nullopt;
  return target;
}

}  // namespace wavelock

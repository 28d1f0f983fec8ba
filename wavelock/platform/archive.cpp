#include "wavelock/platform/archive.h"

#include <cstring>
#include <limits>
#include <new>

namespace wavelock {

Archive::Archive(std::span<const std::byte> from, int objectSchema)
    : isStoring_(false), objectSchema_(objectSchema), left_(from) {}

void Archive::Bytes(std::span<std::byte> bytes) {
  if (hasFailed_ || bytes.empty()) return;
  if (isStoring_) {
    try {
      stored_.insert(stored_.end(), bytes.begin(), bytes.end());
    } catch (const std::bad_alloc&) {
      Fail();
    }
    return;
  }
  if (bytes.size() > left_.size()) return Fail();
  std::memcpy(bytes.data(), left_.data(), bytes.size());
  left_ = left_.subspan(bytes.size());
}

void Archive::Count(std::uint32_t& count, std::size_t elementBytes) {
  std::uint32_t stored = count;
  Number(stored);
  if (!isStoring_ && !hasFailed_ && stored > left_.size() / elementBytes) Fail();
  if (!hasFailed_) count = stored;
}

void Archive::Text(std::string& text) {
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) return Fail();
  auto length = static_cast<std::uint32_t>(text.size());
  Count(length, 1);
  if (hasFailed_) return;
  try {
    text.resize(length);
  } catch (const std::bad_alloc&) {
    return Fail();
  }
  Bytes(std::as_writable_bytes(std::span(text)));
}

}  // namespace wavelock

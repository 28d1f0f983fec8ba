// Making the channels of a setup.
#include "wavelock/setup/channel_array.h"

#include <algorithm>
#include <new>

namespace wavelock {

bool ChannelArray::Make(std::int32_t count) {
  entries_.reset();
  size_ = 0;
  if (count < 0) return false;
  entries_.reset(new (std::nothrow) SetupChannel[static_cast<std::size_t>(count)]);
  if (!entries_) return false;
  size_ = static_cast<std::size_t>(count);
  return true;
}

std::size_t ChannelArray::Held(std::int32_t count) const {
  return count > 0 ? std::min(static_cast<std::size_t>(count), size_) : 0;
}

}  // namespace wavelock

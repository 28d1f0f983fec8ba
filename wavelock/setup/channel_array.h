// The channels that a setup owns: none at all, or a fixed number of entries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "wavelock/setup/setup_channel.h"

namespace wavelock {

class ChannelArray {
 public:
  ChannelArray() = default;
  ChannelArray(const ChannelArray&) = delete;
  ChannelArray& operator=(const ChannelArray&) = delete;

  // Drops what there was and makes `count` entries, all zero. False, and none, when there is no memory for
  // them or `count` is negative.
  [[nodiscard]] bool Make(std::int32_t count);

  // Whether there are entries, be it 0 of them.
  explicit operator bool() const { return entries_ != nullptr; }
  std::size_t Size() const { return size_; }

  SetupChannel& operator[](std::size_t index) { return All()[index]; }
  const SetupChannel& operator[](std::size_t index) const { return All()[index]; }

  std::span<SetupChannel> All() { return {entries_.get(), size_}; }
  std::span<const SetupChannel> All() const { return {entries_.get(), size_}; }

  // The first `count` entries, or as many of them as there are.
  std::span<SetupChannel> First(std::int32_t count) { return All().first(Held(count)); }
  std::span<const SetupChannel> First(std::int32_t count) const { return All().first(Held(count)); }

 private:
  std::size_t Held(std::int32_t count) const;

  std::unique_ptr<SetupChannel[]> entries_;
  std::size_t size_ = 0;
};

}  // namespace wavelock

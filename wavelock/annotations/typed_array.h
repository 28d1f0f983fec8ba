// The family of growable arrays of plain values in which a recording keeps what comes in numbers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

#include "wavelock/platform/archive.h"

namespace wavelock {

// Elements lie side by side, are moved by plain copying, and are zero bytes when new.
template <class Element>
class TypedArray {
  static_assert(std::is_trivially_copyable_v<Element>);

 public:
  TypedArray() = default;
  TypedArray(TypedArray&& other) noexcept { *this = std::move(other); }
  TypedArray& operator=(TypedArray&& other) noexcept {
    elements_ = std::move(other.elements_);
    size_ = std::exchange(other.size_, 0);
    capacity_ = std::exchange(other.capacity_, 0);
    growStep_ = other.growStep_;
    return *this;
  }

  // A `growStep` other than -1 is kept for later growth; 0 lets the array choose. Elements that come into use
  // are zero. False when memory ran out: the array is then as it was.
  bool SetSize(std::int32_t size, std::int32_t growStep = -1) {
    if (growStep != -1) growStep_ = growStep;
    if (size <= 0) {
      Free();
      return true;
    }
    if (size > capacity_ && !Reallocate(elements_ ? std::max(size, GrownCapacity()) : size)) return false;
    if (size > size_) std::memset(static_cast<void*>(elements_.get() + size_), 0, Bytes(size - size_));
    size_ = size;
    return true;
  }

  bool Append(const Element& element) {
    const Element copy = element;  // which may stand in the array that moves
    if (!SetSize(size_ + 1)) return false;
    elements_[static_cast<std::size_t>(size_ - 1)] = copy;
    return true;
  }

  // Makes room for that many elements. False when memory ran out: the array is then as it was.
  bool Reserve(std::int32_t capacity) { return capacity <= capacity_ || Reallocate(capacity); }

  // Stores or loads the number of elements and then their bytes as they lie in memory. False when the archive
  // failed; an array that was to be loaded is then as it was.
  bool Serialize(Archive& archive) {
    auto count = static_cast<std::uint32_t>(size_);
    archive.Count(count, sizeof(Element));
    if (archive.HasFailed()) return false;
    constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
    if (count > kMost || !SetSize(static_cast<std::int32_t>(count))) {
      archive.Fail();
      return false;
    }
    archive.Bytes(std::as_writable_bytes(Elements()));
    return !archive.HasFailed();
  }

  std::int32_t Size() const { return size_; }
  std::int32_t Capacity() const { return capacity_; }
  std::int32_t GrowStep() const { return growStep_; }
  bool IsEmpty() const { return size_ == 0; }

  std::span<Element> Elements() { return {elements_.get(), static_cast<std::size_t>(size_)}; }
  std::span<const Element> Elements() const { return {elements_.get(), static_cast<std::size_t>(size_)}; }

 private:
  static std::size_t Bytes(std::int32_t count) { return static_cast<std::size_t>(count) * sizeof(Element); }

  std::int32_t GrownCapacity() const {
    const std::int32_t step = growStep_ != 0 ? growStep_ : std::clamp(size_ / 8, 4, 1024);
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(std::int64_t{capacity_} + step, std::numeric_limits<std::int32_t>::max()));
  }

  bool Reallocate(std::int32_t capacity) {
    std::unique_ptr<Element[]> grown(new (std::nothrow) Element[static_cast<std::size_t>(capacity)]);
    if (!grown) return false;
    if (size_ > 0) std::memcpy(static_cast<void*>(grown.get()), elements_.get(), Bytes(size_));
    elements_ = std::move(grown);
    capacity_ = capacity;
    return true;
  }

  void Free() {
    elements_.reset();
    size_ = capacity_ = 0;
  }

  std::unique_ptr<Element[]> elements_;
  std::int32_t size_ = 0;
  std::int32_t capacity_ = 0;
  std::int32_t growStep_ = 0;
};

}  // namespace wavelock

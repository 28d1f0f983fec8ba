// Numbers and texts as they lie in files: little-endian, packed, at any offset.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

namespace wavelock {

static_assert(std::endian::native == std::endian::little, "stored numbers are copied as they lie");

// A little-endian T without alignment. Zero when new.
template <class T>
class Stored {
  static_assert(std::is_arithmetic_v<T>);

 public:
  using Value = T;

  Stored() = default;
  explicit Stored(T value) { *this = value; }

  operator T() const {
    T value;
    std::memcpy(&value, bytes_, sizeof value);
    return value;
  }
  Stored& operator=(T value) {
    std::memcpy(bytes_, &value, sizeof value);
    return *this;
  }

 private:
  std::byte bytes_[sizeof(T)] = {};
};

// A text of at most N bytes, ended by a NUL when it is shorter.
template <std::size_t N>
class StoredText {
 public:
  // Up to the first NUL, or all N bytes when there is none.
  std::string_view View() const {
    return {chars_, static_cast<std::size_t>(std::find(chars_, chars_ + N, '\0') - chars_)};
  }

  // Cut to N - 1 characters, the rest filled with NULs.
  void Assign(std::string_view text) {
    const std::size_t length = std::min(text.size(), N - 1);
    std::memset(chars_, 0, N);
    std::memcpy(chars_, text.data(), length);
  }

  std::span<char, N> Bytes() { return std::span<char, N>(chars_); }
  std::span<const char, N> Bytes() const { return std::span<const char, N>(chars_); }

 private:
  char chars_[N] = {};
};

// Bytes without meaning for the library, kept so that what lies behind them stands in its place.
template <std::size_t N>
using StoredBytes = std::array<std::byte, N>;

// The bytes of a stored record, for reading into it and writing it out.
template <class Record>
std::span<std::byte> BytesOf(Record& record) {
  static_assert(std::is_trivially_copyable_v<Record> && alignof(Record) == 1);
  return std::as_writable_bytes(std::span<Record, 1>(&record, 1));
}
template <class Record>
std::span<const std::byte> BytesOf(const Record& record) {
  static_assert(std::is_trivially_copyable_v<Record> && alignof(Record) == 1);
  return std::as_bytes(std::span<const Record, 1>(&record, 1));
}

}  // namespace wavelock

// Bytes of a made-up file, number by number, least significant byte first. It shares nothing with the
// library, so that what the library reads was not written by its own hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

namespace wavelock {

class ByteWriter {
 public:
  ByteWriter& U8(std::uint8_t value) { return Word(value, 1); }
  ByteWriter& U16(std::uint16_t value) { return Word(value, 2); }
  ByteWriter& U32(std::uint32_t value) { return Word(value, 4); }
  ByteWriter& U64(std::uint64_t value) { return Word(value, 8); }
  ByteWriter& I16(std::int16_t value) { return U16(static_cast<std::uint16_t>(value)); }
  ByteWriter& I32(std::int32_t value) { return U32(static_cast<std::uint32_t>(value)); }
  ByteWriter& F32(float value) { return U32(BitsOf<std::uint32_t>(value)); }
  ByteWriter& F64(double value) { return U64(BitsOf<std::uint64_t>(value)); }

  // The low `size` bytes of `value`.
  ByteWriter& Word(std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes_.push_back(static_cast<std::byte>(value >> (8 * i)));
    return *this;
  }

  // The characters alone, without a NUL.
  ByteWriter& Text(std::string_view text) {
    return Bytes(std::as_bytes(std::span(text.data(), text.size())));
  }

  ByteWriter& Bytes(std::span<const std::byte> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
  }

  ByteWriter& Zeros(std::size_t count) {
    bytes_.resize(bytes_.size() + count);
    return *this;
  }

  const std::vector<std::byte>& Written() const { return bytes_; }
  operator std::vector<std::byte>() const { return bytes_; }  // so that one serves where bytes are asked for

 private:
  template <class Bits, class Float>
  static Bits BitsOf(Float value) {
    static_assert(sizeof(Bits) == sizeof(Float));
    Bits bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
  }

  std::vector<std::byte> bytes_;
};

}  // namespace wavelock

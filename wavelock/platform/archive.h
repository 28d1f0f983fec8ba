// Archives: runs of values that objects store themselves into and load themselves from. The bytes are in
// memory; where they are kept is their owner's affair.
//
//   number   little-endian, as wide as its type
//   count    an unsigned number of 32 bits
//   text     the count of its bytes, then the bytes
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace wavelock {

// One run of calls serves both directions: each either stores the value or fills it. An archive that has
// failed, because it ended early or memory ran out, stores and fills nothing more.
class Archive {
 public:
  Archive() = default;                                                  // stores into Stored()
  explicit Archive(std::span<const std::byte> from, int objectSchema);  // loads; borrows the bytes

  bool IsStoring() const { return isStoring_; }
  bool HasFailed() const { return hasFailed_; }

  // The generation of the object that is loaded, as whoever keeps the bytes knows it.
  int ObjectSchema() const { return objectSchema_; }

  void Bytes(std::span<std::byte> bytes);

  template <class Value>
  void Number(Value& value) {
    static_assert(std::is_arithmetic_v<Value>);
    Bytes(std::as_writable_bytes(std::span<Value, 1>(&value, 1)));
  }

  // Of elements that have `elementBytes` bytes each and come next. A loaded one fails where fewer bytes are
  // left than that.
  void Count(std::uint32_t& count, std::size_t elementBytes);

  void Text(std::string& text);

  void Fail() { hasFailed_ = true; }

  const std::vector<std::byte>& Stored() const { return stored_; }

 private:
  bool isStoring_ = true;
  bool hasFailed_ = false;
  int objectSchema_ = 0;
  std::vector<std::byte> stored_;
  std::span<const std::byte> left_;  // to load
};

}  // namespace wavelock

// A tagged container as bytes, taken apart and put together without the library's help.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/byte_writer.h"

namespace wavelock {

struct StoredRecord {
  std::uint32_t tag = 0;
  std::uint16_t version = 0;
  std::vector<std::byte> payload{};

  std::int32_t I32(std::size_t offset) const {
    std::int32_t number = 0;
    if (offset + sizeof number > payload.size()) throw std::out_of_range("behind the payload");
    std::memcpy(&number, payload.data() + offset, sizeof number);
    return number;
  }
  template <class Number>
  void Put(std::size_t offset, Number number) {
    if (offset + sizeof number > payload.size()) throw std::out_of_range("behind the payload");
    std::memcpy(payload.data() + offset, &number, sizeof number);
  }
  void PutText(std::size_t offset, const std::string& text) {
    std::memcpy(payload.data() + offset, text.c_str(), text.size() + 1);
  }
};

struct StoredContainer {
  std::uint16_t flags = 0;
  std::vector<StoredRecord> records{};

  StoredContainer() = default;
  explicit StoredContainer(std::span<const std::byte> bytes) {
    const auto word = [&](std::size_t at, std::size_t size) {
      std::uint32_t value = 0;
      std::memcpy(&value, bytes.data() + at, size);
      return value;
    };
    flags = static_cast<std::uint16_t>(word(52, 2));
    for (std::size_t at = 64; at + 16 <= bytes.size();) {
      const std::size_t length = word(at + 8, 4);
      const auto payload = bytes.subspan(at + 16, length);
      records.push_back(
          {word(at, 4), static_cast<std::uint16_t>(word(at + 4, 2)), {payload.begin(), payload.end()}});
      at += 16 + length;
    }
  }

  StoredRecord& Of(std::uint32_t tag) {
    const auto found = std::find_if(records.begin(), records.end(),
                                    [tag](const StoredRecord& record) { return record.tag == tag; });
    if (found == records.end()) throw std::out_of_range("no such record");
    return *found;
  }
  void Remove(std::uint32_t tag) {
    std::erase_if(records, [tag](const StoredRecord& record) { return record.tag == tag; });
  }

  std::vector<std::byte> Bytes() const {
    ByteWriter writer;
    writer.Text("QVR TFF").U8(0).U32(0x8A0502CE).U32(0x805316F0).U32(0xA901F4F7).U32(0x8A110B20);
    writer.Zeros(28).U16(flags).Zeros(10);
    for (const StoredRecord& record : records) {
      const auto length = static_cast<std::uint32_t>(record.payload.size());
      writer.U32(record.tag).U16(record.version).U16(0).U32(length).U32(length).Bytes(record.payload);
    }
    return writer;
  }
};

}  // namespace wavelock

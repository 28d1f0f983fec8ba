// Events of a continuous recording: triggers and key presses, each tied to one sample.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wavelock/annotations/typed_array.h"
#include "wavelock/numerics/stored.h"

namespace wavelock {

// The same bytes in memory, in an archive and in the newer tables of a file.
struct EventRecord {
  Stored<std::uint16_t> stimType;
  Stored<std::uint8_t> keyboard;
  Stored<std::uint8_t> keypadAndClass;
  Stored<std::uint32_t> point;  // sample index; in some stored tables a byte offset
  // Carried for whoever wrote them.
  Stored<std::uint16_t> extraA;
  Stored<std::uint16_t> extraB;
  Stored<std::uint32_t> extraC;
  Stored<std::uint8_t> extraD;
  Stored<std::uint8_t> extraE;
  Stored<std::uint8_t> extraF;

  std::uint8_t Keypad() const { return keypadAndClass & 0x0F; }
  std::uint8_t SegmentClass() const { return static_cast<std::uint8_t>(keypadAndClass >> 4); }
  void SetKeypad(std::uint8_t keypad);
  void SetSegmentClass(std::uint8_t segmentClass);
};
static_assert(sizeof(EventRecord) == 19 && alignof(EventRecord) == 1);
static_assert(offsetof(EventRecord, point) == 4 && offsetof(EventRecord, extraD) == 16);

// Values of a segment class.
inline constexpr std::uint8_t kDcSegment = 0xB;
inline constexpr bool IsSsSegment(std::uint8_t segmentClass) {
  return segmentClass == 0xE || segmentClass == 0xF;
}

// In the order of the file; nothing sorts it.
class CEventTable : public TypedArray<EventRecord> {
 public:
  // Of records whose 19 bytes are equal the first stays. The order and the capacity are kept. False when
  // there was no memory to find them; the table is then as it was.
  bool RemoveDuplicates();
};

}  // namespace wavelock

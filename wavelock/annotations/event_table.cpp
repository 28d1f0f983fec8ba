#include "wavelock/annotations/event_table.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>

namespace wavelock {
namespace {

// A different seed each time, so that no file can be made whose records all fall on one place.
std::uint64_t FreshSeed(const void* address) {
  const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  return now ^ (reinterpret_cast<std::uintptr_t>(address) * 0x9E3779B97F4A7C15u);
}

std::uint64_t Mix(std::uint64_t value) {  // the finaliser of SplitMix64 (Steele, Lea, Flood 2014)
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
  return value ^ (value >> 31);
}

std::uint64_t Hash(const EventRecord& record, std::uint64_t seed) {
  std::uint64_t words[3] = {};
  std::memcpy(words, &record, sizeof record);
  return Mix(Mix(Mix(words[0] ^ seed) + words[1]) + words[2]);
}

bool AreEqual(const EventRecord& a, const EventRecord& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Finds a record among those that were added before. Open addressing over at least twice as many places.
class RecordSet {
 public:
  explicit RecordSet(std::size_t count) : seed_(FreshSeed(this)) {
    while (count_ < 2 * count) count_ *= 2;
    places_.reset(new (std::nothrow) std::uint32_t[count_]);
    if (places_) std::fill_n(places_.get(), count_, kFree);
  }

  bool HasMemory() const { return places_ != nullptr; }

  // False when an equal record is there already. `records[index]` is the new one.
  bool Add(std::span<const EventRecord> records, std::uint32_t index) {
    const std::size_t mask = count_ - 1;
    for (std::size_t place = Hash(records[index], seed_) & mask;; place = (place + 1) & mask) {
      if (places_[place] == kFree) {
        places_[place] = index;
        return true;
      }
      if (AreEqual(records[places_[place]], records[index])) return false;
    }
  }

 private:
  static constexpr std::uint32_t kFree = 0xFFFFFFFF;
  std::uint64_t seed_;
  std::size_t count_ = 16;  // a power of two
  std::unique_ptr<std::uint32_t[]> places_;
};

}  // namespace

void EventRecord::SetKeypad(std::uint8_t keypad) {
  keypadAndClass = static_cast<std::uint8_t>((keypadAndClass & 0xF0) | (keypad & 0x0F));
}

void EventRecord::SetSegmentClass(std::uint8_t segmentClass) {
  keypadAndClass = static_cast<std::uint8_t>((keypadAndClass & 0x0F) | (segmentClass << 4));
}

bool CEventTable::RemoveDuplicates() {
  const std::span<EventRecord> records = Elements();
  RecordSet seen(records.size());
  if (!seen.HasMemory()) return false;
  std::uint32_t kept = 0;
  for (const EventRecord& record : records) {
    records[kept] = record;
    if (seen.Add(records, kept)) ++kept;
  }
  return SetSize(static_cast<std::int32_t>(kept));
}

}  // namespace wavelock

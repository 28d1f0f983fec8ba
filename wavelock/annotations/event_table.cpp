#include "wavelock/annotations/event_table.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <numeric>
#include <vector>

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

// A record told by its hash.
struct Fingerprint {
  std::uint32_t hash;
  std::uint32_t index;
};

std::vector<Fingerprint> Fingerprints(std::span<const EventRecord> records) {
  std::vector<Fingerprint> prints(records.size());
  const std::uint64_t seed = FreshSeed(prints.data());
  for (std::uint32_t i = 0; i < prints.size(); ++i) {
    prints[i] = {static_cast<std::uint32_t>(Hash(records[i], seed) >> 32), i};
  }
  return prints;
}

// The fingerprints by the first bits of their hash, each group in the order of the records. A group is small
// enough that what is done with it stays in the cache, so ten times the records take ten times as long.
class Groups {
 public:
  explicit Groups(std::span<const Fingerprint> prints) : grouped_(prints.size()) {
    constexpr std::size_t kWantedSize = 4096;
    constexpr unsigned kMostBits = 12;
    while (bits_ < kMostBits && prints.size() >> bits_ > kWantedSize) ++bits_;
    ends_.resize(std::size_t{1} << bits_);
    for (const Fingerprint& print : prints) ++ends_[GroupOf(print)];
    std::exclusive_scan(ends_.begin(), ends_.end(), ends_.begin(), 0u);
    for (const Fingerprint& print : prints) grouped_[ends_[GroupOf(print)]++] = print;
  }

  std::size_t Count() const { return ends_.size(); }

  std::span<const Fingerprint> operator[](std::size_t group) const {
    const std::size_t start = group == 0 ? 0 : ends_[group - 1];
    return std::span(grouped_).subspan(start, ends_[group] - start);
  }

 private:
  std::size_t GroupOf(const Fingerprint& print) const { return std::uint64_t{print.hash} >> (32 - bits_); }

  unsigned bits_ = 0;
  std::vector<std::uint32_t> ends_;
  std::vector<Fingerprint> grouped_;
};

// The fingerprints of one group that were met, by the last bits of their hash.
class Met {
 public:
  explicit Met(std::span<const EventRecord> records) : records_(records) {}

  void Start(std::size_t size) {
    std::size_t slots = 16;
    while (slots < 2 * size) slots *= 2;
    slots_.assign(slots, kFree);
  }

  // True when an equal record was met before.
  bool Meet(const Fingerprint& print) {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = print.hash & mask;; slot = (slot + 1) & mask) {
      Fingerprint& met = slots_[slot];
      if (met.index == kFree.index) {
        met = print;
        return false;
      }
      if (met.hash == print.hash && AreEqual(records_[met.index], records_[print.index])) return true;
    }
  }

 private:
  static constexpr Fingerprint kFree{0, 0xFFFFFFFF};

  std::span<const EventRecord> records_;
  std::vector<Fingerprint> slots_;
};

// Marks the records that repeat an earlier one. In a table whose points never fall, as recorders write it,
// equal records have nothing but records of the same point between them. False when the table is not of that
// kind, or has more records at one point than are worth comparing by pairs: some may then be marked already.
bool MarkAmongNeighbours(std::span<const EventRecord> records, std::vector<bool>& isRepeated) {
  constexpr std::size_t kMostAtOnePoint = 16;
  std::size_t first = 0;  // record of the same point
  for (std::size_t i = 1; i < records.size(); ++i) {
    if (records[i].point < records[i - 1].point) return false;
    if (records[i].point != records[i - 1].point) first = i;
    if (i - first >= kMostAtOnePoint) return false;
    const auto earlier = records.subspan(first, i - first);
    const auto isEqual = [&](const EventRecord& record) { return AreEqual(record, records[i]); };
    if (std::any_of(earlier.begin(), earlier.end(), isEqual)) isRepeated[i] = true;
  }
  return true;
}

std::vector<bool> FindRepeated(std::span<const EventRecord> records) {
  std::vector<bool> isRepeated(records.size());
  if (MarkAmongNeighbours(records, isRepeated)) return isRepeated;
  const Groups groups(Fingerprints(records));
  Met met(records);
  for (std::size_t g = 0; g < groups.Count(); ++g) {
    met.Start(groups[g].size());
    for (const Fingerprint& print : groups[g]) {
      if (met.Meet(print)) isRepeated[print.index] = true;
    }
  }
  return isRepeated;
}

}  // namespace

void EventRecord::SetKeypad(std::uint8_t keypad) {
  keypadAndClass = static_cast<std::uint8_t>((keypadAndClass & 0xF0) | (keypad & 0x0F));
}

void EventRecord::SetSegmentClass(std::uint8_t segmentClass) {
  keypadAndClass = static_cast<std::uint8_t>((keypadAndClass & 0x0F) | (segmentClass << 4));
}

bool CEventTable::RemoveDuplicates() {
  const std::span<EventRecord> records = Elements();
  std::vector<bool> isRepeated;
  try {
    isRepeated = FindRepeated(records);
  } catch (const std::bad_alloc&) {
    return false;
  }
  std::size_t kept = 0;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (!isRepeated[i]) records[kept++] = records[i];
  }
  return SetSize(static_cast<std::int32_t>(kept));
}

}  // namespace wavelock

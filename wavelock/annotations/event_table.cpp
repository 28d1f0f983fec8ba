#include "wavelock/annotations/event_table.h"

#include <algorithm>
#include <array>
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

// A record told by its hash. Sorted by it, equal records come to lie side by side, and no pass over them
// jumps through memory as a table of hashes would.
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

// By radix, eleven bits at a time. Stable, so that equal hashes stay in the order of their records.
void SortByHash(std::vector<Fingerprint>& prints) {
  constexpr unsigned kDigitBits = 11;
  constexpr std::uint32_t kDigits = 1u << kDigitBits;
  std::vector<Fingerprint> sorted(prints.size());
  for (unsigned shift = 0; shift < 32; shift += kDigitBits) {
    const auto digit = [shift](const Fingerprint& print) { return (print.hash >> shift) % kDigits; };
    std::array<std::uint32_t, kDigits> places{};
    for (const Fingerprint& print : prints) ++places[digit(print)];
    std::exclusive_scan(places.begin(), places.end(), places.begin(), 0u);
    for (const Fingerprint& print : prints) sorted[places[digit(print)]++] = print;
    prints.swap(sorted);
  }
}

// Marks every record of one hash that equals an earlier one.
void MarkRepeated(std::span<const Fingerprint> sameHash, std::span<const EventRecord> records,
                  std::vector<bool>& isRepeated) {
  for (std::size_t i = 1; i < sameHash.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (isRepeated[sameHash[j].index] || !AreEqual(records[sameHash[i].index], records[sameHash[j].index]))
        continue;
      isRepeated[sameHash[i].index] = true;
      break;
    }
  }
}

std::vector<bool> FindRepeated(std::span<const EventRecord> records) {
  std::vector<bool> isRepeated(records.size());
  std::vector<Fingerprint> prints = Fingerprints(records);
  SortByHash(prints);
  for (auto first = prints.begin(); first != prints.end();) {
    const auto last =
        std::find_if(first, prints.end(), [&](const Fingerprint& p) { return p.hash != first->hash; });
    MarkRepeated({first, last}, records, isRepeated);
    first = last;
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

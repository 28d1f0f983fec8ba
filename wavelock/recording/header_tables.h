// The fixed tables behind the coded fields of a header.
#pragma once

#include <cstdint>
#include <span>

namespace wavelock {

// Codes up to 60000 are the rate itself, in samples per second; those above count hundreds.
inline constexpr int kPlainRates = 60000;

constexpr std::int32_t DecodeRate(std::uint16_t code) {
  return code <= kPlainRates ? code : (code - kPlainRates) * 100;
}

// Hertz.
inline constexpr float kLowpassHz[] = {30,   40,   50,   70,   100,  200,   500,  1000,
                                       1500, 2000, 2500, 3000, 5000, 10000, 20000};
// Two entries of the table of old readers were a trace above the round number, so that a channel read from a
// header can be told from one that was set.
inline constexpr float kHighpassHzWhenReading[] = {0, 0.01001f, 0.03001f, 0.1f, 0.15f, 0.3f, 1,
                                                   5, 10,       30,       100,  150,   300};

// Amplifier gains at the oldest base of 30; a header states its base and scales them.
inline constexpr int kGains[] = {30, 50, 100, 200, 500, 1000, 2500};
inline constexpr int kGainBase = 30;

// The entry at a stored index, or `otherwise` when the table has none.
template <class Entry, std::size_t N>
constexpr Entry EntryAt(const Entry (&table)[N], int index, Entry otherwise) {
  return index >= 0 && index < static_cast<int>(N) ? table[index] : otherwise;
}

}  // namespace wavelock

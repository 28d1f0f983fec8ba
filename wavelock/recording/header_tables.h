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

// Above the plain rates the last two digits are lost, and rates that no code can hold wrap.
constexpr std::uint16_t EncodeRate(std::int32_t rate) {
  return static_cast<std::uint16_t>(rate <= kPlainRates ? rate : rate / 100 + kPlainRates);
}

// The codes that tell what a file holds, by its DataKind.
struct KindCodes {
  std::uint8_t fileForm;
  std::uint8_t acquisitionMode;
};
inline constexpr KindCodes kKindCodes[] = {{0, 1}, {1, 0}, {2, 3}, {0, 6}, {1, 0}};

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

inline constexpr float kHighpassHzWhenWriting[] = {0, 0.01f, 0.03f, 0.1f, 0.15f, 0.3f, 1,
                                                   5, 10,    30,    100,  150,   300};
inline constexpr std::int32_t kGainsWhenWriting[] = {150, 250, 500, 1000, 2500, 5000, 12500};
inline constexpr std::int16_t kGainBaseWhenWriting = 150;

// The entry at a stored index, or `otherwise` when the table has none.
template <class Entry, std::size_t N>
constexpr Entry EntryAt(const Entry (&table)[N], int index, Entry otherwise) {
  return index >= 0 && index < static_cast<int>(N) ? table[index] : otherwise;
}

// The index of the entry that equals `value`, 0 when none does.
template <class Entry, std::size_t N>
constexpr std::uint8_t IndexOf(const Entry (&table)[N], Entry value) {
  for (std::size_t i = 0; i < N; ++i) {
    if (table[i] == value) return static_cast<std::uint8_t>(i);
  }
  return 0;
}

}  // namespace wavelock

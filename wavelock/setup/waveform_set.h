// Ten waveform slots of a setup: the files each one comes from, the time span it shows, and its name.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "wavelock/setup/fixed_text.h"

namespace wavelock {

inline constexpr std::size_t kWaveformSlotCount = 10;

// A file reference with two values.
struct WaveformSource {
  std::int32_t value0 = 0;
  std::int32_t value1 = 0;
  FixedText<512> file{};
  std::int32_t handle =
      0;  // of the loaded file while a program runs; 0 in every setup that was read or copied
};

struct WaveformSources {
  WaveformSource sourceA{};
  WaveformSource sourceB{};
  WaveformSource sourceC{};
  FixedText<512> sourceNote{};
};

// Times in milliseconds.
struct WaveformSlot {
  std::int32_t slotFlag = 1;
  float slotStart = -10;
  float slotEnd = 100;
  std::int32_t slotPoints = 0;  // points from slotStart to slotEnd
  std::int32_t slotField16 = 1;
  std::int32_t slotField20 = 0;
  float slotField24 = -10;  // held within the span
  float slotField28 = 0;    // held within the span
  std::int32_t slotField32 = 0;
  float slotField36 = 0;    // held within the span
  float slotField40 = 100;  // held within the span
  float slotField44 = -100;
  float slotField48 = 100;
  float slotField52 = 0;  // held within the span, slotStart when the span changes
  float slotField56 = 1;
  float slotField60 = -100;
  float slotField64 = 100;  // held within the span, slotEnd when the span changes
  std::int32_t slotField68 = 0;
  FixedText<512> slotFile{};
};

struct WaveformNames {
  std::array<FixedText<512>, kWaveformSlotCount> waveNames{};
  std::int32_t waveField0 = 0;
  std::int32_t waveField1 = 0;
  FixedText<512> waveFile{};
};

struct WaveformSet {
  std::array<WaveformSources, kWaveformSlotCount> sources{};
  std::array<WaveformSlot, kWaveformSlotCount> slots{};
  WaveformNames names{};

  void ClearHandles() {
    for (WaveformSources& slot : sources) slot.sourceA.handle = slot.sourceB.handle = slot.sourceC.handle = 0;
  }
};
static_assert(sizeof(WaveformSet::sources) == 20840 && sizeof(WaveformSet::slots) == 5840 &&
              sizeof(WaveformNames) == 5640 && std::is_trivially_copyable_v<WaveformSet>);

}  // namespace wavelock

// Frequency bands of a setup: the five that are displayed and mapped, and the table of spectral bands.
#pragma once

#include <cstdint>

#include "wavelock/setup/fixed_text.h"

namespace wavelock {

struct SetupBand {
  std::int32_t bandField0 = 0;
  std::int32_t bandField4 = 1;
  std::int32_t bandField8 = 0;
  float bandScale = 0;
  float bandLow = 0;   // Hz
  float bandHigh = 0;  // Hz
  FixedText<20> bandName{};
  FixedText<512> mapFile{};                   // a path; empty for none
  FixedText<512> mappingLdrFile{"Original"};  // the derivation file used for mapping; "Original" for none
  std::int32_t bandField1068 = 0;
  std::int32_t bandField1072 = 0;
  float bandField1076 = 0;
  float bandField1080 = 1;
  float bandField1084 = 0;
  float bandField1088 = 1;
};
static_assert(sizeof(SetupBand) == 1092);

struct BandTableRow {
  FixedText<20> rowName{};
  float rowLow = 0;   // Hz
  float rowHigh = 0;  // Hz
  float rowField0 = 0;
  float rowScale = 0;
  float rowField1 = 0;
};

}  // namespace wavelock

// Parameters of three analyses that are carried from file to file. A number in a name is the field's offset
// in the block's section.
#pragma once

#include <array>
#include <cstdint>

#include "wavelock/setup/setup_channel.h"

namespace wavelock {

struct ParamsA {
  std::int32_t aMode = 0;
  std::int32_t aCount = 10;  // 1 to 500
  float aRangeLow = -50;
  float aRangeHigh = 50;
  float aWindowStart = -100;
  float aWindowEnd = 500;
  float aLevel = 100;
  std::int32_t aField28 = 0;
  std::int32_t aChannel = 0;  // index; the K channel unless chosen otherwise
  std::int32_t aField48 = 0;
  std::int32_t aField52 = 1;
  std::int32_t aField56 = 5;
  std::int32_t aField60 = 0;
  std::int32_t aField64 = 0;
  std::int32_t aField68 = 0;
  std::int32_t aField72 = 1;
  float aField76 = 500;
  std::int32_t aField80 = 25;
  std::int32_t aField84 = 50;
  std::int32_t aField88 = 1;
  std::int32_t aField92 = 0;
  std::int32_t aChannel2 = 0;  // like aChannel
  LongFilterSpec aFilter{{1, 30, 15, 1, 1, 30, 70, 1, 1, 2, 0, 0}, {}};
};

struct ParamsB {
  std::int32_t bMode = 0;
  std::int32_t bCount = 3;  // 1 to 500
  float bWindowStart = 0;
  float bWindowEnd = 2500;
  std::int32_t bField16 = 21;
  std::int32_t bField20 = 1;
  std::int32_t bField24 = 0;
  std::int32_t bField28 = 1;
  float bLevel = 0;
  std::int32_t bField36 = 0;
  std::int32_t bField40 = 4;
  std::int32_t bField44 = 0;
  std::int32_t bSpare = 0;  // in no section
  float bField48 = 2500;
  std::int32_t bField52 = 25;
  std::int32_t bField56 = 0;
  std::int32_t bField60 = 0;
  std::int32_t bField64 = 0;
  std::int32_t bField68 = 0;
  LongFilterSpec bFilter{{1, 30, 0, 1, 1, 30, 70, 1, 3, 2, 0, 0}, {}};
};
static_assert(sizeof(ParamsB) - sizeof(ParamsB::bSpare) == 140);

struct ParamsC {
  std::int32_t cCount = 3;  // 1 to 500
  float cWindowStart = -100;
  float cWindowEnd = 300;
  float cLevel = 250;
  std::int32_t cField16 = 0;
  std::int32_t cField20 = 0;
  std::int32_t cField24 = 1;
  float cRangeLow = -250;
  float cRangeHigh = 250;
  std::int32_t cField40 = 0;
  std::int32_t cField44 = 0;
  std::int32_t cField48 = 0;
  std::int32_t cField52 = 0;
  std::int32_t cField56 = 0;
  float cField60 = 15;
};

}  // namespace wavelock

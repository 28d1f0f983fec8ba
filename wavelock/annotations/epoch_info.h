// The facts of one epoch, for an object that holds its data.
#pragma once

#include <cstdint>

namespace wavelock {

struct EpochInfo {
  std::uint16_t trialType = 0;
  std::uint8_t accept = 1;  // 0 for an epoch that was rejected
  std::uint16_t correct = 0;
  float reactionTime = 0;
  std::uint16_t response = 0;
  std::int32_t tail = 0;  // number of the epoch in its file
};

}  // namespace wavelock

// What is laid over a section of an average when it is read.
#pragma once

#include <array>

#include "wavelock/recording/recording_header.h"

namespace wavelock {

// What the rules for old files multiply a channel's values by; it is done one after the other.
struct SectionRules {
  float domain = 1;
  bool hasSensitivities = false;
  std::array<float, kMaxChannels> sensitivities{};  // squared
  bool isHalved = false;                            // a spectrum without a scale, delivered at half its size
};

}  // namespace wavelock

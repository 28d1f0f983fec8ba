// Between stored integers and microvolts.
#pragma once

#include <cstdint>

#include "wavelock/setup/setup.h"

namespace wavelock {

// `sampleCount` samples of all channels of `setup`, sample-major, the first value being channel 0's: each
// count times the channel's `countScale` times its `channelScale`, the product of the two rounded to single
// precision first. A copied setup converts with the factors of the moment of copying. Without channels
// nothing is written.
void RawToFloat16(const std::int16_t* raw, float* out, std::uint32_t sampleCount, const CSetup& setup);
void RawToFloat32(const std::int32_t* raw, float* out, std::uint32_t sampleCount, const CSetup& setup);

}  // namespace wavelock

// Between stored integers and microvolts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "wavelock/setup/setup.h"

namespace wavelock {

// `sampleCount` samples of all channels of `setup`, sample-major, the first value being channel 0's: each
// count times the channel's `countScale` times its `channelScale`, the product of the two rounded to single
// precision first. A copied setup converts with the factors of the moment of copying. Without channels
// nothing is written.
void RawToFloat16(const std::int16_t* raw, float* out, std::uint32_t sampleCount, const CSetup& setup);
void RawToFloat32(const std::int32_t* raw, float* out, std::uint32_t sampleCount, const CSetup& setup);

// Microvolts to counts of `width` bytes, as many as there are values, the first of them channel 0's: each
// divided by its channel's two factors one after the other, rounded half away from zero, and held within +-
// the largest count; no number becomes 0. True when some value was no number or beyond the range.
bool FloatsToRaw(std::span<const float> in, std::span<std::byte> raw, int width, const CSetup& setup);

// An epoch as it is stored: `channels` values at each point. The setup may count fewer channels; only theirs
// are converted then.
struct EpochShape {
  std::size_t points;
  std::size_t channels;
};

// The values of an epoch keep their places. Each is multiplied by `countScale`, then by `channelScale`, and
// rounded once, so that the last bit may differ from that of the operations above. A copied setup converts
// with the factors that it has now.
void EpochToFloat16(const std::int16_t* raw, float* out, const EpochShape& shape, const CSetup& setup);
void EpochToFloat32(const std::int32_t* raw, float* out, const EpochShape& shape, const CSetup& setup);

}  // namespace wavelock

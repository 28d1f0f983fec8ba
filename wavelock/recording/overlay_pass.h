// Lays the corrections of a recording over its stored samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "wavelock/annotations/correction_overlay.h"
#include "wavelock/recording/recording_header.h"

namespace wavelock {

// One walk over consecutive samples. Where rows do not rise, or positions wrap, which row holds a sample
// depends on the samples before it in the walk, so that a block is one walk, however many pieces it comes in.
class OverlayPass {
 public:
  virtual ~OverlayPass() = default;

  // Corrects, in place, the samples behind those of the last call: whole ones, sample-major. Sums wrap at the
  // samples' width. False, with some of them corrected, when one of them is in no segment although there are
  // segments to lay over it, or when memory ran out.
  virtual bool Apply(std::span<std::byte> samples) = 0;
};

struct OverlaySwitches {
  bool rows;
  bool polynomials;
};

// Begins with sample `start`, for samples of 2 or 4 bytes. Null when memory ran out. The overlay outlives the
// walk and is not changed during it.
std::unique_ptr<OverlayPass> StartOverlayPass(CCorrectionOverlay& overlay,
                                              std::span<const ChannelRecord> channels, int sampleWidth,
                                              std::uint64_t start, OverlaySwitches switches);

}  // namespace wavelock

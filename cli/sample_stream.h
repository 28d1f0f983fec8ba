// Continuous samples in blocks of bounded memory, however long the recording.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "wavelock/recording/recording_file.h"

namespace wavelock::command {

struct SampleRange {
  std::uint64_t from = 0;
  std::uint64_t to = 0;  // not included

  std::uint64_t Count() const { return to - from; }
};

enum class StreamEnd {
  kComplete,
  kStopped,     // the taker gave false
  kUnreadable,  // the file gave no more samples
};

// Takes whole samples, all channels of each, and gives false to stop.
using BlockTaker = std::function<bool(std::span<const std::byte> block, std::uint64_t samples)>;

// What a value is: microvolts as floats, or with `raw` stored integers of `sampleWidth` bytes; and which of
// the recording's corrections are left out of it.
struct SampleForm {
  bool raw = false;
  bool skipPolynomials = false;
  bool skipRows = false;
};

StreamEnd StreamSamples(CRecordingFile& recording, SampleRange range, SampleForm form,
                        const BlockTaker& take);

// Samples per channel; 0 where a damaged header states more than its file can hold.
std::uint64_t CountSamples(CRecordingFile& recording);

}  // namespace wavelock::command

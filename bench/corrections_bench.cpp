// Corrections laid over the samples while they are read in blocks of one second.
#include <memory>
#include <vector>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::bench {
namespace {

using benchmark::State;

void ReadBlocks(State& state, CRecordingFile& recording) {
  Warm(RecordingPath(1, 2));
  if (!recording.OpenFile(RecordingPath(1, 2))) std::abort();
  std::vector<float> block(static_cast<std::size_t>(kRate) * kChannels);
  const auto bytes = static_cast<std::uint32_t>(block.size() * sizeof(float));
  for (auto _ : state) {
    for (std::uint64_t start = 0; start < SampleCount(); start += kRate) {
      if (!recording.ReadContinuousFloat(start, start + kRate, block.data(), bytes, 0, 0)) std::abort();
    }
    benchmark::DoNotOptimize(block.data());
  }
}

void AddRows(State& state, std::uint32_t count) {
  CRecordingFile recording(1);
  for (std::uint32_t i = 0; i < count; ++i) {
    OverlayRow row{};
    row.startSample = static_cast<std::uint32_t>(SampleCount() / count * i);
    for (std::size_t c = 0; c < kChannels; ++c) row.channelValue[c] = static_cast<float>((i + c) % 40) - 20;
    if (!recording.overlay.AddRow(row)) std::abort();
  }
  ReadBlocks(state, recording);
}

// Segments of ten seconds with polynomials of order 3.
void AddSegments(State& state) {
  CRecordingFile recording(1);
  recording.overlay.params.polyOrder = 3;
  recording.overlay.params.polyChannels = kChannels;
  for (std::uint64_t start = 0; start < SampleCount(); start += 10 * kRate) {
    auto segment = std::make_unique<OverlaySegment>();
    segment->firstSample = static_cast<std::uint32_t>(start);
    segment->endSample = static_cast<std::uint32_t>(start + 10 * kRate);
    for (int i = 0; i < 4 * kChannels; ++i) segment->coefficients.Append(20.0 / (1 + i));
    if (!recording.overlay.AddSegment(std::move(segment))) std::abort();
  }
  ReadBlocks(state, recording);
}

}  // namespace

std::vector<Ratio> RegisterCorrections() {
  Add("corrections/none", [](State& s) { AddRows(s, 0); });
  Add("corrections/1000 rows", [](State& s) { AddRows(s, 1000); });
  Add("corrections/10000 rows", [](State& s) { AddRows(s, 10000); });
  Add("corrections/order 3", AddSegments);
  AddFixed("25 million values a second",
           [] { return static_cast<double>(SampleCount()) * kChannels / 25e6; });
  return {
      {"1,000 rows, beside no corrections", "corrections/1000 rows", {"corrections/none"}, 0.7},
      {"10,000 rows, beside 1,000", "corrections/10000 rows", {"corrections/1000 rows"}, 1 / 1.1},
      {"order 3, beside 25 million values a second",
       "corrections/order 3",
       {"25 million values a second"},
       1},
  };
}

}  // namespace wavelock::bench

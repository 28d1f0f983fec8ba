// Epochs of one second beside blocks of one second, and the facts of many epochs.
#include <vector>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::bench {
namespace {

using benchmark::State;

constexpr int kMostEpochs = 65535;
constexpr std::size_t kValues = static_cast<std::size_t>(kRate) * kChannels;
constexpr std::uint32_t kFloatBytes = kValues * sizeof(float);

void ReadEpochs(State& state) {
  const std::string path = EpochsPath();
  Warm(path);
  CRecordingFile recording(1);
  if (!recording.OpenFile(path)) std::abort();
  std::vector<float> out(kValues);
  for (auto _ : state) {
    for (std::uint32_t i = 0; i < SampleCount() / kRate; ++i) {
      if (!recording.ReadEpochFloat(i, out.data(), kFloatBytes)) std::abort();
    }
    benchmark::DoNotOptimize(out.data());
  }
}

void ReadFacts(State& state) {
  const std::string path = ManyEpochsPath(kMostEpochs);
  Warm(path);
  CRecordingFile recording(1);
  for (auto _ : state) {
    if (!recording.OpenFile(path)) std::abort();
    for (std::int32_t i = 0; i < kMostEpochs; ++i) {
      std::uint16_t trialType = 0;
      if (!recording.GetEpochInfo(i, &trialType, nullptr, nullptr, nullptr, nullptr)) std::abort();
      benchmark::DoNotOptimize(trialType);
    }
    recording.CloseFile();
  }
}

}  // namespace

std::vector<Ratio> RegisterEpochs() {
  Add("epochs/float", ReadEpochs);
  Add("epochs/facts", ReadFacts);
  AddFixed("50 ms", [] { return 0.05; });
  return {
      {"epochs as floats, beside continuous blocks", "epochs/float", {"layout1/16/float/blocks"}, 0.9},
      {"open and facts of 65,535 epochs, beside 50 ms", "epochs/facts", {"50 ms"}, 1},
  };
}

}  // namespace wavelock::bench

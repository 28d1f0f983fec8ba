// Averages: turning a data set between its two orders, and opening one.
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/numerics/transpose.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::bench {
namespace {

using benchmark::State;

void Shape(CSetup& setup, std::int32_t channels, std::int32_t points) {
  setup.dataKind = kAverage;
  setup.channelCount = channels;
  setup.pointCount = points;
  for (std::int32_t c = 0; c < channels; ++c) setup.ResetChannel(c);
}

constexpr std::int32_t kTurnedChannels = 256;
constexpr std::int32_t kTurnedPoints = 100'000;

void Turn(State& state) {
  CSetup setup(0);
  Shape(setup, kTurnedChannels, kTurnedPoints);
  CTFDEpoch set(&setup, 0);
  if (!set.Multiplex() || !set.Demultiplex()) std::abort();  // the memory is there from here on
  for (auto _ : state) {
    if (!set.Multiplex() || !set.Demultiplex()) std::abort();
  }
}

void CopyTwice(State& state) {
  const std::vector<float> from(std::size_t{kTurnedChannels} * kTurnedPoints, 1);
  std::vector<float> to(from.size(), 2);
  for (auto _ : state) {
    for (int i = 0; i < 2; ++i) {
      std::memcpy(to.data(), from.data(), from.size() * sizeof(float));
      benchmark::DoNotOptimize(to.data());
      benchmark::ClobberMemory();
    }
  }
}

constexpr std::int32_t kChannelsOfAverage = 512;
constexpr std::int32_t kPointsOfAverage = 10'000;

std::string AveragePath() {
  return MadeByLibrary(
      "average.rec",
      [](CRecordingFile& recording) { Shape(*recording.GetSetup(), kChannelsOfAverage, kPointsOfAverage); },
      [](CRecordingFile& recording) {
        const std::vector<float> data(std::size_t{kChannelsOfAverage} * kPointsOfAverage, 1.5F);
        const auto bytes = static_cast<std::uint32_t>(data.size() * sizeof(float));
        return recording.WriteAverageSection(data.data(), bytes, 1) > 0;
      });
}

void OpenAverage(State& state) {
  const std::string path = AveragePath();
  Warm(path);
  CRecordingFile recording(1);
  for (auto _ : state) {
    if (!recording.OpenFile(path)) std::abort();
    recording.CloseFile();
  }
}

// The same bytes, read into fresh memory and turned into more of it.
void ReadAndTranspose(State& state) {
  const std::string path = AveragePath();
  Warm(path);
  constexpr std::size_t kValues = std::size_t{kChannelsOfAverage} * kPointsOfAverage;
  for (auto _ : state) {
    std::vector<float> in(kValues);
    std::vector<float> out(kValues);
    std::ifstream file(path, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(in.data()), kValues * sizeof(float))) std::abort();
    Transpose(in.data(), kChannelsOfAverage, kPointsOfAverage, kPointsOfAverage, out.data(),
              kChannelsOfAverage);
    benchmark::DoNotOptimize(out.data());
  }
}

}  // namespace

std::vector<Ratio> RegisterAverages() {
  Add("average/turn", Turn);
  Add("average/memcpy twice", CopyTwice);
  Add("average/open", OpenAverage);
  Add("average/read and transpose", ReadAndTranspose);
  return {
      {"Multiplex and Demultiplex, beside memcpy twice", "average/turn", {"average/memcpy twice"}, 0.5},
      {"open of 512 x 10,000, beside three times reading and transposing", "average/open",
       std::vector<std::string>(3, "average/read and transpose"), 1},
  };
}

}  // namespace wavelock::bench

// Opening recordings with many events.
#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::bench {
namespace {

constexpr int kMany = 1000000;

void Open(benchmark::State& state, const std::string& path, int expected) {
  Warm(path);
  CRecordingFile recording(1);
  for (auto _ : state) {
    if (!recording.OpenFile(path) || recording.GetEventCount() < expected) std::abort();
    recording.CloseFile();
  }
}

void Add(const std::string& name, std::string (*path)(), int expected) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { Open(state, path(), expected); })
      ->Unit(benchmark::kMillisecond)
      ->Repetitions(3);
}

// What half a second is, to be compared with.
void HalfASecond(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(0.5);
}

}  // namespace

std::vector<Ratio> RegisterEvents() {
  Add(
      "open/events1/1000000", [] { return EventsPath(1, kMany); }, kMany);
  Add(
      "open/events2/1000000", [] { return EventsPath(2, kMany); }, kMany);
  Add(
      "open/events3/1000000", [] { return EventsPath(3, kMany); }, kMany);
  Add(
      "open/events3/100000", [] { return EventsPath(3, kMany / 10); }, kMany / 10);
  Add(
      "open/triggers", [] { return RecordingPath(0, 2); }, 0);
  benchmark::RegisterBenchmark("half a second", HalfASecond)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1);
  const std::string tenfold = "open/events3/100000";
  return {
      {"open with 1,000,000 events of kind 1, beside 0.5 s", "open/events1/1000000", {"half a second"}, 1},
      {"open with 1,000,000 events of kind 2, beside 0.5 s", "open/events2/1000000", {"half a second"}, 1},
      {"open with 1,000,000 events of kind 3, beside 0.5 s", "open/events3/1000000", {"half a second"}, 1},
      {"ten times the events, beside 12 times the time", "open/events3/1000000",
       std::vector<std::string>(12, tenfold), 1},
      {"scan of layout 0 for triggers, beside pread in blocks", "open/triggers", {"pread/16/blocks"}, 0.5},
  };
}

}  // namespace wavelock::bench

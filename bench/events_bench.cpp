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

void AddOpen(const std::string& name, std::string (*path)(), int expected) {
  Add(name, [=](benchmark::State& state) { Open(state, path(), expected); });
}

}  // namespace

std::vector<Ratio> RegisterEvents() {
  AddOpen(
      "open/events1/1000000", [] { return EventsPath(1, kMany); }, kMany);
  AddOpen(
      "open/events2/1000000", [] { return EventsPath(2, kMany); }, kMany);
  AddOpen(
      "open/events3/1000000", [] { return EventsPath(3, kMany); }, kMany);
  AddOpen(
      "open/events3/100000", [] { return EventsPath(3, kMany / 10); }, kMany / 10);
  AddOpen(
      "open/unordered/1000000", [] { return EventsPath(3, kMany, false); }, kMany);
  AddOpen(
      "open/unordered/100000", [] { return EventsPath(3, kMany / 10, false); }, kMany / 10);
  AddOpen(
      "open/triggers", [] { return RecordingPath(0, 2); }, 0);
  AddFixed("half a second", [] { return 0.5; });
  const auto twelveTimes = [](const std::string& name) { return std::vector<std::string>(12, name); };
  return {
      {"open with 1,000,000 events of kind 1, beside 0.5 s", "open/events1/1000000", {"half a second"}, 1},
      {"open with 1,000,000 events of kind 2, beside 0.5 s", "open/events2/1000000", {"half a second"}, 1},
      {"open with 1,000,000 events of kind 3, beside 0.5 s", "open/events3/1000000", {"half a second"}, 1},
      {"ten times the events, beside 12 times the time", "open/events3/1000000",
       twelveTimes("open/events3/100000"), 1},
      {"the same in no order, beside 0.5 s", "open/unordered/1000000", {"half a second"}, 1},
      {"ten times the events in no order, beside 12 times the time", "open/unordered/1000000",
       twelveTimes("open/unordered/100000"), 1},
      {"scan of layout 0 for triggers, beside pread in blocks", "open/triggers", {"pread/16/blocks"}, 0.5},
  };
}

}  // namespace wavelock::bench

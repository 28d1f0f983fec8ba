// The groups of benchmarks, each with the ratios that its figures are for.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

#include "bench/ratio_report.h"

namespace wavelock::bench {

std::vector<Ratio> RegisterContinuous();
std::vector<Ratio> RegisterCorrections();
std::vector<Ratio> RegisterEvents();
std::vector<Ratio> RegisterEpochs();
std::vector<Ratio> RegisterSetups();
std::vector<Ratio> RegisterAverages();
std::vector<Ratio> RegisterSaving();
std::vector<Ratio> RegisterControl();

template <class Function>
void Add(const std::string& name, Function run) {
  benchmark::RegisterBenchmark(name.c_str(), std::move(run))
      ->Unit(benchmark::kMillisecond)
      ->Repetitions(3)
      ->UseRealTime();
}

// A time to compare with that is no measurement.
inline void AddFixed(const std::string& name, double (*seconds)()) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [=](benchmark::State& state) {
                                 for (auto _ : state) state.SetIterationTime(seconds());
                               })
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1);
}

}  // namespace wavelock::bench

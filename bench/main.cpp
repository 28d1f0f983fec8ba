// The library beside its peers, in one run:
//
//   wavelock_bench [--mebibytes=N] [flags of Google Benchmark]
#include <malloc.h>

#include <cstdlib>
#include <string_view>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"

namespace {

// Memory that was given back is kept, as in a process that has run for a while: otherwise it depends on what
// ran before whether a benchmark pays for fresh pages.
void KeepMemory() {
  constexpr int kMost = 1 << 30;
  mallopt(M_MMAP_THRESHOLD, kMost);
  mallopt(M_TRIM_THRESHOLD, kMost);
}

}  // namespace

int main(int argc, char** argv) {
  namespace bench = wavelock::bench;
  KeepMemory();
  benchmark::Initialize(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    constexpr std::string_view kSize = "--mebibytes=";
    const std::string_view argument = argv[i];
    if (argument.substr(0, kSize.size()) != kSize) return 2;
    bench::SetSampleBytes(std::strtoull(argv[i] + kSize.size(), nullptr, 10) << 20);
  }
  std::vector<bench::Ratio> ratios;
  for (const auto& group : {bench::RegisterContinuous(), bench::RegisterCorrections(),
                            bench::RegisterEvents(), bench::RegisterEpochs(), bench::RegisterSetups(),
                            bench::RegisterAverages(), bench::RegisterControl(), bench::RegisterSaving()}) {
    ratios.insert(ratios.end(), group.begin(), group.end());
  }
  bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios(ratios);
  return 0;
}

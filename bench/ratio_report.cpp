#include "bench/ratio_report.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace wavelock::bench {
namespace {

// What else a machine does only adds to a time.
double Best(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

}  // namespace

RatioReporter::RatioReporter() : ConsoleReporter(::isatty(STDOUT_FILENO) != 0 ? OO_Color : OO_None) {}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
    seconds_[run.run_name.function_name].push_back(run.real_accumulated_time /
                                                   static_cast<double>(run.iterations));
  }
  ConsoleReporter::ReportRuns(runs);
}

void RatioReporter::PrintRatios(const std::vector<Ratio>& ratios) const {
  std::printf("\n%-66s %8s %8s\n", "ratio (time of what it is compared with / own time)", "ratio", "bar");
  for (const Ratio& ratio : ratios) {
    const auto subject = seconds_.find(ratio.subject);
    double reference = 0;
    bool isComplete = subject != seconds_.end();
    for (const std::string& name : ratio.references) {
      const auto found = seconds_.find(name);
      isComplete = isComplete && found != seconds_.end();
      if (isComplete) reference += Best(found->second);
    }
    if (!isComplete) continue;
    const double value = reference / Best(subject->second);
    std::printf("%-66s %8.2f %8.2f%s\n", ratio.title.c_str(), value, ratio.wanted,
                value < ratio.wanted ? "  MISSED" : "");
  }
}

}  // namespace wavelock::bench

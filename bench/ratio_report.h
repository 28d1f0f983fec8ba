// Figures as ratios: what a task took beside what it is compared with, both from one run.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace wavelock::bench {

// The reference's time over the subject's: above 1 the subject is faster. References are added up.
struct Ratio {
  std::string title;
  std::string subject;
  std::vector<std::string> references;
  double wanted;  // the bar
};

// The console's own report, and behind it a table of ratios from the best of all repetitions.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  RatioReporter();
  void ReportRuns(const std::vector<Run>& runs) override;
  void PrintRatios(const std::vector<Ratio>& ratios) const;

 private:
  std::map<std::string, std::vector<double>> seconds_;  // by name, one for each repetition
};

}  // namespace wavelock::bench

// The groups of benchmarks, each with the ratios that its figures are for.
#pragma once

#include <vector>

#include "bench/ratio_report.h"

namespace wavelock::bench {

std::vector<Ratio> RegisterContinuous();
std::vector<Ratio> RegisterEvents();
std::vector<Ratio> RegisterSaving();

}  // namespace wavelock::bench

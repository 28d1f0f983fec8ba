// What a recording holds, by the numbers that files and clients know.
#pragma once

namespace wavelock {

enum DataKind : int {
  kUnreadable = -1,
  kAverage = 0,
  kEpochs = 1,
  kContinuous = 2,
  kAverageWithStatistics = 3,
  kTimeFrequency = 4,
};

}  // namespace wavelock

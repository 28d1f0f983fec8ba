// Which of many intervals holds a position, when the first in their list wins.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wavelock {

// Sorted once, so that looking up costs the logarithm of the number of intervals, also where they overlap and
// lie in no order.
class FirstFitMap {
 public:
  static constexpr std::uint64_t kPositionsEnd = std::uint64_t{1} << 32;
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  struct Interval {
    std::uint64_t first;
    std::uint64_t end;  // not in it; an interval whose end is not above its first position is empty
  };

  // The interval at a position, or kNone, and how far the same answer holds.
  struct Run {
    std::uint32_t index;
    std::uint64_t end;
  };

  FirstFitMap() = default;

  // Throws std::bad_alloc.
  explicit FirstFitMap(std::span<const Interval> intervals);

  // Fastest at and a little behind the position of the last call.
  Run At(std::uint32_t position);

 private:
  struct Step {
    std::uint64_t position;
    std::uint32_t index;  // from this position on to that of the next step
  };

  bool IsWithin(std::size_t step, std::uint64_t position) const;
  std::uint64_t EndOf(std::size_t step) const;
  std::size_t StepAt(std::uint64_t position) const;

  std::vector<Step> steps_;  // the first at position 0
  std::size_t last_ = 0;     // the step that was found last
};

}  // namespace wavelock

#include "wavelock/annotations/first_fit_map.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <queue>

namespace wavelock {
namespace {

// All positions at which an interval begins or ends, upwards.
std::vector<std::uint64_t> Borders(std::span<const FirstFitMap::Interval> intervals) {
  std::vector<std::uint64_t> borders;
  borders.reserve(2 * intervals.size());
  for (const auto& interval : intervals) {
    if (interval.first >= interval.end) continue;
    borders.push_back(interval.first);
    borders.push_back(interval.end);
  }
  std::sort(borders.begin(), borders.end());
  borders.erase(std::unique(borders.begin(), borders.end()), borders.end());
  return borders;
}

std::vector<std::uint32_t> OrderOfBeginnings(std::span<const FirstFitMap::Interval> intervals) {
  std::vector<std::uint32_t> order(intervals.size());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(), [intervals](std::uint32_t a, std::uint32_t b) {
    return intervals[a].first < intervals[b].first;
  });
  return order;
}

}  // namespace

// Walks over the borders with those intervals at hand that have begun, the first in the list on top.
FirstFitMap::FirstFitMap(std::span<const Interval> intervals) {
  steps_.push_back({0, kNone});
  const std::vector<std::uint32_t> order = OrderOfBeginnings(intervals);
  auto next = order.begin();
  std::priority_queue<std::uint32_t, std::vector<std::uint32_t>, std::greater<>> begun;
  for (const std::uint64_t border : Borders(intervals)) {
    for (; next != order.end() && intervals[*next].first <= border; ++next) begun.push(*next);
    while (!begun.empty() && intervals[begun.top()].end <= border) begun.pop();
    const std::uint32_t winner = begun.empty() ? kNone : begun.top();
    if (border == 0) {
      steps_.front().index = winner;
    } else if (steps_.back().index != winner) {
      steps_.push_back({border, winner});
    }
  }
}

// True when the step reaches over the position.
bool FirstFitMap::IsWithin(std::size_t step, std::uint64_t position) const {
  return step < steps_.size() && steps_[step].position <= position && position < EndOf(step);
}

std::uint64_t FirstFitMap::EndOf(std::size_t step) const {
  return step + 1 < steps_.size() ? steps_[step + 1].position : kPositionsEnd;
}

std::size_t FirstFitMap::StepAt(std::uint64_t position) const {
  const auto next = std::upper_bound(steps_.begin(), steps_.end(), position,
                                     [](std::uint64_t p, const Step& step) { return p < step.position; });
  return static_cast<std::size_t>(next - steps_.begin()) - 1;
}

FirstFitMap::Run FirstFitMap::At(std::uint32_t position) {
  if (steps_.empty()) return {kNone, kPositionsEnd};
  if (!IsWithin(last_, position)) last_ = IsWithin(last_ + 1, position) ? last_ + 1 : StepAt(position);
  return {steps_[last_].index, EndOf(last_)};
}

}  // namespace wavelock

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
  const std::vector<std::uint32_t> order = OrderOfBeginnings(intervals);
  auto next = order.begin();
  std::priority_queue<std::uint32_t, std::vector<std::uint32_t>, std::greater<>> begun;
  for (const std::uint64_t border : Borders(intervals)) {
    for (; next != order.end() && intervals[*next].first <= border; ++next) begun.push(*next);
    while (!begun.empty() && intervals[begun.top()].end <= border) begun.pop();
    const std::uint32_t winner = begun.empty() ? kNone : begun.top();
    if (steps_.empty() || steps_.back().index != winner) steps_.push_back({border, winner});
  }
}

FirstFitMap::Run FirstFitMap::At(std::uint32_t position) const {
  const auto next = std::upper_bound(steps_.begin(), steps_.end(), position,
                                     [](std::uint32_t p, const Step& step) { return p < step.position; });
  return {next == steps_.begin() ? kNone : std::prev(next)->index,
          next == steps_.end() ? kPositionsEnd : next->position};
}

}  // namespace wavelock

// What the sort does, seen from the numbers: let it be done with all those before place j. Place j then meets
// the numbers that earlier rounds carry past it, and these are the sorted ones of the places before it. It
// lets all pass that are not greater than the one that it holds, then hands on what it holds and keeps the
// greater one instead, and so on. The outcome is the sorted row with the new number in it, where
//
//   - the new number stands behind all that equal it, and
//   - of each group of equal numbers that are greater, the first has become the last: place j let go of it
//     only when a number still greater came.
//
// So each group of equal numbers is a ring that turns by one for every smaller number that comes, and takes
// its own numbers at its end. Where in the ring each of them ends is found from the last event to the first:
// turn the ring back, and take out the number at its end.
#include "wavelock/annotations/exchange_sort.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>

namespace wavelock {
namespace {

// Counts of marked places among the first so many, after P. Fenwick, "A new data structure for cumulative
// frequency tables" (1994).
class PlaceCounts {
 public:
  explicit PlaceCounts(std::size_t places) : sums_(places + 1) {}

  void MarkAll() {
    for (std::size_t i = 1; i < sums_.size(); ++i) sums_[i] = static_cast<std::uint32_t>(i & (~i + 1));
  }
  void Mark(std::size_t place) { Add(place, 1); }
  void Unmark(std::size_t place) { Add(place, ~std::uint32_t{0}); }

  // How many of the places before `place` are marked.
  std::uint32_t CountBefore(std::size_t place) const {
    std::uint32_t count = 0;
    for (std::size_t i = place; i > 0; i &= i - 1) count += sums_[i];
    return count;
  }

  // The marked place that has `rank` marked ones before it.
  std::size_t PlaceOf(std::size_t rank) const {
    std::size_t place = 0;
    for (std::size_t step = std::bit_floor(sums_.size()); step > 0; step /= 2) {
      if (place + step >= sums_.size() || sums_[place + step] > rank) continue;
      place += step;
      rank -= sums_[place];
    }
    return place;
  }

 private:
  void Add(std::size_t place, std::uint32_t amount) {
    for (std::size_t i = place + 1; i < sums_.size(); i += i & (~i + 1)) sums_[i] += amount;
  }

  std::vector<std::uint32_t> sums_;
};

// How many smaller numbers stand before each.
std::vector<std::uint32_t> SmallerBefore(std::span<const std::uint32_t> values,
                                         std::span<const std::uint32_t> groupStart) {
  std::vector<std::uint32_t> smaller(values.size());
  PlaceCounts seen(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    smaller[i] = seen.CountBefore(groupStart[i]);
    seen.Mark(groupStart[i]);
  }
  return smaller;
}

// Sets the final order of a group. On entry it holds the indexes as they came; `turnsBefore` tells how often
// the ring would have turned before each of them, had it stood from the start, and `turns` how often in all.
void TurnRing(std::span<std::uint32_t> group, std::span<const std::uint32_t> turnsBefore,
              std::uint32_t turns) {
  const std::vector<std::uint32_t> came(group.begin(), group.end());
  PlaceCounts open(group.size());
  open.MarkAll();
  std::size_t head = 0;  // rank, among the places that are open, of the ring's first number
  for (std::size_t left = came.size(); left > 0; --left) {
    const std::uint32_t index = came[left - 1];
    const std::size_t back = (turns - turnsBefore[index]) % left;
    turns = turnsBefore[index];
    head = (head + left - back) % left;
    const std::size_t place = open.PlaceOf((head + left - 1) % left);
    group[place] = index;
    open.Unmark(place);
    if (head > 0) --head;
  }
}

}  // namespace

std::vector<std::uint32_t> ExchangeSortOrder(std::span<const std::uint32_t> values) {
  std::vector<std::uint32_t> order(values.size());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(),
                   [values](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });
  // Equal numbers share the place of the first of them.
  std::vector<std::uint32_t> groupStart(values.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) {
    const bool isFirst = i == 0 || values[order[i - 1]] != values[order[i]];
    groupStart[order[i]] = isFirst ? i : groupStart[order[i - 1]];
  }
  const std::vector<std::uint32_t> smaller = SmallerBefore(values, groupStart);
  for (std::size_t start = 0; start < order.size();) {
    const auto equals = [&](std::uint32_t index) { return groupStart[index] == start; };
    const auto first = order.begin() + static_cast<std::ptrdiff_t>(start);
    const auto size = static_cast<std::size_t>(std::find_if_not(first, order.end(), equals) - first);
    if (size > 1) TurnRing(std::span(order).subspan(start, size), smaller, static_cast<std::uint32_t>(start));
    start += size;
  }
  return order;
}

}  // namespace wavelock

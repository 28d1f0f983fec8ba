// The order in which an exchange sort leaves its numbers, without its cost.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace wavelock {

// The sort compares the number at each place i with those at all later places j, in that order, and swaps the
// two whenever the first is greater. It is not stable: a number that is swapped can pass others that equal
// it. The result has, for each place, the index that its number came from.
//
// Takes n log n steps. Throws std::bad_alloc.
std::vector<std::uint32_t> ExchangeSortOrder(std::span<const std::uint32_t> values);

}  // namespace wavelock

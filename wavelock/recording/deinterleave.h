// From the orders in which files store samples to sample-major order.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wavelock {

// Takes `kept` bytes from each of `records` records of `stride` bytes, beginning with the byte `skip`.
void CopyFromRecords(const std::byte* in, std::size_t records, std::size_t stride, std::size_t skip,
                     std::size_t kept, std::byte* out);

// Transposes words of one sample: `in` has `channels` rows, each `rowLength` words behind the one before it;
// `out` gets the first `samples` words of all rows as `samples` rows of `channels` words. `isStreamed` when
// this is a piece of more than caches hold.
void TransposeChannels(const std::uint16_t* in, std::size_t channels, std::size_t rowLength,
                       std::size_t samples, std::uint16_t* out, bool isStreamed);

}  // namespace wavelock

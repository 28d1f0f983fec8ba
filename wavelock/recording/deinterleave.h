// From the orders in which files store samples to sample-major order. All counts are in words of one sample.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wavelock {

// Takes `kept` words from each of `records` records of `stride` words, beginning with the word `skip`.
void CopyFromRecords(const std::uint16_t* in, std::size_t records, std::size_t stride, std::size_t skip,
                     std::size_t kept, std::uint16_t* out);
void CopyFromRecords(const std::uint32_t* in, std::size_t records, std::size_t stride, std::size_t skip,
                     std::size_t kept, std::uint32_t* out);

// Transposes: `in` has `channels` rows, each `rowLength` words behind the one before it; `out` gets the first
// `samples` words of all rows as `samples` rows of `channels` words.
void TransposeChannels(const std::uint16_t* in, std::size_t channels, std::size_t rowLength,
                       std::size_t samples, std::uint16_t* out);

}  // namespace wavelock

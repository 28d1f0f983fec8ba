#include "wavelock/recording/deinterleave.h"

#include <algorithm>
#include <cstring>

namespace wavelock {
namespace {

template <class Word>
void CopyRecords(const Word* in, std::size_t records, std::size_t stride, std::size_t skip, std::size_t kept,
                 Word* out) {
  for (std::size_t i = 0; i < records; ++i) {
    std::memcpy(out, in + skip, kept * sizeof(Word));
    in += stride;
    out += kept;
  }
}

// A square of 4 by 4 words is turned in four registers: pairs of words change places, then pairs of pairs.
constexpr std::size_t kSquare = 4;

std::uint64_t LoadFour(const std::uint16_t* words) {
  std::uint64_t four;
  std::memcpy(&four, words, sizeof four);
  return four;
}

void StoreFour(std::uint64_t four, std::uint16_t* words) {
  std::memcpy(words, &four, sizeof four);
}

void TransposeSquare(const std::uint16_t* in, std::size_t rowLength, std::uint16_t* out,
                     std::size_t outStride) {
  constexpr std::uint64_t kEvenWords = 0x0000FFFF0000FFFF;
  constexpr std::uint64_t kLowPair = 0x00000000FFFFFFFF;
  const std::uint64_t a = LoadFour(in);
  const std::uint64_t b = LoadFour(in + rowLength);
  const std::uint64_t c = LoadFour(in + 2 * rowLength);
  const std::uint64_t d = LoadFour(in + 3 * rowLength);
  const std::uint64_t abEven = (a & kEvenWords) | ((b & kEvenWords) << 16);
  const std::uint64_t abOdd = ((a >> 16) & kEvenWords) | (b & ~kEvenWords);
  const std::uint64_t cdEven = (c & kEvenWords) | ((d & kEvenWords) << 16);
  const std::uint64_t cdOdd = ((c >> 16) & kEvenWords) | (d & ~kEvenWords);
  StoreFour((abEven & kLowPair) | (cdEven << 32), out);
  StoreFour((abOdd & kLowPair) | (cdOdd << 32), out + outStride);
  StoreFour((abEven >> 32) | (cdEven & ~kLowPair), out + 2 * outStride);
  StoreFour((abOdd >> 32) | (cdOdd & ~kLowPair), out + 3 * outStride);
}

void TransposeEdge(const std::uint16_t* in, std::size_t channels, std::size_t rowLength, std::size_t samples,
                   std::uint16_t* out, std::size_t outStride) {
  for (std::size_t s = 0; s < samples; ++s) {
    for (std::size_t c = 0; c < channels; ++c) out[s * outStride + c] = in[c * rowLength + s];
  }
}

}  // namespace

void CopyFromRecords(const std::uint16_t* in, std::size_t records, std::size_t stride, std::size_t skip,
                     std::size_t kept, std::uint16_t* out) {
  CopyRecords(in, records, stride, skip, kept, out);
}

void CopyFromRecords(const std::uint32_t* in, std::size_t records, std::size_t stride, std::size_t skip,
                     std::size_t kept, std::uint32_t* out) {
  CopyRecords(in, records, stride, skip, kept, out);
}

// In bands of as many samples as one cache line of each row holds, so that every line is fetched once and the
// rows that are written stay in the cache until they are full.
void TransposeChannels(const std::uint16_t* in, std::size_t channels, std::size_t rowLength,
                       std::size_t samples, std::uint16_t* out) {
  constexpr std::size_t kBand = 32;
  const std::size_t squareChannels = channels - channels % kSquare;
  for (std::size_t first = 0; first < samples; first += kBand) {
    const std::size_t band = std::min(kBand, samples - first);
    const std::size_t squareSamples = band - band % kSquare;
    const std::uint16_t* from = in + first;
    std::uint16_t* to = out + first * channels;
    for (std::size_t c = 0; c < squareChannels; c += kSquare) {
      for (std::size_t s = 0; s < squareSamples; s += kSquare) {
        TransposeSquare(from + c * rowLength + s, rowLength, to + s * channels + c, channels);
      }
    }
    TransposeEdge(from + squareChannels * rowLength, channels - squareChannels, rowLength, band,
                  to + squareChannels, channels);
    TransposeEdge(from + squareSamples, squareChannels, rowLength, band - squareSamples,
                  to + squareSamples * channels, channels);
  }
}

}  // namespace wavelock

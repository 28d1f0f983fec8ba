#include "wavelock/recording/deinterleave.h"

#include <algorithm>
#include <cstring>

#include "wavelock/numerics/streaming.h"

namespace wavelock {
namespace {

// A square of 8 by 8 words, turned by shuffling its two halves together like cards, three times: after each
// the bits of a word's place have moved on by one, so that after three row and column have changed. Compilers
// make each shuffle a few vector instructions.
constexpr std::size_t kSquare = 8;
constexpr std::size_t kSquareWords = kSquare * kSquare;

void Shuffle(const std::uint16_t* __restrict in, std::uint16_t* __restrict out) {
  for (std::size_t i = 0; i < kSquareWords / 2; ++i) {
    out[2 * i] = in[i];
    out[2 * i + 1] = in[kSquareWords / 2 + i];
  }
}

void TransposeSquare(const std::uint16_t* in, std::size_t rowLength, std::uint16_t* out,
                     std::size_t outStride) {
  constexpr std::size_t kRowBytes = kSquare * sizeof *in;
  alignas(16) std::uint16_t a[kSquareWords];
  alignas(16) std::uint16_t b[kSquareWords];
  for (std::size_t i = 0; i < kSquare; ++i) std::memcpy(a + i * kSquare, in + i * rowLength, kRowBytes);
  Shuffle(a, b);
  Shuffle(b, a);
  Shuffle(a, b);
  for (std::size_t i = 0; i < kSquare; ++i) std::memcpy(out + i * outStride, b + i * kSquare, kRowBytes);
}

void TransposeEdge(const std::uint16_t* in, std::size_t channels, std::size_t rowLength, std::size_t samples,
                   std::uint16_t* out, std::size_t outStride) {
  for (std::size_t s = 0; s < samples; ++s) {
    for (std::size_t c = 0; c < channels; ++c) out[s * outStride + c] = in[c * rowLength + s];
  }
}

void TransposeBand(const std::uint16_t* in, std::size_t channels, std::size_t rowLength, std::size_t samples,
                   std::uint16_t* out) {
  const std::size_t squareChannels = channels - channels % kSquare;
  const std::size_t squareSamples = samples - samples % kSquare;
  for (std::size_t c = 0; c < squareChannels; c += kSquare) {
    for (std::size_t s = 0; s < squareSamples; s += kSquare) {
      TransposeSquare(in + c * rowLength + s, rowLength, out + s * channels + c, channels);
    }
  }
  TransposeEdge(in + squareChannels * rowLength, channels - squareChannels, rowLength, samples,
                out + squareChannels, channels);
  TransposeEdge(in + squareSamples, squareChannels, rowLength, samples - squareSamples,
                out + squareSamples * channels, channels);
}

}  // namespace

void CopyFromRecords(const std::byte* in, std::size_t records, std::size_t stride, std::size_t skip,
                     std::size_t kept, std::byte* out) {
  for (std::size_t i = 0; i < records; ++i) {
    std::memcpy(out, in + skip, kept);
    in += stride;
    out += kept;
  }
}

// In bands of as many samples as one cache line of each row holds, so that every line is fetched once and the
// rows that are written stay in the cache until they are full.
void TransposeChannels(const std::uint16_t* in, std::size_t channels, std::size_t rowLength,
                       std::size_t samples, std::uint16_t* out, bool isStreamed) {
  constexpr std::size_t kBand = 32;
  constexpr std::size_t kMostStreamedChannels = 256;
  std::uint16_t streamed[kBand * kMostStreamedChannels];
  isStreamed = isStreamed && channels <= kMostStreamedChannels && IsStreamable(out);
  for (std::size_t first = 0; first < samples; first += kBand) {
    const std::size_t band = std::min(kBand, samples - first);
    std::uint16_t* const to = out + first * channels;
    TransposeBand(in + first, channels, rowLength, band, isStreamed ? streamed : to);
    if (isStreamed) StreamCopy(streamed, band * channels * sizeof *to, to);
  }
}

}  // namespace wavelock

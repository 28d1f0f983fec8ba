#include "wavelock/numerics/transpose.h"

#include <algorithm>
#include <cstdint>

#include "wavelock/numerics/streaming.h"

namespace wavelock {
namespace {

// Squares of 4 by 4 values are turned in registers.
constexpr std::size_t kSquare = 4;

// Tiles are long on the side on which the matrix is, so that few places of memory are read and written at a
// time, and as broad as one line of the cache.
constexpr std::size_t kLong = 256;
constexpr std::size_t kLine = 16;
constexpr std::size_t kBroad = kLine;

#ifdef WAVELOCK_HAS_STREAMING

struct SquareInRegisters {
  SquareInRegisters(const float* in, std::size_t stride)
      : columns{_mm_loadu_ps(in), _mm_loadu_ps(in + stride), _mm_loadu_ps(in + 2 * stride),
                _mm_loadu_ps(in + 3 * stride)} {
    _MM_TRANSPOSE4_PS(columns[0], columns[1], columns[2], columns[3]);
  }

  __m128 columns[kSquare];
};

void TransposeSquare(const float* in, std::size_t inStride, float* out, std::size_t outStride) {
  const SquareInRegisters turned(in, inStride);
  for (std::size_t c = 0; c < kSquare; ++c) _mm_storeu_ps(out + c * outStride, turned.columns[c]);
}

// Around the cache, to addresses that 16 divides.
void StreamSquare(const float* in, std::size_t inStride, float* out, std::size_t outStride) {
  const SquareInRegisters turned(in, inStride);
  for (std::size_t c = 0; c < kSquare; ++c) _mm_stream_ps(out + c * outStride, turned.columns[c]);
}

#else

void TransposeSquare(const float* in, std::size_t inStride, float* out, std::size_t outStride) {
  for (std::size_t c = 0; c < kSquare; ++c) {
    for (std::size_t r = 0; r < kSquare; ++r) out[c * outStride + r] = in[r * inStride + c];
  }
}

#endif

void TransposeEdge(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
                   std::size_t outStride) {
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t r = 0; r < rows; ++r) out[c * outStride + r] = in[r * inStride + c];
  }
}

// Four rows of `out` grow at a time, so that each of their lines is written at once.
template <void (*Turn)(const float*, std::size_t, float*, std::size_t)>
void TransposeTile(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
                   std::size_t outStride) {
  const std::size_t rowsInSquares = rows - rows % kSquare;
  const std::size_t columnsInSquares = columns - columns % kSquare;
  for (std::size_t c = 0; c < columnsInSquares; c += kSquare) {
    for (std::size_t r = 0; r < rowsInSquares; r += kSquare) {
      Turn(in + r * inStride + c, inStride, out + c * outStride + r, outStride);
    }
  }
  TransposeEdge(in + rowsInSquares * inStride, rows - rowsInSquares, columns, inStride, out + rowsInSquares,
                outStride);
  TransposeEdge(in + columnsInSquares, rowsInSquares, columns - columnsInSquares, inStride,
                out + columnsInSquares * outStride, outStride);
}

// ---- through the cache

// Asks for the lines of a tile that comes next: its rows lie too far apart for a processor to guess them.
void Prefetch([[maybe_unused]] const float* rows, [[maybe_unused]] std::size_t stride) {
#if defined(__GNUC__)
  for (std::size_t row = 0; row < kBroad; ++row) {
    for (std::size_t at = 0; at < kLong; at += kLine) __builtin_prefetch(rows + row * stride + at);
  }
#endif
}

void TransposeInCache(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride,
                      float* out, std::size_t outStride) {
  const bool alongRows = columns >= rows;
  const auto turn = [&](std::size_t r, std::size_t c) {
    const std::size_t tileRows = std::min(alongRows ? kBroad : kLong, rows - r);
    const std::size_t tileColumns = std::min(alongRows ? kLong : kBroad, columns - c);
    TransposeTile<TransposeSquare>(in + r * inStride + c, tileRows, tileColumns, inStride,
                                   out + c * outStride + r, outStride);
  };
  if (alongRows) {
    for (std::size_t c = 0; c < columns; c += kLong) {
      for (std::size_t r = 0; r < rows; r += kBroad) {
        if (r + 2 * kBroad <= rows && c + kLong <= columns)
          Prefetch(in + (r + kBroad) * inStride + c, inStride);
        turn(r, c);
      }
    }
  } else {
    for (std::size_t r = 0; r < rows; r += kLong) {
      for (std::size_t c = 0; c < columns; c += kBroad) {
        if (c + 2 * kBroad <= columns && r + kLong <= rows)
          Prefetch(out + (c + kBroad) * outStride + r, outStride);
        turn(r, c);
      }
    }
  }
}

// ---- around the cache

#ifdef WAVELOCK_HAS_STREAMING

// Rows that begin at different places of their lines leave pieces, which are slower than lines in the cache.
bool IsWorthStreaming(std::size_t rows, std::size_t columns, const float* out, std::size_t outStride) {
  return rows * columns >= kMoreThanCachesHold / sizeof(float) && outStride % kLine == 0 && IsStreamable(out);
}

void Stream(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
            std::size_t outStride) {
  // Rows that lie a large power of two apart share few places of the cache: their tiles are flat, so that the
  // lines of few of them are needed at a time.
  constexpr std::size_t kSharingStride = 512;
  const bool areSharing = inStride % kSharingStride == 0 && rows > kLong;
  const std::size_t tall = areSharing ? kBroad : kLong;
  const std::size_t wide = areSharing ? kLong : kBroad;
  // Tiles end where lines of `out` do.
  const std::size_t before = reinterpret_cast<std::uintptr_t>(out) / sizeof(float) % kLine;
  const auto endOf = [&](std::size_t r) {
    return std::min(rows, (r + before) / tall * tall + tall - before);
  };
  const auto turn = [&](std::size_t r, std::size_t c) {
    TransposeTile<StreamSquare>(in + r * inStride + c, endOf(r) - r, std::min(wide, columns - c), inStride,
                                out + c * outStride + r, outStride);
  };
  if (columns >= rows) {
    for (std::size_t c = 0; c < columns; c += wide) {
      for (std::size_t r = 0; r < rows; r = endOf(r)) turn(r, c);
    }
  } else {
    for (std::size_t r = 0; r < rows; r = endOf(r)) {
      for (std::size_t c = 0; c < columns; c += wide) turn(r, c);
    }
  }
  _mm_sfence();  // whoever sees what the caller does next sees the values, in whatever thread
}

#endif

}  // namespace

void Transpose(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
               std::size_t outStride) {
#ifdef WAVELOCK_HAS_STREAMING
  if (IsWorthStreaming(rows, columns, out, outStride)) {
    Stream(in, rows, columns, inStride, out, outStride);
    return;
  }
#endif
  TransposeInCache(in, rows, columns, inStride, out, outStride);
}

}  // namespace wavelock

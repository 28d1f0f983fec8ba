#include "wavelock/numerics/transpose.h"

#include <algorithm>
#include <cstring>

namespace wavelock {
namespace {

// Squares of 4 by 4 values are turned in registers.
constexpr std::size_t kSquare = 4;

// Tiles are long on the side on which the matrix is, so that few places of memory are read and written at a
// time, and as broad as one line of the cache.
constexpr std::size_t kLong = 256;
constexpr std::size_t kBroad = 16;

void TransposeSquare(const float* in, std::size_t inStride, float* out, std::size_t outStride) {
  float square[kSquare][kSquare];
  for (std::size_t r = 0; r < kSquare; ++r) std::memcpy(square[r], in + r * inStride, sizeof square[r]);
  for (std::size_t c = 0; c < kSquare; ++c) {
    const float column[kSquare] = {square[0][c], square[1][c], square[2][c], square[3][c]};
    std::memcpy(out + c * outStride, column, sizeof column);
  }
}

void TransposeEdge(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
                   std::size_t outStride) {
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t r = 0; r < rows; ++r) out[c * outStride + r] = in[r * inStride + c];
  }
}

// Squares follow each other along the side on which the matrix is long: along the other one a stride of a
// power of two would let their lines of the cache displace each other.
void TransposeSquares(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride,
                      float* out, std::size_t outStride, bool alongRows) {
  const auto turn = [&](std::size_t r, std::size_t c) {
    TransposeSquare(in + r * inStride + c, inStride, out + c * outStride + r, outStride);
  };
  if (alongRows) {
    for (std::size_t r = 0; r < rows; r += kSquare) {
      for (std::size_t c = 0; c < columns; c += kSquare) turn(r, c);
    }
  } else {
    for (std::size_t c = 0; c < columns; c += kSquare) {
      for (std::size_t r = 0; r < rows; r += kSquare) turn(r, c);
    }
  }
}

void TransposeTile(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
                   std::size_t outStride, bool alongRows) {
  const std::size_t rowsInSquares = rows - rows % kSquare;
  const std::size_t columnsInSquares = columns - columns % kSquare;
  TransposeSquares(in, rowsInSquares, columnsInSquares, inStride, out, outStride, alongRows);
  TransposeEdge(in + rowsInSquares * inStride, rows - rowsInSquares, columns, inStride, out + rowsInSquares,
                outStride);
  TransposeEdge(in + columnsInSquares, rowsInSquares, columns - columnsInSquares, inStride,
                out + columnsInSquares * outStride, outStride);
}

// Asks for the lines of a tile that comes next: its rows lie too far apart for a processor to guess them.
void Prefetch([[maybe_unused]] const float* rows, [[maybe_unused]] std::size_t stride) {
#if defined(__GNUC__)
  constexpr std::size_t kLine = 16;
  for (std::size_t row = 0; row < kBroad; ++row) {
    for (std::size_t at = 0; at < kLong; at += kLine) __builtin_prefetch(rows + row * stride + at);
  }
#endif
}

}  // namespace

void Transpose(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
               std::size_t outStride) {
  const bool alongRows = columns >= rows;
  const auto turn = [&](std::size_t r, std::size_t c) {
    const std::size_t tileRows = std::min(alongRows ? kBroad : kLong, rows - r);
    const std::size_t tileColumns = std::min(alongRows ? kLong : kBroad, columns - c);
    TransposeTile(in + r * inStride + c, tileRows, tileColumns, inStride, out + c * outStride + r, outStride,
                  alongRows);
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

}  // namespace wavelock

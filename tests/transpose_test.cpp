// Rows become columns in every proportion, in the cache and around it.
#include "wavelock/numerics/transpose.h"

#include <gtest/gtest.h>

#include <vector>

namespace wavelock {
namespace {

struct Shape {
  std::size_t rows;
  std::size_t columns;
  std::size_t inStride;
  std::size_t outStride;
};

constexpr float kUntouched = -1;

float ValueAt(std::size_t row, std::size_t column) {
  return static_cast<float>((row * 2053 + column) % 8388593);
}

// How many values are wrong, in the result and in the gaps between its rows.
std::size_t WrongValues(const Shape& shape) {
  std::vector<float> in(shape.rows * shape.inStride, kUntouched);
  for (std::size_t r = 0; r < shape.rows; ++r) {
    for (std::size_t c = 0; c < shape.columns; ++c) in[r * shape.inStride + c] = ValueAt(r, c);
  }
  std::vector<float> out(shape.columns * shape.outStride, kUntouched);
  Transpose(in.data(), shape.rows, shape.columns, shape.inStride, out.data(), shape.outStride);
  std::size_t wrong = 0;
  for (std::size_t c = 0; c < shape.columns; ++c) {
    for (std::size_t r = 0; r < shape.outStride; ++r) {
      wrong += out[c * shape.outStride + r] != (r < shape.rows ? ValueAt(r, c) : kUntouched) ? 1 : 0;
    }
  }
  return wrong;
}

TEST(Transpose, PutsEachValueInItsPlaceAndNothingElse) {
  constexpr Shape kShapes[] = {
      {1, 1, 1, 1},
      {3, 5, 7, 4},
      {33, 1030, 1031, 40},
      {1030, 33, 40, 1031},
      // Larger than a cache: whole lines, pieces of lines at the ends, rows that share places, and rows that
      // begin anywhere.
      {64, 65601, 65601, 64},
      {65601, 67, 70, 65616},
      {1027, 4099, 4608, 1040},
      {4099, 1027, 1027, 4099},
  };
  for (const Shape& shape : kShapes) {
    EXPECT_EQ(WrongValues(shape), 0U) << shape.rows << " x " << shape.columns;
  }
}

}  // namespace
}  // namespace wavelock

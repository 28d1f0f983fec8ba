// Turning rows into columns.
#pragma once

#include <cstddef>

namespace wavelock {

// `in` has `rows` rows of `columns` values, each row `inStride` values behind the one before it; `out` gets
// them as `columns` rows of `rows` values, `outStride` values apart.
void Transpose(const float* in, std::size_t rows, std::size_t columns, std::size_t inStride, float* out,
               std::size_t outStride);

}  // namespace wavelock

// The head of a file in NumPy's format.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace wavelock::command {

// Of a table of rows x columns, row after row. `type` is what NumPy calls it: "<f4", "<i2", "<i4".
std::string NpyHeader(std::string_view type, std::uint64_t rows, std::uint64_t columns);

}  // namespace wavelock::command

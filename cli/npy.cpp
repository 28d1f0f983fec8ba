#include "cli/npy.h"

#include <fmt/format.h>

namespace wavelock::command {

std::string NpyHeader(std::string_view type, std::uint64_t rows, std::uint64_t columns) {
  constexpr std::string_view kMagic("\x93NUMPY\x01\x00", 8);  // version 1.0
  constexpr std::size_t kLengthBytes = 2;
  constexpr std::size_t kAlignment = 64;  // of the data behind it
  std::string words =
      fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': ({}, {}), }}", type, rows, columns);
  const std::size_t unpadded = kMagic.size() + kLengthBytes + words.size() + 1;
  words.append((kAlignment - unpadded % kAlignment) % kAlignment, ' ');
  words += '\n';
  std::string head(kMagic);
  head += static_cast<char>(words.size() & 0xFF);
  head += static_cast<char>(words.size() >> 8);
  return head + words;
}

}  // namespace wavelock::command

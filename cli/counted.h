// Numbers of things in words.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace wavelock::command {

// "1 row", "2 rows".
inline std::string Counted(std::uint64_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace wavelock::command

// All fields of a setup as values that a test can compare, and setups whose every field holds something else.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "wavelock/setup/visit_leaves.h"

namespace wavelock {

struct FieldValue {
  std::string path;   // "channels[2].label"
  std::string value;  // the bytes of a number, the characters of a text
  friend bool operator==(const FieldValue&, const FieldValue&) = default;
};
using FieldValues = std::vector<FieldValue>;

template <class Structure>
FieldValues ValuesOf(const Structure& structure) {
  FieldValues values;
  VisitLeaves("", structure, [&values](const std::string& path, const auto& value) {
    if constexpr (requires { value.View(); }) {
      values.push_back({path, std::string(value.View())});
    } else if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(value)>>) {
      values.push_back({path, std::string(reinterpret_cast<const char*>(&value), sizeof value)});
    } else {
      values.push_back({path, value});
    }
  });
  return values;
}

// Any bits in every number, and something in every text; only what is constant stays.
template <class Structure>
void Scramble(Structure& structure, std::uint32_t seed) {
  std::mt19937 random(seed);
  VisitLeaves("", structure, [&random](const std::string&, auto& value) {
    using Value = std::remove_reference_t<decltype(value)>;
    const auto bits = static_cast<std::uint32_t>(random());
    if constexpr (std::is_const_v<Value>) {
      return;
    } else if constexpr (std::is_arithmetic_v<Value>) {
      std::memcpy(&value, &bits, sizeof value);
    } else if constexpr (std::is_same_v<Value, std::string>) {
      value = std::to_string(bits);
    } else {
      value.Assign(std::to_string(bits));
    }
  });
}

}  // namespace wavelock

// Every single value of a setup by its path: "channels[2].label".
#pragma once

#include <string>
#include <type_traits>

#include "wavelock/setup/visit_fields.h"

namespace wavelock {

// Hands every number, text and array element below a value to `leaf(path, value)`.
template <class Value, class Leaf>
void VisitLeaves(const std::string& path, Value& value, Leaf&& leaf) {
  using Plain = std::remove_const_t<Value>;
  const auto element = [&](std::size_t index, auto&& part) {
    VisitLeaves(path + "[" + std::to_string(index) + "]", part, leaf);
  };
  if constexpr (std::is_arithmetic_v<Plain> || kIsFixedText<Plain> || std::is_same_v<Plain, std::string>) {
    leaf(path, value);
  } else if constexpr (HasFields<Plain>) {
    VisitFields(value, [&](const char* name, auto&& field) {
      VisitLeaves(path.empty() ? name : path + "." + name, field, leaf);
    });
  } else if constexpr (HasElements<Plain>) {
    VisitElements(value, element);
  } else if constexpr (requires { value.has_value(); }) {
    if (value) VisitLeaves(path, *value, leaf);
  } else {
    for (std::size_t i = 0; i < value.size(); ++i) element(i, value[i]);
  }
}

}  // namespace wavelock

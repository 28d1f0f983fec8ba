// Names that compare without regard to case, where only the letters A to Z have one.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace wavelock {

constexpr char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string InLowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), LowerCase);
  return text;
}

inline bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

// For ordered containers.
struct LessIgnoringCase {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char x, char y) { return LowerCase(x) < LowerCase(y); });
  }
};

}  // namespace wavelock

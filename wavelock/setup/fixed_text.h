// A text with a greatest length, held in place so that the structures that hold it copy as plain bytes.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <string_view>

namespace wavelock {

// At most N - 1 characters and a NUL; every byte behind the text is NUL.
template <std::size_t N>
class FixedText {
  static_assert(N > 0);

 public:
  static constexpr std::size_t kMaxLength = N - 1;

  constexpr FixedText() = default;
  template <std::size_t M>
  constexpr FixedText(const char (&literal)[M]) {  // a literal that would be cut does not compile
    static_assert(M <= N);
    Assign({literal, M - 1});
  }

  // Takes the characters before the first NUL, cut to what fits.
  constexpr void Assign(std::string_view text) {
    const std::size_t length = std::min({text.size(), text.find('\0'), kMaxLength});
    std::fill(std::copy_n(text.data(), length, chars_), chars_ + N, '\0');
  }

  constexpr std::string_view View() const { return {chars_}; }
  constexpr bool Empty() const { return chars_[0] == '\0'; }

  friend constexpr bool operator==(const FixedText&, const FixedText&) = default;
  template <std::convertible_to<std::string_view> Text>
  friend constexpr bool operator==(const FixedText& text, const Text& other) {
    return text.View() == std::string_view(other);
  }

 private:
  char chars_[N] = {};
};

template <class T>
inline constexpr bool kIsFixedText = false;
template <std::size_t N>
inline constexpr bool kIsFixedText<FixedText<N>> = true;

}  // namespace wavelock

// Reads a text token by token, in the same way under every locale. White space separates tokens and means
// nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace wavelock {

// Borrows the text. An operation that finds no token of its kind gives nothing and reads nothing but white
// space.
class TextScanner {
 public:
  explicit TextScanner(std::string_view text) : rest_(text) {}

  // Decimal digits with or without a sign. Numbers beyond the range give its ends.
  std::optional<std::int32_t> Integer();

  // The longest beginning that is a decimal number: 1.5 of "1.5abc", 0 of "0x10", nothing of "nan". Rounded
  // to the nearest double, infinite when it is too large for one.
  std::optional<double> Decimal();

  // Up to the next white space, but `most` characters at most; what is left of it is the next token.
  std::optional<std::string_view> Word(std::size_t most);

 private:
  void SkipWhiteSpace();
  std::string_view Take(std::size_t length);

  std::string_view rest_;
};

}  // namespace wavelock

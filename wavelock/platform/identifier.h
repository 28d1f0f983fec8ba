// The 128-bit names of classes, interfaces and type libraries.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wavelock {

struct Identifier {
  std::array<std::uint8_t, 16> bytes{};  // in the order in which they are written

  bool operator==(const Identifier&) const = default;
};

inline constexpr std::string_view kIdentifierForm = "{########-####-####-####-############}";

// -1 for what is no hexadecimal digit.
constexpr int HexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  return -1;
}

// From the form {01234567-89AB-CDEF-0123-456789ABCDEF}, in either case.
constexpr std::optional<Identifier> ParseIdentifier(std::string_view text) {
  if (text.size() != kIdentifierForm.size()) return std::nullopt;
  Identifier identifier;
  std::size_t digits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kIdentifierForm[i] != '#') {
      if (text[i] != kIdentifierForm[i]) return std::nullopt;
      continue;
    }
    const int value = HexDigitValue(text[i]);
    if (value < 0) return std::nullopt;
    std::uint8_t& byte = identifier.bytes[digits++ / 2];
    byte = static_cast<std::uint8_t>(byte << 4 | value);
  }
  return identifier;
}

// The same form, in upper case.
std::string FormatIdentifier(const Identifier& identifier);

}  // namespace wavelock

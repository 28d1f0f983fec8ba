#include "wavelock/platform/identifier.h"

namespace wavelock {

std::string FormatIdentifier(const Identifier& identifier) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text(kIdentifierForm);
  std::size_t digits = 0;
  for (char& c : text) {
    if (c != '#') continue;
    const int byte = identifier.bytes[digits / 2];
    c = kDigits[digits++ % 2 == 0 ? byte >> 4 : byte & 0xF];
  }
  return text;
}

}  // namespace wavelock

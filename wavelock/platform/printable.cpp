#include "wavelock/platform/printable.h"

#include <cstddef>
#include <cstdint>

namespace wavelock {
namespace {

struct Character {
  std::uint32_t code = 0;
  std::size_t bytes = 0;  // 0 where no character begins
};

// The character that a text begins with, in the one form that UTF-8 has for it.
Character FirstOf(std::string_view text) {
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};  // by bytes
  constexpr std::uint32_t kMost = 0x10FFFF;
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return {first, 1};
  const std::size_t bytes = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (first < 0xC0 || first > 0xF7 || text.size() < bytes) return {};
  std::uint32_t code = first & (0x7Fu >> bytes);
  for (const char c : text.substr(1, bytes - 1)) {
    const auto next = static_cast<unsigned char>(c);
    if ((next & 0xC0) != 0x80) return {};
    code = code << 6 | (next & 0x3F);
  }
  const bool isHalf = code >= 0xD800 && code <= 0xDFFF;  // of a pair in UTF-16
  if (code < kLeast[bytes] || code > kMost || isHalf) return {};
  return {code, bytes};
}

bool IsControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code <= 0x9F);
}

// Separators of lines and paragraphs, embeddings and overrides; isolates.
bool ChangesOrder(std::uint32_t code) {
  return (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

std::string Printable(std::string_view text, std::string_view kept) {
  std::string printable;
  printable.reserve(text.size());
  while (!text.empty()) {
    const Character character = FirstOf(text);
    const std::size_t bytes = character.bytes == 0 ? 1 : character.bytes;
    const bool isKept = bytes == 1 && kept.find(text.front()) != std::string_view::npos;
    const bool isShown =
        isKept || (character.bytes != 0 && !IsControl(character.code) && !ChangesOrder(character.code));
    printable += isShown ? text.substr(0, bytes) : "?";
    text.remove_prefix(bytes);
  }
  return printable;
}

}  // namespace wavelock

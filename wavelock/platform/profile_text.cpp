#include "wavelock/platform/profile_text.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace wavelock {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kSpecialInNames = "=[];#";
constexpr std::string_view kSpecialInValues = "";

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool IsControl(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}

void AppendEscaped(std::string& text, unsigned char byte) {
  text += "\\x";
  text += kHexDigits[byte >> 4];
  text += kHexDigits[byte & 0xF];
}

std::string Escaped(std::string_view text, std::string_view special) {
  std::string escaped;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool isOuterBlank = text[i] == ' ' && (i == 0 || i + 1 == text.size());
    if (text[i] == '\\') {
      escaped += "\\\\";
    } else if (IsControl(byte) || isOuterBlank || special.find(text[i]) != std::string_view::npos) {
      AppendEscaped(escaped, byte);
    } else {
      escaped += text[i];
    }
  }
  return escaped;
}

// The byte that the two digits after "\x" stand for.
std::optional<char> HexByte(std::string_view digits) {
  unsigned char byte = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, byte, 16);
  if (digits.size() != 2 || error != std::errc() || stop != end) return std::nullopt;
  return static_cast<char>(byte);
}

// A backslash that starts no escape stands for itself: people write paths.
std::string Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view rest = text.substr(i);
    if (rest.starts_with("\\\\")) {
      plain += '\\';
      i += 1;
    } else if (const auto byte = rest.starts_with("\\x") ? HexByte(rest.substr(2, 2)) : std::nullopt) {
      plain += *byte;
      i += 3;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

// What one line says: a section's name, or a key and its value, or nothing.
struct Line {
  std::optional<std::string> section;
  std::optional<std::string> key;
  std::string_view value;  // still escaped
};

bool IsNothing(std::string_view line) {
  return line.empty() || line.front() == ';' || line.front() == '#';
}

Line ParseLine(std::string_view text) {
  const std::string_view line = Trimmed(text);
  if (IsNothing(line)) return {};
  const std::size_t bracket = line.find(']');
  if (line.front() == '[' && bracket != std::string_view::npos &&
      IsNothing(Trimmed(line.substr(bracket + 1)))) {
    return {.section = Unescaped(Trimmed(line.substr(1, bracket - 1))), .key = {}, .value = {}};
  }
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return {};
  return {.section = {},
          .key = Unescaped(Trimmed(line.substr(0, equals))),
          .value = Trimmed(line.substr(equals + 1))};
}

// Editors may put a byte-order mark ahead of a text.
std::size_t StartOf(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  return text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
}

// Where an entry stands in the text, or where it belongs when it is missing.
struct Place {
  bool sectionExists = false;
  std::optional<std::string_view> value;  // still escaped
  std::size_t start = 0;                  // of the entry's line without its line break
  std::size_t length = 0;
};

Place Locate(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  place.start = text.size();
  bool inside = false;
  for (std::size_t start = StartOf(text); start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const Line line = ParseLine(text.substr(start, end - start));
    if (line.section) inside = *line.section == section;
    if (inside && line.key == key) {
      return {.sectionExists = true, .value = line.value, .start = start, .length = end - start};
    }
    if (inside && (line.section || line.key)) {
      place.sectionExists = true;
      place.start = std::min(end + 1, text.size());
    }
    start = end + 1;
  }
  return place;
}

}  // namespace

void ReadProfile(std::string_view text, const std::function<void(const std::string& section)>& onSection,
                 const std::function<void(const std::string& key, std::string value)>& onEntry) {
  text.remove_prefix(StartOf(text));
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const Line line = ParseLine(text.substr(0, end));
    if (line.section) onSection(*line.section);
    if (line.key) onEntry(*line.key, Unescaped(line.value));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

std::string ProfileSectionLine(std::string_view section) {
  return std::string("[").append(Escaped(section, kSpecialInNames)).append("]");
}

std::string ProfileEntryLine(std::string_view key, std::string_view value) {
  return Escaped(key, kSpecialInNames) + " = " + Escaped(value, kSpecialInValues);
}

std::optional<std::string> FindInProfile(std::string_view text, std::string_view section,
                                         std::string_view key) {
  const Place place = Locate(text, section, key);
  if (!place.value) return std::nullopt;
  return Unescaped(*place.value);
}

std::string StoreInProfile(std::string_view text, std::string_view section, std::string_view key,
                           std::string_view value) {
  const Place place = Locate(text, section, key);
  const std::string entry = ProfileEntryLine(key, value);
  std::string stored(text.substr(0, place.start));
  if (place.value) return stored.append(entry).append(text.substr(place.start + place.length));

  if (!stored.empty() && stored.back() != '\n') stored += '\n';
  if (!place.sectionExists) {
    if (!stored.empty()) stored += '\n';
    stored.append(ProfileSectionLine(section)).append("\n");
  }
  return stored.append(entry).append("\n").append(text.substr(place.start));
}

}  // namespace wavelock

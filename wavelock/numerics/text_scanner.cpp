#include "wavelock/numerics/text_scanner.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <system_error>

namespace wavelock {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kSigns = "+-";

bool StartsWithOneOf(std::string_view text, std::string_view characters) {
  return !text.empty() && characters.find(text.front()) != std::string_view::npos;
}

std::size_t SignLength(std::string_view text) {
  return StartsWithOneOf(text, kSigns) ? 1 : 0;
}

std::size_t DigitsLength(std::string_view text) {
  return std::min(text.find_first_not_of(kDigits), text.size());
}

// An "e" without digits behind it belongs to what follows.
std::size_t ExponentLength(std::string_view text) {
  if (!StartsWithOneOf(text, "eE")) return 0;
  const std::size_t mark = 1 + SignLength(text.substr(1));
  const std::size_t digits = DigitsLength(text.substr(mark));
  return digits == 0 ? 0 : mark + digits;
}

std::size_t DecimalLength(std::string_view text) {
  std::size_t length = SignLength(text);
  const std::size_t whole = DigitsLength(text.substr(length));
  length += whole;
  std::size_t fraction = 0;
  if (StartsWithOneOf(text.substr(length), ".")) {
    fraction = DigitsLength(text.substr(length + 1));
    if (whole + fraction > 0) length += 1 + fraction;
  }
  if (whole + fraction == 0) return 0;
  return length + ExponentLength(text.substr(length));
}

double ToDouble(std::string_view decimal) {
  std::istringstream stream{std::string(decimal)};
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  // A stream gives the largest number in place of infinity.
  const bool isTooLarge = stream.fail() && std::abs(value) == std::numeric_limits<double>::max();
  return isTooLarge ? std::copysign(std::numeric_limits<double>::infinity(), value) : value;
}

}  // namespace

std::optional<std::int32_t> TextScanner::Integer() {
  SkipWhiteSpace();
  const std::size_t sign = SignLength(rest_);
  const std::size_t digits = DigitsLength(rest_.substr(sign));
  if (digits == 0) return std::nullopt;
  const bool isNegative = rest_.front() == '-';
  const std::string_view number = Take(sign + digits).substr(isNegative ? 0 : sign);
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error == std::errc()) return value;
  using Limits = std::numeric_limits<std::int32_t>;
  return isNegative ? Limits::min() : Limits::max();
}

std::optional<double> TextScanner::Decimal() {
  SkipWhiteSpace();
  const std::size_t length = DecimalLength(rest_);
  if (length == 0) return std::nullopt;
  return ToDouble(Take(length));
}

std::optional<std::string_view> TextScanner::Word(std::size_t most) {
  SkipWhiteSpace();
  if (rest_.empty()) return std::nullopt;
  return Take(std::min({rest_.find_first_of(kWhiteSpace), rest_.size(), most}));
}

void TextScanner::SkipWhiteSpace() {
  Take(std::min(rest_.find_first_not_of(kWhiteSpace), rest_.size()));
}

std::string_view TextScanner::Take(std::size_t length) {
  const std::string_view taken = rest_.substr(0, length);
  rest_.remove_prefix(length);
  return taken;
}

}  // namespace wavelock

#include "wavelock/prompts/spin_value_dialog.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <locale>
#include <sstream>

namespace wavelock {
namespace {

constexpr std::size_t kFieldLength = 50;
constexpr std::string_view kDigits = "0123456789";

std::size_t SignAt(std::string_view text, std::size_t at) {
  return at < text.size() && (text[at] == '+' || text[at] == '-') ? 1 : 0;
}

std::size_t DigitsAt(std::string_view text, std::size_t at) {
  const std::size_t end = std::min(text.find_first_not_of(kDigits, at), text.size());
  return end - std::min(at, end);
}

// How much of the text is a decimal number.
std::size_t DecimalLength(std::string_view text) {
  std::size_t end = SignAt(text, 0);
  std::size_t digits = DigitsAt(text, end);
  end += digits;
  if (end < text.size() && text[end] == '.') {
    const std::size_t fraction = DigitsAt(text, end + 1);
    digits += fraction;
    end += 1 + fraction;
  }
  if (digits == 0) return 0;
  if (end == text.size() || (text[end] != 'e' && text[end] != 'E')) return end;
  const std::size_t exponent = end + 1 + SignAt(text, end + 1);
  const std::size_t exponentDigits = DigitsAt(text, exponent);
  return exponentDigits == 0 ? end : exponent + exponentDigits;
}

double NumberIn(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  std::istringstream in{std::string(text.substr(0, DecimalLength(text)))};
  in.imbue(std::locale::classic());
  double number = 0;
  in >> number;
  return number;
}

std::string TwoDecimals(double value) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::fixed << std::setprecision(2) << value;
  return text.str();
}

}  // namespace

// NaN counts as 0.
void CSpinValueDialog::MoveTo(double newPosition) {
  const double whole = std::isnan(newPosition) ? 0.0 : std::trunc(newPosition);
  const double raised = std::max(whole, static_cast<double>(minPosition));
  position = static_cast<std::int32_t>(std::min(raised, static_cast<double>(maxPosition)));
  textBuffer = TwoDecimals(static_cast<double>(position) * step + origin);
}

void CSpinValueDialog::Spin(std::int32_t from, std::int32_t delta) {
  MoveTo(static_cast<double>(from) + delta);
}

void CSpinValueDialog::LeaveField(std::string_view typed) {
  MoveTo((NumberIn(typed.substr(0, kFieldLength)) - origin) / step + 0.5);
}

std::int16_t CSpinValueDialog::SpinPosition() const {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(position));
}

void CSpinValueDialog::ChooseColour(Host& host) {
  if (const auto chosen = host.modal.AskColour(colour)) colour = *chosen;
}

}  // namespace wavelock

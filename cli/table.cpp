#include "cli/table.h"
#include "wavelock/platform/printable.h"

#include <fmt/color.h>
#include <fmt/format.h>

#include <algorithm>

namespace wavelock::command {
namespace {

constexpr std::size_t kGap = 2;  // blanks between columns

// Places on a terminal: bytes that continue a character of UTF-8 take none.
std::size_t WidthOf(const std::string& text) {
  const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

std::string Padded(const std::string& text, std::size_t width, Align align) {
  const std::string blanks(width - std::min(width, WidthOf(text)), ' ');
  return align == Align::kLeft ? text + blanks : blanks + text;
}

std::string WithoutBlanksBehind(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

}  // namespace

std::string Table::Text(bool bold) const {
  std::vector<std::string> headings;
  for (const Column& column : columns_) headings.push_back(column.heading);
  std::vector<std::vector<std::string>> lines{headings};
  lines.insert(lines.end(), rows_.begin(), rows_.end());

  std::vector<std::string> texts(lines.size());
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    std::size_t width = 0;
    for (auto& line : lines) width = std::max(width, WidthOf(line[c] = Printable(line[c])));
    for (std::size_t i = 0; i < lines.size(); ++i) {
      texts[i] += Padded(lines[i][c], width, columns_[c].align) + std::string(kGap, ' ');
    }
  }
  std::string text;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string line = WithoutBlanksBehind(texts[i]);
    text += (i == 0 && bold ? fmt::format(fmt::emphasis::bold, "{}", line) : line) + '\n';
  }
  return text;
}

}  // namespace wavelock::command

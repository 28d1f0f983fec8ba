// A table for people: columns as wide as they need to be, under a line of headings.
#pragma once

#include <string>
#include <vector>

namespace wavelock::command {

enum class Align { kLeft, kRight };

struct Column {
  std::string heading;
  Align align = Align::kLeft;
};

class Table {
 public:
  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // As many cells as there are columns.
  void Add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  // With `bold` the headings are emphasised for a terminal.
  std::string Text(bool bold) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace wavelock::command

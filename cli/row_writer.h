// Rows of values under named columns, as tab-separated text or as JSON.
#pragma once

#include <fmt/compile.h>
#include <fmt/format.h>

#include <cmath>
#include <concepts>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/output.h"

namespace wavelock::command {

enum class RowFormat { kTsv, kJson };

// In tab-separated text a value that is missing is written n/a, and tabs, ends of lines and backslashes in
// texts as \t, \n, \r and \\. JSON is one array with an object on each line; what is missing, or is no number
// where one should be, is null.
class RowWriter {
 public:
  RowWriter(Output& output, RowFormat format, const std::vector<std::string>& columns);

  // As many values as there are columns: numbers, truths, texts, any of them as an optional, or values of
  // JSON. False when the output takes no more.
  template <class... Values>
  bool Add(const Values&... values) {
    auto head = heads_.begin();
    line_.clear();
    if (format_ == RowFormat::kJson) line_ += hasRows_ ? ",\n" : "\n";
    ((line_ += *head++, AddValue(values)), ...);
    return WriteLine();
  }
  bool Finish();

 private:
  using Json = nlohmann::ordered_json;

  void AddValue(std::same_as<bool> auto value) { line_ += value ? "true" : "false"; }
  template <std::integral Number>
  requires(!std::same_as<Number, bool>) void AddValue(Number value) {
    const fmt::format_int digits(value);
    line_.append(digits.data(), digits.size());
  }
  void AddValue(std::floating_point auto value) {
    if (format_ == RowFormat::kJson && !std::isfinite(value)) return AddNull();
    fmt::format_to(std::back_inserter(line_), FMT_COMPILE("{}"), value);
  }
  void AddValue(std::string_view text);
  void AddValue(const std::same_as<Json> auto& value) { AddJson(value); }
  template <class Value>
  void AddValue(const std::optional<Value>& value) {
    value ? AddValue(*value) : AddNull();
  }
  void AddJson(const Json& value);
  void AddNull() { line_ += format_ == RowFormat::kJson ? "null" : "n/a"; }
  bool WriteLine();

  Output& output_;
  const RowFormat format_;
  std::vector<std::string> heads_;  // what stands in front of each value
  std::string line_;
  bool isWritten_;
  bool hasRows_ = false;
};

// Missing where it is no number.
template <std::floating_point Value>
std::optional<Value> Finite(Value value) {
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

}  // namespace wavelock::command

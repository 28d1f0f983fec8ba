#include "cli/row_writer.h"

#include <utility>

namespace wavelock::command {
namespace {

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '\t':
        escaped += "\\t";
        break;
      case '\n':
        escaped += "\\n";
        break;
      case '\r':
        escaped += "\\r";
        break;
      case '\\':
        escaped += "\\\\";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

// Texts of a file can be in any encoding.
std::string Json(const RowWriter::Value& value) {
  return value.dump(-1, ' ', false, RowWriter::Value::error_handler_t::replace);
}

std::string Cell(const RowWriter::Value& value) {
  if (value.is_null()) return "n/a";
  return value.is_string() ? Escaped(value.get<std::string>()) : Json(value);
}

std::string TsvLine(const std::vector<RowWriter::Value>& values) {
  std::string line;
  for (const RowWriter::Value& value : values) line += (line.empty() ? "" : "\t") + Cell(value);
  return line + "\n";
}

std::vector<RowWriter::Value> Headings(const std::vector<std::string>& columns) {
  return {columns.begin(), columns.end()};
}

}  // namespace

RowWriter::RowWriter(Output& output, RowFormat format, std::vector<std::string> columns)
    : output_(output),
      format_(format),
      columns_(std::move(columns)),
      isWritten_(output.Write(format == RowFormat::kJson ? "[" : TsvLine(Headings(columns_)))) {}

std::string RowWriter::JsonLine(const std::vector<Value>& values) const {
  Value object = Value::object();
  for (std::size_t i = 0; i < columns_.size(); ++i) object[columns_[i]] = values[i];
  return (hasRows_ ? ",\n" : "\n") + Json(object);
}

bool RowWriter::Add(const std::vector<Value>& values) {
  isWritten_ = isWritten_ && output_.Write(format_ == RowFormat::kJson ? JsonLine(values) : TsvLine(values));
  hasRows_ = true;
  return isWritten_;
}

bool RowWriter::Finish() {
  return isWritten_ && (format_ == RowFormat::kTsv || output_.Write("\n]\n"));
}

}  // namespace wavelock::command

#include "cli/row_writer.h"

#include <fmt/format.h>

namespace wavelock::command {
namespace {

using Json = nlohmann::ordered_json;

std::string Escaped(std::string_view text) {
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
std::string TextOf(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string LineOf(const std::vector<std::string>& columns) {
  return fmt::format("{}\n", fmt::join(columns, "\t"));
}

}  // namespace

RowWriter::RowWriter(Output& output, RowFormat format, const std::vector<std::string>& columns)
    : output_(output),
      format_(format),
      isWritten_(output.Write(format == RowFormat::kJson ? "[" : LineOf(columns))) {
  for (const std::string& column : columns) {
    const bool isFirst = heads_.empty();
    heads_.push_back(format == RowFormat::kJson ? (isFirst ? "{" : ",") + TextOf(column) + ":"
                                                : (isFirst ? "" : "\t"));
  }
}

void RowWriter::AddValue(std::string_view text) {
  line_ += format_ == RowFormat::kJson ? TextOf(text) : Escaped(text);
}

void RowWriter::AddJson(const Json& value) {
  if (value.is_null()) return AddNull();
  line_ += TextOf(value);
}

bool RowWriter::WriteLine() {
  line_ += format_ == RowFormat::kJson ? "}" : "\n";
  isWritten_ = isWritten_ && output_.Write(line_);
  hasRows_ = true;
  return isWritten_;
}

bool RowWriter::Finish() {
  return isWritten_ && (format_ == RowFormat::kTsv || output_.Write("\n]\n"));
}

}  // namespace wavelock::command

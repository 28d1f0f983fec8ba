// Rows of values under named columns, as tab-separated text or as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/options.h"
#include "cli/output.h"

namespace wavelock::command {

enum class RowFormat { kTsv, kJson };

inline const Choices<RowFormat> kRowFormats = {{"tsv", RowFormat::kTsv}, {"json", RowFormat::kJson}};

// In tab-separated text a value that is null is written n/a, and tabs, ends of lines and backslashes in texts
// as \t, \n, \r and \\. JSON is one array with an object on each line.
class RowWriter {
 public:
  using Value = nlohmann::ordered_json;

  RowWriter(Output& output, RowFormat format, std::vector<std::string> columns);

  // As many values as there are columns. False when the output takes no more.
  bool Add(const std::vector<Value>& values);
  bool Finish();

 private:
  std::string JsonLine(const std::vector<Value>& values) const;

  Output& output_;
  const RowFormat format_;
  const std::vector<std::string> columns_;
  bool isWritten_;
  bool hasRows_ = false;
};

}  // namespace wavelock::command

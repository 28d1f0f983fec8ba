// Tables of samples x channels in the forms that other programs read.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "cli/options.h"
#include "cli/output.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::command {

enum class TableFormat {
  kCsv,  // a line of labels, then a line for each row
  kNpy,  // what numpy.load reads
  kBin,  // the numbers alone, little-endian
};

// Of tables that are small enough to be told by their shape.
inline const Choices<TableFormat> kTableFormats = {{"csv", TableFormat::kCsv}, {"npy", TableFormat::kNpy}};

enum class ValueType { kFloat32, kInt16, kInt32 };

constexpr std::size_t BytesOf(ValueType type) {
  return type == ValueType::kInt16 ? 2 : 4;
}

// What the integers of a recording are stored as.
inline ValueType StoredType(const CRecordingFile& recording) {
  return recording.sampleWidth == 2 ? ValueType::kInt16 : ValueType::kInt32;
}

// Rows of blocks that hold a value of every channel; a choice of the channels is written.
class SampleWriter {
 public:
  // `blockColumns`: values in a row of the blocks. `chosen`: those of them that are written, in that order.
  SampleWriter(Output& output, TableFormat format, ValueType type, std::size_t blockColumns,
               std::vector<std::size_t> chosen);

  // What stands before the first row. Labels are of the chosen channels.
  bool WriteHead(std::uint64_t rows, std::span<const std::string> labels);

  // Whole rows of values of the type.
  bool WriteBlock(std::span<const std::byte> rows);

 private:
  std::span<const std::byte> Choose(std::span<const std::byte> rows);
  bool WriteCsv(std::span<const std::byte> rows);

  Output& output_;
  const TableFormat format_;
  const ValueType type_;
  const std::size_t blockColumns_;
  const std::vector<std::size_t> chosen_;
  const bool takesAll_;
  std::vector<std::byte> picked_;
  fmt::memory_buffer text_;
};

// A whole table with a column for each label.
bool WriteTable(Output& output, TableFormat format, ValueType type, std::span<const std::string> labels,
                std::span<const std::byte> rows);

}  // namespace wavelock::command

#include "cli/sample_writer.h"

#include <fmt/compile.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <numeric>

#include "cli/npy.h"

namespace wavelock::command {
namespace {

std::string_view NumpyName(ValueType type) {
  switch (type) {
    case ValueType::kInt16:
      return "<i2";
    case ValueType::kInt32:
      return "<i4";
    default:
      return "<f4";
  }
}

bool IsEveryColumn(const std::vector<std::size_t>& chosen, std::size_t columns) {
  std::vector<std::size_t> all(columns);
  std::iota(all.begin(), all.end(), std::size_t{0});
  return chosen == all;
}

// Quoted where a reader would take the text for more than one field.
std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

std::string CsvHead(std::span<const std::string> labels) {
  std::string line;
  for (const std::string& label : labels) line += (line.empty() ? "" : ",") + CsvField(label);
  return line + '\n';
}

// Floats come in as few digits as give the same float again.
template <class T>
void AppendCsv(std::span<const std::byte> bytes, std::size_t columns, fmt::memory_buffer& text) {
  for (std::size_t i = 0; i < bytes.size() / sizeof(T); ++i) {
    T value;
    std::memcpy(&value, bytes.data() + i * sizeof(T), sizeof(T));
    fmt::format_to(std::back_inserter(text), FMT_COMPILE("{}"), value);
    text.push_back((i + 1) % columns == 0 ? '\n' : ',');
  }
}

}  // namespace

SampleWriter::SampleWriter(Output& output, TableFormat format, ValueType type, std::size_t blockColumns,
                           std::vector<std::size_t> chosen)
    : output_(output),
      format_(format),
      type_(type),
      blockColumns_(blockColumns),
      chosen_(std::move(chosen)),
      takesAll_(IsEveryColumn(chosen_, blockColumns)) {}

bool SampleWriter::WriteHead(std::uint64_t rows, std::span<const std::string> labels) {
  switch (format_) {
    case TableFormat::kCsv:
      return output_.Write(CsvHead(labels));
    case TableFormat::kNpy:
      return output_.Write(NpyHeader(NumpyName(type_), rows, chosen_.size()));
    default:
      return true;
  }
}

bool SampleWriter::WriteBlock(std::span<const std::byte> rows) {
  const std::span<const std::byte> chosen = takesAll_ ? rows : Choose(rows);
  return format_ == TableFormat::kCsv ? WriteCsv(chosen) : output_.Write(chosen);
}

std::span<const std::byte> SampleWriter::Choose(std::span<const std::byte> rows) {
  const std::size_t width = BytesOf(type_);
  const std::size_t rowBytes = blockColumns_ * width;
  picked_.resize(rows.size() / rowBytes * chosen_.size() * width);
  std::byte* to = picked_.data();
  for (; !rows.empty(); rows = rows.subspan(rowBytes)) {
    for (const std::size_t column : chosen_) {
      std::memcpy(to, rows.data() + column * width, width);
      to += width;
    }
  }
  return picked_;
}

// Text of a block can be several times as long as the block, so it goes out in pieces.
bool SampleWriter::WriteCsv(std::span<const std::byte> rows) {
  constexpr std::size_t kPieceBytes = 64 * 1024;
  const std::size_t rowBytes = chosen_.size() * BytesOf(type_);
  const std::size_t pieceBytes = std::max<std::size_t>(1, kPieceBytes / rowBytes) * rowBytes;
  const auto append = type_ == ValueType::kInt16   ? AppendCsv<std::int16_t>
                      : type_ == ValueType::kInt32 ? AppendCsv<std::int32_t>
                                                   : AppendCsv<float>;
  while (!rows.empty()) {
    const auto piece = rows.first(std::min(pieceBytes, rows.size()));
    text_.clear();
    append(piece, chosen_.size(), text_);
    if (!output_.Write(std::string_view(text_.data(), text_.size()))) return false;
    rows = rows.subspan(piece.size());
  }
  return true;
}

bool WriteTable(Output& output, TableFormat format, ValueType type, std::span<const std::string> labels,
                std::span<const std::byte> rows) {
  std::vector<std::size_t> all(labels.size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  const std::size_t rowBytes = std::max<std::size_t>(1, labels.size() * BytesOf(type));
  SampleWriter writer(output, format, type, all.size(), all);
  return writer.WriteHead(rows.size() / rowBytes, labels) && writer.WriteBlock(rows);
}

}  // namespace wavelock::command

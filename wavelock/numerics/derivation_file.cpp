#include "wavelock/numerics/derivation_file.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <unordered_map>
#include <vector>

#include "wavelock/prompts/notices.h"

namespace wavelock {
namespace {

constexpr char kExtension[] = "LDR";
constexpr std::size_t kLongestLabel = 99;
constexpr std::int64_t kMostCoefficients = std::int64_t{1} << 28;
constexpr std::uint64_t kLargestFile = std::uint64_t{64} << 20;  // a matrix of some millions of numbers
constexpr std::int32_t kNoColumn = -1;

std::string At(const char* what, std::size_t number) {
  return what + std::to_string(number);
}

std::string InFile(std::string_view path) {
  return " in file " + std::string(path);
}

// How many labels a text can hold at most: each has a character, and white space before the next.
std::int32_t MostLabels(std::int32_t wanted, std::size_t textSize) {
  return static_cast<std::int32_t>(std::min<std::size_t>(static_cast<std::size_t>(wanted), textSize / 2 + 1));
}

bool ReadAll(File& file, std::string& text) {
  const std::uint64_t size = file.Size().value_or(0);
  if (size > kLargestFile) return false;
  text.resize(static_cast<std::size_t>(size));
  text.resize(file.Read(std::as_writable_bytes(std::span(text))).value_or(0));
  return true;
}

}  // namespace

std::string ApplyDefaultExtension(const std::string& name, const std::string& extension) {
  const std::size_t dot = name.rfind('.');
  const std::size_t separator = name.rfind('\\');
  const bool hasExtension = dot != std::string::npos && (separator == std::string::npos || dot > separator);
  if (hasExtension) return name;
  const bool bringsDot = extension.find('.') != std::string::npos;
  return name + (bringsDot ? "" : ".") + extension;
}

bool CDerivationFile::Read(const std::string& name, std::int32_t channels, std::int32_t points,
                           const std::string labels[]) try {
  Release();
  channelCount = channels;
  blockPoints = points;
  fileName = name;
  labels_ = {labels, static_cast<std::size_t>(std::max(channels, 0))};

  const std::string path = ApplyDefaultExtension(name, kExtension);
  const auto file = host_->files.Open(path, OpenMode::kReadOnly);
  if (!file) return Fail(kNotOpened, "Unable to open file " + path);
  std::string text;
  if (!ReadAll(*file, text)) return Fail(kNoMemory, "Out of memory");
  textSize_ = text.size();
  allocated = ReadText(TextScanner(text), path);
  return allocated;
} catch (const std::bad_alloc&) {
  return Fail(kNoMemory, "Out of memory");
}

bool CDerivationFile::ReadText(TextScanner text, std::string_view path) {
  const auto rows = text.Integer();
  outputCount = rows.value_or(outputCount);
  const auto columns = rows ? text.Integer() : std::nullopt;
  if (!columns) return Fail(kNotRead, "Unable to read number of rows/columns" + InFile(path));
  inputCount = *columns;
  if (outputCount < 1) return Fail(kNoChannels, "One or more LDR output channels required.");
  if (inputCount < 1) return Fail(kNoChannels, "One or more LDR input channels required.");
  if (std::int64_t{outputCount} * inputCount > kMostCoefficients) return Fail(kNoMemory, "Out of memory");
  return ReadColumnLabels(text, path) && MatchColumns() && ReadRows(text, path);
}

bool CDerivationFile::ReadColumnLabels(TextScanner& text, std::string_view path) {
  if (!AllocStringVector(inputLabels, MostLabels(inputCount, textSize_)))
    return Fail(kNoMemory, "Out of memory");
  for (std::size_t column = 0; column < static_cast<std::size_t>(inputCount); ++column) {
    const auto label = text.Word(kLongestLabel);
    if (!label) {
      return Fail(kNotRead, At("Unable to read input channel label for column ", column) + InFile(path));
    }
    inputLabels[column] = *label;
  }
  return true;
}

// Each column takes the first channel of its label. Of two columns that carry the same one, the later wins.
bool CDerivationFile::MatchColumns() {
  if (!AllocIntVector(channelInput, static_cast<std::int32_t>(labels_.size())))
    return Fail(kNoMemory, "Out of memory");
  std::fill(channelInput.All().begin(), channelInput.All().end(), kNoColumn);
  std::unordered_map<std::string_view, std::size_t> channelOf;
  for (std::size_t channel = 0; channel < labels_.size(); ++channel)
    channelOf.try_emplace(labels_[channel], channel);
  for (std::int32_t column = 0; column < inputCount; ++column) {
    const auto found = channelOf.find(inputLabels[static_cast<std::size_t>(column)]);
    if (found != channelOf.end()) channelInput[found->second] = column;
  }
  return true;
}

bool CDerivationFile::ReadRows(TextScanner& text, std::string_view path) {
  const auto columns = static_cast<std::size_t>(inputCount);
  const auto rows = static_cast<std::size_t>(outputCount);
  std::vector<bool> isTaken(columns);
  for (const std::int32_t column : channelInput.All())
    if (column != kNoColumn) isTaken[static_cast<std::size_t>(column)] = true;

  // Rows are made for no more coefficients than the text can hold.
  const std::size_t madeRows = std::min(rows, textSize_ / columns + 1);
  if (!AllocStringVector(outputLabels, MostLabels(outputCount, textSize_)) ||
      !AllocFloatMatrix(coefficients, static_cast<std::uint32_t>(madeRows),
                        static_cast<std::uint32_t>(columns)))
    return Fail(kNoMemory, "Out of memory");

  bool isMatched = false;
  for (std::size_t row = 0; row < rows; ++row) {
    const auto label = text.Word(kLongestLabel);
    if (!label) return Fail(kNotRead, At("Unable to read output channel label for row ", row) + InFile(path));
    outputLabels[row] = *label;
    for (std::size_t column = 0; column < columns; ++column) {
      const auto coefficient = text.Decimal();
      if (!coefficient) {
        return Fail(kNotRead,
                    At("Unable to read coefficient at row ", row) + At(", column ", column) + InFile(path));
      }
      coefficients[row][column] = static_cast<float>(*coefficient);
      isMatched = isMatched || (*coefficient != 0 && isTaken[column]);
    }
  }
  if (isMatched) return true;
  return Fail(kNoMatch, "No match found for any input channel label" + InFile(path));
}

bool CDerivationFile::Fail(int code, std::string text) {
  Release();
  errorCode = code;
  errorText = std::move(text);
  if (showNotices != 0) ShowCodedNotice();
  return false;
}

void CDerivationFile::ShowCodedNotice() const {
  if (errorCode != kNoError && errorCode != kNoChannels) ShowNotice(*host_, errorText);
}

void CDerivationFile::Release() {
  FreeStringVector(inputLabels);
  FreeStringVector(outputLabels);
  FreeMatrix(coefficients);
  FreeIntVector(channelInput);
  allocated = false;
}

}  // namespace wavelock

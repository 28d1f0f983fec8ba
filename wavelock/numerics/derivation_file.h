// A derivation file: a text that maps input channels to outputs by a matrix of coefficients.
//
//   rows columns                   outputs, inputs
//   label label ...                of each column
//   label coefficient ...          for each row, its label and one number for each column
//
// All of these are words; line breaks and blanks between them carry no meaning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "wavelock/numerics/matrices.h"
#include "wavelock/numerics/text_scanner.h"
#include "wavelock/platform/host.h"

namespace wavelock {

class CDerivationFile {
 public:
  enum ErrorCode : int {
    kNoError = 0,
    kNoMemory = 1,
    kNotOpened = 2,
    kNotRead = 3,
    kNoMatch = 4,  // no row has a coefficient for a column whose label a channel bears
    kNoChannels = 6,
  };

  explicit CDerivationFile(Host& host = Host::Default()) : host_(&host) {}

  // Reads a file and matches its columns with the labels of channels. `name` gets ".LDR" when it has no
  // extension. False on failure: errorCode and errorText then tell which, no names and no weights of the file
  // are kept, and the person is told unless showNotices is 0 or a count in the file was below 1.
  bool Read(const std::string& name, std::int32_t channelCount, std::int32_t blockPoints,
            const std::string labels[]);

  int GetErrorCode() const { return errorCode; }
  std::int32_t GetOutputCount() const { return outputCount; }
  std::span<const std::string> GetOutputLabels() const { return outputLabels.All(); }

  // The last failure in words, shown once more; nothing where Read shows nothing.
  void ShowCodedNotice() const;

  // Drops what was read.
  void Release();

  std::int32_t inputCount = 0;   // columns
  std::int32_t outputCount = 0;  // rows
  StringVector inputLabels;
  StringVector outputLabels;
  FloatMatrix coefficients;  // outputs x inputs
  bool allocated = false;    // what was read is kept
  std::int32_t showNotices = 1;
  int errorCode = kNoError;
  std::string errorText;
  std::string fileName;  // as given
  std::int32_t channelCount = 0;
  std::int32_t blockPoints = 0;  // of the caller's blocks; carried
  IntVector channelInput;        // for each channel, the column that takes it, or -1

 private:
  bool ReadText(TextScanner text, std::string_view path);
  bool ReadColumnLabels(TextScanner& text, std::string_view path);
  bool MatchColumns();
  bool ReadRows(TextScanner& text, std::string_view path);
  bool Fail(int code, std::string text);

  Host* host_;

  // During Read.
  std::span<const std::string> labels_;  // of the channels
  std::size_t textSize_ = 0;
};

// The name with the extension behind it, unless it has one of any kind behind its last backslash.
std::string ApplyDefaultExtension(const std::string& name, const std::string& extension);

}  // namespace wavelock

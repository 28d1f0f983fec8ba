// What a file holds: told by four bytes of its header, and for some names by the extension.
#include <algorithm>
#include <new>
#include <string>

#include "wavelock/platform/ascii_case.h"
#include "wavelock/prompts/prompts.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// Codes of `acquisitionMode` that the rules name.
constexpr int kModeAverage = 1;
constexpr int kModeContinuous = 3;
constexpr int kModeStatistics = 6;

bool IsOneOf(int value, std::initializer_list<int> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

// The first rule that fits decides.
int DetailKind(const RecordingHeader& header) {
  const int mode = header.acquisitionMode;
  const int domain = header.frequencyDomain;
  const int form = header.fileForm;
  const bool formOfAverages = IsOneOf(form, {0, 2, 3, 5});
  if (header.timeFrequencyFlag != 0) return 7;
  if (mode == kModeContinuous) return 3;
  if (mode != kModeStatistics && domain == 0 && formOfAverages) return 1;
  if (mode == kModeStatistics && domain == 1) return 4;
  if (mode == kModeStatistics && domain == 0) return 6;
  if (IsOneOf(mode, {0, 2}) && domain == 0 && form == 1) return 2;
  if (IsOneOf(mode, {0, 1, 2}) && domain == 1 && formOfAverages) return 4;
  if (IsOneOf(mode, {0, 2}) && domain == 1 && form == 1) return 5;
  return -1;
}

std::string UpperCase(std::string text) {
  for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return text;
}

}  // namespace

std::string GetExtension(std::string_view path) {
  return SplitPath(path).extension;
}

int CRecordingFile::GetFileClass(HeaderImage* header) {
  switch (ClassifyHeader(header)) {
    case 1:
    case 4:
      return kAverage;
    case 2:
    case 5:
      return kEpochs;
    case 3:
      return kContinuous;
    case 6:
      return kAverageWithStatistics;
    case 7:
      return kTimeFrequency;
    default:
      return kUnreadable;
  }
}

int CRecordingFile::ClassifyHeader(HeaderImage* header) {
  CheckExtension(header);
  return header != nullptr ? DetailKind(header->header) : -1;
}

// The name overrules the header towards continuous, and, if the person says so, away from it. Once for each
// open: a call without an image or without a file uses it up.
void CRecordingFile::CheckExtension(HeaderImage* header) try {
  if (kindPromptDone != 0) return;
  kindPromptDone = 1;
  if (header == nullptr || !file) return;
  auto& mode = header->header.acquisitionMode;
  std::string extension = InLowerCase(GetExtension(file->Name()));
  extension.erase(0, std::min(extension.find_first_not_of('.'), extension.size()));
  if (mode == kModeContinuous && extension == "avg") {
    CKindPrompt prompt;
    prompt.firstReading = UpperCase(extension);
    prompt.secondReading = "CNT";
    prompt.choice = 0;
    prompt.DoModal(host);
    if (prompt.choice == 0) mode = kModeAverage;
  }
  if (extension == "edf" || extension == "raw") mode = kModeContinuous;
} catch (const std::bad_alloc&) {
}

}  // namespace wavelock

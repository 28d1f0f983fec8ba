// Opening and closing.
#include <algorithm>
#include <new>

#include "wavelock/prompts/messages.h"
#include "wavelock/prompts/prompts.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kLargeFileSize = 0x80000000;
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string CleanPath(std::string path) {
  path.erase(std::remove(path.begin(), path.end(), '"'), path.end());
  const auto last = path.find_last_not_of(kWhiteSpace);
  if (last == std::string::npos) return {};
  path.erase(last + 1);
  return path.substr(path.find_first_not_of(kWhiteSpace));
}

int WidthOf(const CSetup& setup) {
  return setup.wideSamples != 0 ? 4 : 2;
}

// The first revision with a tail, and the one whose tail is not to be trusted.
constexpr int kFirstRevisionWithTail = 14;
constexpr int kModifiedRevision = 15;

bool HasTail(const CRecordingFile& recording) {
  const auto low = static_cast<std::int32_t>(std::uint32_t{recording.rawHeader.header.tailPositionLow});
  return recording.headerRevision >= kFirstRevisionWithTail &&
         recording.headerRevision != kModifiedRevision && (low > 0 || recording.largeFile != 0);
}

// The high word counts in files of 1 GiB and more.
std::uint64_t TailPosition(const CRecordingFile& recording) {
  constexpr std::uint64_t kHighWordCounts = 0x40000000;
  const RecordingHeader& header = recording.rawHeader.header;
  const std::uint64_t high = recording.fileSize >= kHighWordCounts ? header.tailPositionHigh : 0;
  return (high << 32) | header.tailPositionLow;
}

}  // namespace

CRecordingFile::CRecordingFile(int silentFlag, Host& hostServices)
    : markerList(hostServices),
      silent(silentFlag),
      setup(std::make_unique<CSetup>(0, hostServices)),
      overlay(hostServices),
      host(hostServices) {
  setup->ResetToDefaults();
}

CRecordingFile::~CRecordingFile() = default;

bool CRecordingFile::OpenFile(std::string path) {
  kindPromptDone = 0;
  path = CleanPath(std::move(path));
  std::string systemText;
  file = host.files.Open(path, OpenMode::kReadWrite);
  if (!file) file = host.files.Open(path, OpenMode::kReadOnly, &systemText);
  if (!file) {
    ReportMessage(NumberedMessage(MessageNumber::kFileNotOpened, path));
    ReportMessage({.source = ModalSource::kSystem, .text = systemText});
    return false;
  }
  fileName = file->Name();
  filePath = file->Path();
  const bool headIsRead = ReadFileHead();
  sampleWidth = WidthOf(*setup);
  if (!headIsRead) {
    ReportMessage(NumberedMessage(MessageNumber::kHeadNotRead));
    CloseFile();
    return false;
  }
  markerList.TimesToSamples(*setup);
  return true;
}

bool CRecordingFile::ReadFileHead() {
  const WaitCursor wait(host.modal);
  rawHeader = {};
  if (!ReadHeaderBlock()) return false;
  // A translation that stopped has reported why; the samples may still be worth having.
  TranslateHeader(&rawHeader, setup.get());
  fileSize = file->Size().value_or(0);
  largeFile = fileSize >= kLargeFileSize ? 1 : 0;
  const int fileClass = GetFileClass(&rawHeader);
  if (HasTail(*this)) {
    CTffFile tail(*file, TailPosition(*this));
    ReadAnnotations(tail, fileClass);
  }
  sampleWidth = WidthOf(*setup);
  if (fileClass == kContinuous && !ReadEvents())
    ReportMessage(NumberedMessage(MessageNumber::kEventsNotRead));
  return true;
}

bool CRecordingFile::CloseFile() {
  ClearEpochHeaders();
  readBuffer_.Release();
  rawBuffer_.Release();
  if (!file) return false;
  file.reset();
  return true;
}

bool CRecordingFile::IsFileWritable() {
  const int kind = GetAcquisitionKind();
  if (kind == kAverage || (kind == kAverageWithStatistics && !file)) {
    // Such a file is closed again as soon as it is open.
    const auto status = host.files.Status(filePath);
    return !status || !status->readOnly;
  }
  if (!file) return false;
  const auto status = file->Status();
  return status && !status->readOnly;
}

void CRecordingFile::ReportMessage(const ModalText& message) {
  if (silent == 0) host.modal.ShowMessage(message);
}

int CRecordingFile::GetAcquisitionKind() const {
  constexpr int kNoSetup = -100;
  return setup ? setup->dataKind : kNoSetup;
}

int CRecordingFile::HeaderSize() const {
  constexpr int kRecordsInHeader = sizeof(RecordingHeader) / sizeof(ChannelRecord);
  return (setup->channelCount + kRecordsInHeader) * static_cast<int>(sizeof(ChannelRecord));
}

}  // namespace wavelock

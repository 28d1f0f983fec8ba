// Opening and closing.
#include <algorithm>
#include <new>

#include "wavelock/numerics/conversions.h"
#include "wavelock/numerics/stored.h"
#include "wavelock/platform/replacing.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/prompts/prompts.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/setup/section_tags.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kLargeFileSize = 0x80000000;
constexpr std::uint64_t kFirstSizeWithHighWord = 0x40000000;  // the high word of the tail's position counts
constexpr std::int32_t kFirstUnknownTail = 2;

constexpr std::int32_t kKnownWriterMajor = 4;
constexpr std::int32_t kFirstUnknownWriterMinor = 3;
constexpr char kNewerWriter[] =
    "The file you have selected was created with a newer version of software and may be incompatible\n"
    "Proceed at your own risk";

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

bool CRecordingFile::OpenFile(std::string path) try {
  StartOver();
  kindPromptDone = 0;
  if (!OpenFromDisk(CleanPath(std::move(path)))) return false;
  auto watchedFile = std::make_unique<WatchedFile>(std::move(file));
  const WatchedFile& watched = *watchedFile;
  file = std::move(watchedFile);
  const bool headIsRead = ReadFileHead();
  opened_.isReadWell = !watched.HasFailed();
  sampleWidth = WidthOf(*setup);
  if (!headIsRead) {
    ReportMessage(NumberedMessage(MessageNumber::kHeadNotRead));
    CloseFile();
    return false;
  }
  WarnOfNewerWriter();
  if (const int kind = GetAcquisitionKind(); kind == kAverage || kind == kAverageWithStatistics) {
    if (!KeepAverage()) return false;
  }
  markerList.TimesToSamples(*setup);
  return true;
} catch (const std::bad_alloc&) {
  CloseFile();
  return false;
}

void CRecordingFile::StartOver() {
  keptData.reset();
  ClearEpochHeaders();
  opened_ = {};
  created_.reset();
  isSavedWhole_ = false;
}

bool CRecordingFile::OpenFromDisk(const std::string& path) {
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
  return true;
}

void CRecordingFile::WarnOfNewerWriter() {
  const bool isNewer = setup->writerVersionMajor > kKnownWriterMajor ||
                       (setup->writerVersionMajor == kKnownWriterMajor &&
                        setup->writerVersionMinor >= kFirstUnknownWriterMinor);
  if (!isNewer || host.profile.GetInt(profile::kState, profile::kHideNewerVersionWarning, 0) != 0) return;
  CNewerVersionPrompt prompt;
  prompt.text = kNewerWriter;
  prompt.DoModal(host);
  if (prompt.dontShowAgain != 0) host.profile.SetInt(profile::kState, profile::kHideNewerVersionWarning, 1);
}

void CRecordingFile::WarnOfModification() {
  if (headerRevision != kModifiedRevision || silent != 0) return;
  if (host.profile.GetInt(profile::kState, profile::kHideModifiedWarning, 0) != 0) return;
  CModifiedPrompt().DoModal(host);
}

bool CRecordingFile::ReadFileHead() {
  const WaitCursor wait(host.modal);
  rawHeader = {};
  if (!ReadHeaderBlock()) return false;
  // A translation that stopped has reported why; the samples may still be worth having.
  opened_.isTranslated = Translate(rawHeader, *setup);
  fileSize = file->Size().value_or(0);
  largeFile = fileSize >= kLargeFileSize ? 1 : 0;
  const int fileClass = GetFileClass(&rawHeader);
  if (fileClass == kTimeFrequency && !LoadPairMatrix())
    ReportMessage(NumberedMessage(MessageNumber::kPairMatrixNotRead));
  WarnOfModification();
  if (HasTail() && !ReadTail(fileClass)) return false;
  sampleWidth = WidthOf(*setup);
  if (fileClass == kContinuous && !ReadEvents())
    ReportMessage(NumberedMessage(MessageNumber::kEventsNotRead));
  return true;
}

std::uint64_t CRecordingFile::TailPosition() const {
  const RecordingHeader& header = rawHeader.header;
  const std::uint64_t high = fileSize < kFirstSizeWithHighWord ? 0 : std::uint64_t{header.tailPositionHigh};
  return high << 32 | header.tailPositionLow;
}

bool CRecordingFile::HasTail() const {
  if (headerRevision < kFirstRevisionWithTail || headerRevision == kModifiedRevision) return false;
  return largeFile != 0 || WrapToInt32(rawHeader.header.tailPositionLow) > 0;
}

bool CRecordingFile::ReadTail(int fileClass) {
  if (!setup->LoadEmbedded(*file, TailPosition())) return false;
  setup->fromRecording = 1;
  if (setup->dataKind == kContinuous && setup->frequencyDomain != 0) {
    host.modal.ShowMessage(NumberedMessage(MessageNumber::kContinuousInFrequencyDomain));
    setup->UpdateTimeAxis();
  }
  CTffFile tail(*file, TailPosition());
  ReadAnnotations(tail, fileClass);
  return AcceptsTailRevision(tail);
}

// A tail of a newer program is read when the person wants it. A record that is cut short tells nothing.
bool CRecordingFile::AcceptsTailRevision(CTffFile& tail) {
  Stored<std::int32_t> revision;
  std::uint64_t length = sizeof revision;
  if (tail.ReadSection(tag::kTailRevision, length, &revision) < sizeof revision) return true;
  if (revision < kFirstUnknownTail || silent != 0) return true;
  return host.modal.AskYesNo(NumberedMessage(MessageNumber::kNewerTailQuestion));
}

bool CRecordingFile::CloseFile() {
  ClearEpochHeaders();
  readBuffer_.Release();
  rawBuffer_.Release();
  if (!file) return false;
  file.reset();
  loadedData.reset();
  FreeMatrix(pairMatrix);
  pairedData.reset();
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
  return IsStorableChannelCount(setup->channelCount) ? static_cast<int>(HeaderSizeFor(setup->channelCount))
                                                     : 0;
}

}  // namespace wavelock

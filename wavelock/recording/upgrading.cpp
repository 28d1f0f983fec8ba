// Saving a recording that was opened: its data in the current form in a new file, which takes the place of
// the old one when it is whole. Samples stay the integers that they are; what is laid over them when they are
// read is saved beside them.
#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <vector>

#include "wavelock/numerics/positions.h"
#include "wavelock/platform/replacing.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/recording/header_tables.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/setup/section_tags.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

// Bytes that are copied at a time.
constexpr std::uint64_t kCopiedAtOnce = 1024 * 1024;

// The group of derived channels that a tag is of, if it is of one.
std::optional<std::size_t> DerivedGroupOf(std::uint32_t tag) {
  constexpr std::uint32_t kTagsOfGroup = tag::kFirstDerivedChannel[1] - tag::kFirstDerivedChannel[0];
  const std::size_t group = (tag - tag::kFirstDerivedChannel[0]) / kTagsOfGroup;
  if (tag < tag::kFirstDerivedChannel[0] || group >= kDerivationFileCount) return std::nullopt;
  return group;
}

bool IsAverage(int dataKind) {
  return dataKind == kAverage || dataKind == kAverageWithStatistics;
}

}  // namespace

bool CRecordingFile::SaveOpened(std::int64_t stamp) {
  if (!file && !keptData) return false;
  if (stamp != 0) TakeTimeOfSaving(stamp);
  const std::string path = filePath;
  isSavedWhole_ = SaveCopy(path);
  if (!isSavedWhole_) return false;
  if (setup->dataKind == kContinuous && markerList.GetCount() > 0) {
    ReportMessage(NumberedMessage(MessageNumber::kMarkersNotSaved, fileName));
  }
  CloseFile();
  fileName.clear();
  filePath.clear();
  SetReadOnlyIfWanted(path);
  return true;
}

// An average was closed as soon as it was read, so its file is opened again for as long as this takes.
bool CRecordingFile::SaveCopy(std::string path) try {
  const bool wasClosed = !file;
  if (created_ || (wasClosed && !keptData)) return false;
  const WaitCursor wait(host.modal);
  if (wasClosed) file = host.files.Open(filePath, OpenMode::kReadOnly);
  const bool isSaved = file && IsKnownWhole() &&
                       ReplaceWhole(host.files, path, [this](File& target) { return WriteCopy(target); });
  if (wasClosed) file.reset();
  return isSaved;
} catch (const std::bad_alloc&) {
  if (keptData) file.reset();
  return false;
}

// Whether nothing in the file would be left behind because it was not understood, and whether it is still the
// file that was opened.
bool CRecordingFile::IsKnownWhole() {
  const int fileClass = GetFileClass(&rawHeader);
  if (!opened_.isReadWell || !opened_.isTranslated || dataStart < 0 || file->Size() != fileSize) return false;
  const bool isSameKind =
      setup->dataKind == fileClass || (IsAverage(setup->dataKind) && IsAverage(fileClass));
  if (!isSameKind || setup->channelCount != rawHeader.header.channelCount) return false;
  switch (fileClass) {
    case kContinuous:
      return opened_.eventsAreKnown && CountsAllSamples();
    case kEpochs:
      return CountsAllEpochs();
    case kTimeFrequency:
      return static_cast<bool>(pairMatrix);
    default:
      return fileClass != kUnreadable && CountsAllSections();
  }
}

// Whether a save writes all records of a tag from what was read of them.
bool CRecordingFile::IsWrittenAnew(std::uint32_t tag) const {
  const bool isContinuous = setup->dataKind == kContinuous;
  // Without the derivation file that they follow, derived channels are not read.
  if (const auto group = DerivedGroupOf(tag)) return setup->derivedCount[*group] > 0;
  switch (tag) {
    case tag::kMarker:
      return opened_.markersAreKnown;
    case tag::kOverlayParameters:
      return isContinuous && overlay.SavesParameters();
    case tag::kOverlayRow:
    case tag::kOverlaySegment:
    case tag::kOverlayCoefficient:
    case tag::kLabel:
      return isContinuous;
    default:
      return tag::IsKnown(tag);
  }
}

// At the latest: with the file, or where the container begins.
std::uint64_t CRecordingFile::DataEnd() const {
  return HasTail() ? std::min(TailPosition(), fileSize) : fileSize;
}

std::optional<CRecordingFile::DataExtent> CRecordingFile::ExtentOfData() {
  if (dataStart < 0) return std::nullopt;
  switch (GetFileClass(&rawHeader)) {
    case kContinuous:
      return ExtentOfSamples();
    case kEpochs:
      return ExtentOfEpochs();
    case kAverage:
    case kAverageWithStatistics:
      return ExtentOfSections();
    default:
      return std::nullopt;
  }
}

bool CRecordingFile::WriteCopy(File& target) {
  std::vector<std::byte> block(static_cast<std::size_t>(HeaderSize()));
  if (!target.Write(block) || !CopyData(target, static_cast<int>(block.size()))) return false;
  setup->wideSamples = sampleWidth == 4 ? 1 : 0;
  if (!FillHeader(setup.get(), block.data())) return false;
  DescribeData(*reinterpret_cast<RecordingHeader*>(block.data()));
  return WriteBehindData(target, block);
}

bool CRecordingFile::CopyData(File& target, int start) {
  switch (setup->dataKind) {
    case kContinuous:
      return CopySamples(target);
    case kEpochs:
      return CopyEpochs(target);
    case kTimeFrequency:
      return CopyPairs(target, start);
    default:
      return CopySections(target);
  }
}

// The shape of the data is what the file has, whatever the setup says.
void CRecordingFile::DescribeData(RecordingHeader& copy) {
  const RecordingHeader& header = rawHeader.header;
  if (setup->dataKind == kContinuous) return;
  copy.pointCount = header.pointCount;
  copy.frequencyDomain = header.frequencyDomain;
  if (setup->dataKind == kTimeFrequency) return;
  copy.averagedSweeps = header.averagedSweeps;
  if (setup->dataKind == kEpochs) return;
  copy.acceptedSweeps = header.acceptedSweeps;
  copy.hasVariance = header.hasVariance;
  copy.acquisitionMode = kKindCodes[GetFileClass(&rawHeader)].acquisitionMode;
}

// A record that the file ends in stays behind, and one without a tag, which no container may hold.
bool CRecordingFile::CopyUnknownRecords(File& target) {
  if (!HasTail()) return true;
  CTffFile from(*file, TailPosition());
  CTffFile to(target, target.Position().value_or(0));
  for (const CTffFile::Entry& entry : from.Entries()) {
    const std::uint64_t payload = entry.position + sizeof(TffRecord);
    const std::uint32_t length = entry.record.length;
    const std::uint32_t tag = entry.record.tag;
    if (tag == 0 || IsWrittenAnew(tag) || !LiesInside(payload, length, fileSize)) continue;
    if (!to.WriteSection(tag, length, nullptr, entry.record.version) || !CopyBytes(payload, length, target)) {
      return false;
    }
  }
  return true;
}

bool CRecordingFile::CopyBytes(std::uint64_t from, std::uint64_t count, File& target) {
  if (!LiesInside(from, count, fileSize) || !file->SeekTo(from)) return false;
  while (count > 0) {
    const std::uint64_t piece = std::min(count, kCopiedAtOnce);
    const std::span<std::byte> bytes = readBuffer_.Take(static_cast<std::size_t>(piece));
    if (bytes.empty() || !file->ReadExactly(bytes) || !target.Write(bytes)) return false;
    count -= piece;
  }
  return true;
}

// ---- continuous samples

bool CRecordingFile::CopySamples(File& target) {
  const std::uint64_t samples = GetContinuousSampleCount();
  const std::uint64_t sampleBytes =
      std::uint64_t{rawHeader.header.channelCount} * static_cast<std::uint64_t>(sampleWidth);
  for (std::uint64_t start = 0; start < samples;) {
    const std::uint64_t end = std::min(samples, EndOfPiece(start));
    const std::span<std::byte> raw = rawBuffer_.Take(static_cast<std::size_t>((end - start) * sampleBytes));
    if (raw.empty() || !ReadStored(start, end, raw) || !target.Write(raw)) return false;
    start = end;
  }
  return true;
}

// ---- epochs

CRecordingFile::DataExtent CRecordingFile::ExtentOfEpochs() {
  return {GetEpochPosition(static_cast<std::int32_t>(GetEpochCount())), DataEnd()};
}

// A header that counts too few leaves at least one epoch between the last one and what follows.
bool CRecordingFile::CountsAllEpochs() {
  const auto [end, next] = ExtentOfEpochs();
  return end <= fileSize && (next < end || next - end < EpochStride());
}

// A head that is shorter than it is now ends in zeros.
bool CRecordingFile::CopyEpochs(File& target) {
  const auto headBytes = static_cast<std::uint64_t>(GetEpochHeaderSize());
  const std::uint64_t dataBytes = EpochStride() - headBytes;
  for (std::uint32_t i = 0; i < GetEpochCount(); ++i) {
    const std::uint64_t position = GetEpochPosition(static_cast<std::int32_t>(i));
    EpochHeader head{};
    if (!file->SeekTo(position) ||
        !file->ReadExactly(BytesOf(head).first(static_cast<std::size_t>(headBytes))) ||
        !target.Write(BytesOf(head)) || !CopyBytes(position + headBytes, dataBytes, target)) {
      return false;
    }
  }
  return true;
}

}  // namespace wavelock

// Creating a recording and finishing it.
#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "wavelock/platform/replacing.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/setup/section_tags.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

// The form of the tail. Readers ask before they open one that is newer than they know.
constexpr std::int32_t kTailRevision = 1;

}  // namespace

bool CRecordingFile::CreateFile(std::string path, int width) try {
  file.reset();
  StartOver();
  created_ = Created{setup->channelCount};
  pendingConversionNotice = 0;
  wroteStatistics = 0;
  wroteVariance = 0;
  if ((width != 2 && width != 4) || !IsStorableChannelCount(setup->channelCount)) return false;
  sampleWidth = width;
  const std::vector<std::byte> hole(HeaderSizeFor(setup->channelCount));
  std::unique_ptr<File> made = host.files.Open(path, OpenMode::kCreate);
  if (!made) return false;
  file = std::make_unique<WatchedFile>(std::move(made));
  fileName = file->Name();
  filePath = file->Path();
  if (!file->Write(hole)) {
    file.reset();
    host.files.Delete(path);
    fileName.clear();
    filePath.clear();
    return false;
  }
  dataStart = static_cast<int>(hole.size());
  return true;
} catch (const std::bad_alloc&) {
  file.reset();
  return false;
}

bool CRecordingFile::SaveSetupAs() try { return setup && setup->SaveAs(""); } catch (const std::bad_alloc&) {
  return false;
}

bool CRecordingFile::SaveAndClose(std::int64_t stamp) try {
  if (std::exchange(pendingConversionNotice, 0) != 0) {
    ReportMessage(NumberedMessage(MessageNumber::kSamplesClipped, fileName));
  }
  if (!created_) return SaveOpened(stamp);
  if (!file) return false;
  const std::string path = filePath;
  setup->hasVariance = wroteVariance;
  if (setup->dataKind == kAverage && wroteStatistics != 0) setup->dataKind = kAverageWithStatistics;
  if (setup->dataKind == kAverageWithStatistics && wroteStatistics == 0) setup->dataKind = kAverage;
  setup->wideSamples = sampleWidth == 4 ? 1 : 0;  // or nobody could read what was written

  const WaitCursor wait(host.modal);
  if (stamp != 0) TakeTimeOfSaving(stamp);
  std::vector<std::byte> block(static_cast<std::size_t>(HeaderSize()));
  FillHeader(setup.get(), block.data());
  const auto* const watched = dynamic_cast<const WatchedFile*>(file.get());
  isSavedWhole_ = WriteBehindData(*file, block) && watched != nullptr && !watched->HasFailed() &&
                  setup->channelCount == created_->channelCount;
  file.reset();
  fileName.clear();
  filePath.clear();
  SetReadOnlyIfWanted(path);
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

void CRecordingFile::TakeTimeOfSaving(std::int64_t stamp) {
  setup->subject->recordTime = host.process.LocalTime(stamp, "%H:%M:%S");
  setup->subject->recordDate = host.process.LocalTime(stamp, "%m/%d/%Y");
}

// All that follows the data of a file, and at last the header, whose block tells where it is. A failure does
// not stop this, and makes the result false. Of the header the upper byte of its channel count comes last,
// with one that no reader takes in its place before: a header that is written in part is none.
bool CRecordingFile::WriteBehindData(File& target, std::span<std::byte> block) {
  if (block.size() < sizeof(RecordingHeader)) return false;
  auto& header = *reinterpret_cast<RecordingHeader*>(block.data());
  const std::optional<std::uint64_t> dataEnd = target.Seek(0, SeekOrigin::kEnd);
  header.eventTablePosition = static_cast<std::uint32_t>(dataEnd.value_or(0));
  if (setup->dataKind == kContinuous)
    WriteEvents(target, created_ ? dataStart : static_cast<int>(block.size()));
  target.Flush();
  const std::uint64_t tail = target.Seek(0, SeekOrigin::kEnd).value_or(0);
  WatchedFile watched(target);
  const bool hasSetup = tail != 0 && setup->SaveEmbedded(watched, tail) && !watched.HasFailed();
  bool isWhole = WriteTail(target) && hasSetup;
  isWhole = target.Flush() && isWhole;  // the header vouches for what it points to

  // A setup in part would count for more than the header. Without one, samples of 4 bytes are not known for
  // what they are; and without the end of the data nobody can tell how many there are.
  header.tailPositionLow = static_cast<std::uint32_t>(hasSetup ? tail : 0);
  header.tailPositionHigh = static_cast<std::uint32_t>(hasSetup ? tail >> 32 : 0);
  const bool isReadable = dataEnd && !(created_ && created_->lacksSection) && (hasSetup || sampleWidth == 2);
  constexpr std::size_t kLastByte = offsetof(RecordingHeader, channelCount) + 1;
  const std::byte lastByte = std::exchange(block[kLastByte], std::byte{0xFF});
  isWhole = target.SeekTo(0) && WriteHeaderBlock(block.data(), &target, static_cast<int>(block.size())) &&
            isReadable && target.SeekTo(kLastByte) && target.Write(std::span(&lastByte, 1)) && isWhole;
  return target.Flush() && isWhole;
}

// Behind the setup: what stands beside the samples, and the record that closes the tail.
bool CRecordingFile::WriteTail(File& target) {
  CTffFile tail(target, target.Seek(0, SeekOrigin::kEnd).value_or(0));
  bool isWhole = true;
  if (setup->dataKind == kContinuous) {
    isWhole = overlay.Save(tail);
    isWhole = labelList.SortByValue() && isWhole;
    isWhole = labelList.Save(tail) && isWhole;
  } else {
    isWhole = markerList.Save(tail);
  }
  isWhole = (created_ || CopyUnknownRecords(target)) && isWhole;
  Stored<std::int32_t> revision;
  revision = kTailRevision;
  return tail.WriteSection(tag::kTailRevision, sizeof revision, &revision, 0) && isWhole;
}

void CRecordingFile::SetReadOnlyIfWanted(const std::string& path) {
  if (host.profile.GetInt(profile::kState, profile::kAutoReadOnly, 0) == 0) return;
  if (auto status = host.files.Status(path)) {
    status->readOnly = true;
    host.files.SetStatus(path, *status);
  }
}

// Samples per channel: of a file that is being made, those between the header and where it ends now. Nothing
// but continuous samples is counted.
std::uint64_t CRecordingFile::SamplesOfFile() {
  if (!created_) return setup->dataKind == kContinuous ? GetContinuousSampleCount() : 0;
  const std::uint64_t end = file ? file->Size().value_or(0) : 0;
  const auto sampleBytes =
      static_cast<std::uint64_t>(setup->channelCount) * static_cast<std::uint64_t>(sampleWidth);
  if (setup->dataKind != kContinuous || dataStart < 0 || end < static_cast<std::uint64_t>(dataStart))
    return 0;
  return (end - static_cast<std::uint64_t>(dataStart)) / sampleBytes;
}

}  // namespace wavelock

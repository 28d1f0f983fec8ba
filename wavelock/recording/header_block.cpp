// Reading the block at the start of a file, in whatever layout it is stored.
#include "wavelock/prompts/messages.h"
#include "wavelock/recording/header_revisions.h"
#include "wavelock/recording/oldest_header.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

constexpr char kVersionedLayout = 'V';
constexpr int kFirstRevisionWithAnyCount = 4;  // older ones store 32 channel records, whatever the count

}  // namespace

bool CRecordingFile::ReadHeaderBlock() {
  RecordingHeader& header = rawHeader.header;
  const std::span<std::byte> firstByte = BytesOf(header).first(1);
  if (!file->SeekTo(0) || !file->ReadExactly(firstByte)) {
    ReportMessage(NumberedMessage(MessageNumber::kEmptyFile));
    return false;
  }
  // What a block that ends early leaves is judged by the checks here, like any other.
  const bool isVersioned = firstByte[0] == std::byte{kVersionedLayout};
  const bool isWhole = isVersioned ? ReadVersionedHeader() : ConvertOldestLayout();
  const bool isOldestCount = header.channelCount >= 1 && header.channelCount <= kMaxOldestChannels;
  if (!isVersioned && !isOldestCount) return RefuseChannelCount();
  RepairGainBase(header);
  FillDeadRates(header);
  if (!IsChannelCount(header.channelCount)) return RefuseChannelCount();
  headerRevision = header.headerRevision;
  if (!isWhole) dataStart = -1;  // it is still that of a file before
  return BringToCurrentRevision(rawHeader);
}

bool CRecordingFile::RefuseChannelCount() {
  ReportMessage(NumberedMessage(MessageNumber::kChannelCountRefused));
  return false;
}

// False for a block that is not whole, or whose channels are too many to be read.
bool CRecordingFile::ReadVersionedHeader() {
  RecordingHeader& header = rawHeader.header;
  const std::span<std::byte> revision = BytesOf(header).subspan(offsetof(RecordingHeader, headerRevision), 1);
  if (!file->SeekTo(offsetof(RecordingHeader, headerRevision)) || !file->ReadExactly(revision)) return false;
  if (!file->SeekTo(0)) return false;
  const bool oldBlock = header.headerRevision < kFirstRevisionWithAnyCount;
  if (!file->ReadExactly(BytesOf(header))) return false;
  if (!oldBlock && !IsChannelCount(header.channelCount)) return false;
  constexpr std::size_t kRecordsInOldBlock = 32;
  const std::size_t records = oldBlock ? kRecordsInOldBlock : std::size_t{header.channelCount};
  const std::span<ChannelRecord> channels = std::span(rawHeader.channels).first(records);
  if (!file->ReadExactly(std::as_writable_bytes(channels))) return false;
  CompleteVersionedHeader(rawHeader);
  dataStart = static_cast<int>(sizeof header + channels.size_bytes());
  return true;
}

// False for a block that is not whole, or that counts more channels than such a block can have.
bool CRecordingFile::ConvertOldestLayout() {
  const auto firstByte = std::to_integer<std::uint8_t>(BytesOf(rawHeader.header)[0]);
  const std::optional<OldestHeader> old = ReadOldestHeader(*file, firstByte);
  if (!old) return false;
  if (!ConvertOldestHeader(*old, rawHeader)) {
    host.modal.ShowMessage(NumberedMessage(MessageNumber::kTooManyChannelsInOldestHeader));
    return false;
  }
  const auto position = file->Position();
  if (position) dataStart = static_cast<int>(*position);
  return position.has_value();
}

}  // namespace wavelock

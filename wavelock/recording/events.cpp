// Events of a continuous recording, in every form in which they are stored: a table behind the samples in one
// of three kinds of records, or two words beside each sample.
#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "wavelock/numerics/conversions.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/prompts/notices.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// ---- the table in the file

struct EventTableHead {
  Stored<std::uint8_t> kind;
  Stored<std::int32_t> byteSize;  // of the records that follow
  Stored<std::int32_t> reserved;
};
static_assert(sizeof(EventTableHead) == 1 + 4 + 4);

enum TableKind : int {
  kShortRecordsByOffset = 1,  // the first 8 bytes of an event; `point` is a byte offset in the file
  kRecordsByOffset = 2,
  kRecordsBySample = 3,
};

constexpr std::int32_t kShortRecordBytes = 8;

constexpr std::int32_t RecordBytes(int kind) {
  return kind == kShortRecordsByOffset ? kShortRecordBytes : static_cast<std::int32_t>(sizeof(EventRecord));
}

// Between a sample and its byte offset in the file, counting as if the samples were one plain run. Both wrap
// at 32 bits like the field; a way back that ends between two samples gives the one nearer to the first.
std::uint32_t OffsetOfPoint(std::uint32_t point, int dataStart, int sampleBytes) {
  return static_cast<std::uint32_t>(sampleBytes) * point + static_cast<std::uint32_t>(dataStart);
}

std::uint32_t PointOfOffset(std::uint32_t offset, int dataStart, int sampleBytes) {
  const std::int32_t distance = WrapToInt32(std::int64_t{offset} - dataStart);
  return sampleBytes != 0 ? static_cast<std::uint32_t>(distance / sampleBytes) : 0;
}

// Records are read this many at a time, so that a table claims no memory that the file does not fill.
constexpr std::size_t kRecordsAtOnce = 64 * 1024;

// ---- words beside the samples

EventRecord StimulusAt(std::uint32_t sample, std::uint16_t stimType) {
  EventRecord record{};
  record.stimType = stimType;
  record.point = sample;
  return record;
}

EventRecord KeyAt(std::uint32_t sample, std::uint16_t word) {
  EventRecord record{};
  record.SetKeypad(static_cast<std::uint8_t>(word & 0x0F));
  record.point = sample;
  return record;
}

// Of each record of `words` words the last two tell a stimulus and a key. False when memory ran out.
bool AppendTriggers(std::span<const std::byte> records, std::size_t words, std::uint32_t firstSample,
                    std::vector<EventRecord>& events) {
  const std::size_t recordBytes = words * sizeof(std::uint16_t);
  const std::byte* triggers = records.data() + recordBytes - 2 * sizeof(std::uint16_t);
  const auto count = static_cast<std::uint32_t>(records.size() / recordBytes);
  try {
    for (std::uint32_t i = 0; i < count; ++i, triggers += recordBytes) {
      std::uint16_t pair[2];
      std::memcpy(pair, triggers, sizeof pair);
      if (pair[0] != 0) events.push_back(StimulusAt(firstSample + i, pair[0]));
      if (pair[1] != 0) events.push_back(KeyAt(firstSample + i, pair[1]));
    }
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

}  // namespace

int CRecordingFile::GetEventCount() {
  return GetFileClass(&rawHeader) == kContinuous ? static_cast<int>(eventGroup.Size()) : 0;
}

bool CRecordingFile::ReadEvents() {
  opened_.eventsAreKnown = false;
  if (GetFileClass(&rawHeader) != kContinuous || !file) return false;
  eventGroup.SetSize(0);
  const bool areRead = ReadStoredEvents();
  if (!areRead) eventGroup.SetSize(0);
  opened_.eventsAreKnown |= areRead;
  return areRead;
}

bool CRecordingFile::ReadStoredEvents() try {
  switch (rawHeader.header.sampleLayout) {
    case kWithTriggers:
      return ReadTriggerWords();
    case kWithLeadingWord:
      opened_.eventsAreKnown = true;  // nobody could ever read them
      ReportMessage(NumberedMessage(MessageNumber::kEventsUnreadableLayout));
      return false;
    default:
      return ReadEventTable() && eventGroup.RemoveDuplicates();
  }
} catch (const std::bad_alloc&) {
  return false;
}

bool CRecordingFile::ReadEventTable() {
  if (!file->SeekTo(EventTablePosition())) return false;
  EventTableHead head;
  const auto headBytes = file->Read(BytesOf(head));
  if (!headBytes) return false;
  if (*headBytes != sizeof head) {
    ReportMessage(NumberedMessage(MessageNumber::kEventTableHeadShort));
    return false;
  }
  if (head.kind < kShortRecordsByOffset || head.kind > kRecordsBySample || head.byteSize < 0) return false;
  if (head.kind != kRecordsBySample && dataStart < 0) return false;
  return ReadEventRecords(head.kind, head.byteSize / RecordBytes(head.kind));
}

// False when the file ends before the table does or memory runs out.
bool CRecordingFile::ReadEventRecords(int kind, std::int32_t count) {
  const auto recordBytes = static_cast<std::uint64_t>(RecordBytes(kind));
  const std::uint64_t left = fileSize - std::min(fileSize, file->Position().value_or(fileSize));
  const auto readable = static_cast<std::int32_t>(
      std::min<std::uint64_t>(left / recordBytes, static_cast<std::uint32_t>(count)));
  if (!eventGroup.SetSize(readable)) {
    ReportMessage(NumberedMessage(MessageNumber::kEventTableTooLarge));
    return false;
  }
  bool isWhole = readable == count;
  std::size_t read = 0;
  for (std::span<EventRecord> rest = eventGroup.Elements(); !rest.empty();) {
    const std::span<EventRecord> records = rest.first(std::min(rest.size(), kRecordsAtOnce));
    const std::size_t got = ReadSomeEvents(kind, records);
    read += got;
    isWhole = isWhole && got == records.size();
    if (got < records.size()) break;
    rest = rest.subspan(got);
  }
  ConvertSegments(eventGroup.Elements().first(read));
  return isWhole;
}

// How many of the records the file gave.
std::size_t CRecordingFile::ReadSomeEvents(int kind, std::span<EventRecord> records) {
  const auto recordBytes = static_cast<std::size_t>(RecordBytes(kind));
  const int sampleBytes = rawHeader.header.channelCount * sampleWidth;
  const std::span<std::byte> bytes = readBuffer_.Take(records.size() * recordBytes);
  const std::size_t got = file->Read(bytes).value_or(0) / recordBytes;
  for (std::size_t i = 0; i < got; ++i) {
    EventRecord& record = records[i];
    std::memcpy(&record, bytes.data() + i * recordBytes, recordBytes);
    if (kind != kRecordsBySample) record.point = PointOfOffset(record.point, dataStart, sampleBytes);
  }
  return got;
}

void CRecordingFile::ConvertSegments(std::span<EventRecord> records) {
  if (host.profile.GetInt(profile::kState, profile::kConvertSegments, 0) == 0) return;
  int converted = 0;
  for (EventRecord& record : records) {
    if (!IsSsSegment(record.SegmentClass())) continue;
    record.SetSegmentClass(kDcSegment);
    ++converted;
  }
  if (converted != 0) ShowNotice(host, "Converted " + std::to_string(converted) + " SS segments to DC");
}

// One pass over all samples. A record that the file ends in counts for nothing.
bool CRecordingFile::ReadTriggerWords() {
  constexpr std::size_t kTriggerWords = 2;
  constexpr std::uint64_t kRecordsOfChunk = 2048;
  if (sampleWidth != 2 || !file || rawHeader.header.sampleLayout != kWithTriggers) return false;
  if (dataStart < 0 || static_cast<std::uint64_t>(dataStart) >= fileSize) return true;
  const std::size_t channels = rawHeader.header.channelCount;
  const std::size_t words = channels + kTriggerWords;
  std::uint64_t records =
      (fileSize - static_cast<std::uint64_t>(dataStart)) / (words * sizeof(std::uint16_t));
  if (records == 0) return true;
  if (!file->SeekTo(static_cast<std::uint64_t>(dataStart))) return false;

  std::vector<EventRecord> found;
  bool isWhole = true;
  for (std::uint32_t sample = 0; records > 0 && isWhole;) {
    const auto inChunk = static_cast<std::size_t>(std::min(records, kRecordsOfChunk));
    const std::span<std::byte> chunk = readBuffer_.Take(inChunk * words * sizeof(std::uint16_t));
    isWhole = !chunk.empty() && file->ReadExactly(chunk) && AppendTriggers(chunk, words, sample, found);
    sample += static_cast<std::uint32_t>(inChunk);
    records -= inChunk;
  }
  if (!eventGroup.SetSize(static_cast<std::int32_t>(found.size()))) return false;
  std::copy(found.begin(), found.end(), eventGroup.Elements().begin());
  return isWhole;
}

bool CRecordingFile::WriteEventTable() {
  if (!IsBeingMade() || !setup) return false;
  WriteEvents(*file, dataStart);
  return true;
}

// Whether every event comes back from a table of byte offsets, whose fields have 32 bits.
bool CRecordingFile::EventsFitOffsets(int start) const {
  const int sampleBytes = setup->channelCount * sampleWidth;
  const std::span<const EventRecord> events = eventGroup.Elements();
  return std::all_of(events.begin(), events.end(), [&](const EventRecord& event) {
    return PointOfOffset(OffsetOfPoint(event.point, start, sampleBytes), start, sampleBytes) == event.point;
  });
}

// One write for many records. The table in memory keeps its sample indexes. The events of a file that already
// is must come back as they were, wherever they point. The head goes in last: without it there is no table,
// and what follows in the file is never taken for events.
void CRecordingFile::WriteEvents(File& target, int start) {
  constexpr std::uint64_t kLargestByOffset = 0x40000000;
  const bool bySample =
      target.Size().value_or(0) >= kLargestByOffset || (!created_ && !EventsFitOffsets(start));
  EventTableHead head;
  head.kind = static_cast<std::uint8_t>(bySample ? kRecordsBySample : kRecordsByOffset);
  head.byteSize = WrapToInt32(static_cast<std::int64_t>(eventGroup.Elements().size_bytes()));
  const EventTableHead hole{};
  const std::optional<std::uint64_t> position = target.Position();
  const bool hasRecords = position && target.Write(std::as_bytes(std::span(&hole, 1))) &&
                          WriteEventRecords(target, start, bySample);
  const std::optional<std::uint64_t> end = target.Position();
  const bool isWritten =
      hasRecords && end && target.SeekTo(*position) && target.Write(BytesOf(head)) && target.SeekTo(*end);
  if (!isWritten) ReportMessage(NumberedMessage(MessageNumber::kEventTableNotWritten));
}

bool CRecordingFile::WriteEventRecords(File& target, int start, bool bySample) {
  const int sampleBytes = setup->channelCount * sampleWidth;
  for (std::span<const EventRecord> rest = eventGroup.Elements(); !rest.empty();) {
    const std::span<const EventRecord> part = rest.first(std::min(kRecordsAtOnce, rest.size()));
    const std::span<std::byte> bytes = readBuffer_.Take(part.size_bytes());
    if (bytes.empty()) return false;
    for (std::size_t i = 0; i < part.size(); ++i) {
      EventRecord record = part[i];
      if (!bySample) record.point = OffsetOfPoint(record.point, start, sampleBytes);
      std::memcpy(bytes.data() + i * sizeof record, &record, sizeof record);
    }
    if (!target.Write(bytes)) return false;
    rest = rest.subspan(part.size());
  }
  return true;
}

}  // namespace wavelock

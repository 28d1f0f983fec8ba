#include "cli/unread_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <optional>

#include "cli/section_list.h"
#include "wavelock/setup/section_tags.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock::command {
namespace {

constexpr int kModifiedRevision = 15;
constexpr int kFirstRevisionWithTail = 14;

}  // namespace

bool HasReadTail(const CRecordingFile& recording) {
  return recording.headerRevision >= kFirstRevisionWithTail &&
         recording.headerRevision != kModifiedRevision && recording.TailPosition() > 0;
}

namespace {

enum Layout : int { kWithTriggers = 0, kWithLeadingWord = 2 };

std::unique_ptr<File> FileOf(const CRecordingFile& recording) {
  return Host::Default().files.Open(recording.filePath, OpenMode::kReadOnly);
}

// ---- words beside the samples

// Of records of `words` words of `width` bytes, how many have bits of `mask` set in the word at `index`.
std::uint64_t CountWords(File& file, std::uint64_t start, std::uint64_t records, std::size_t words,
                         std::size_t width, std::size_t index, std::uint32_t mask) {
  constexpr std::uint64_t kRecordsAtOnce = 4096;
  std::uint64_t found = 0;
  std::vector<std::byte> bytes;
  if (!file.SeekTo(start)) return 0;
  while (records > 0) {
    const auto count = static_cast<std::size_t>(std::min(records, kRecordsAtOnce));
    bytes.resize(count * words * width);
    if (!file.ReadExactly(bytes)) return found;
    for (std::size_t r = 0; r < count; ++r) {
      std::uint32_t word = 0;
      std::memcpy(&word, bytes.data() + (r * words + index) * width, width);
      if ((word & mask) != 0) ++found;
    }
    records -= count;
  }
  return found;
}

void AddWordsBesideSamples(const CRecordingFile& recording, std::uint64_t samples,
                           std::vector<std::string>& parts) {
  const int layout = recording.rawHeader.header.sampleLayout;
  const std::size_t channels = recording.rawHeader.header.channelCount;
  const auto width = static_cast<std::size_t>(recording.sampleWidth);
  const std::unique_ptr<File> file = FileOf(recording);
  if (!file || recording.dataStart < 0) return;
  const auto start = static_cast<std::uint64_t>(recording.dataStart);
  if (layout == kWithTriggers) {
    constexpr std::uint32_t kBehindKeypad = 0xFFFFFFF0;
    const std::uint64_t words =
        CountWords(*file, start, samples, channels + 2, width, channels + 1, kBehindKeypad);
    if (words != 0) parts.push_back(fmt::format("bits behind the keypad in {} words beside samples", words));
  } else if (layout == kWithLeadingWord) {
    const std::uint64_t words = CountWords(*file, start, samples, channels + 1, width, 0, 0xFFFFFFFF);
    if (words != 0) parts.push_back(fmt::format("{} words ahead of samples", words));
  }
}

// ---- bytes that belong to nothing

// Where the data of a recording end, as far as the header tells it.
std::optional<std::uint64_t> EndOfData(CRecordingFile& recording) {
  const RecordingHeader& header = recording.rawHeader.header;
  const auto start = static_cast<std::uint64_t>(std::max(recording.dataStart, 0));
  const std::uint64_t channels = header.channelCount;
  switch (recording.GetFileClass(&recording.rawHeader)) {
    case kEpochs:
      return recording.GetEpochPosition(static_cast<std::int32_t>(recording.GetEpochCount()));
    case kAverage:
      if (header.acceptedSweeps != 0) return std::nullopt;  // sections of sweeps may be there or not
      [[fallthrough]];
    case kAverageWithStatistics: {
      const std::uint64_t points = std::uint64_t{header.pointCount} * (header.hasVariance != 0 ? 2 : 1);
      return start + channels * (5 + 4 * (points + 2 * std::uint64_t{header.acceptedSweeps}));
    }
    default:
      return std::nullopt;
  }
}

void AddBytesBehindData(CRecordingFile& recording, std::vector<std::string>& parts) {
  const std::optional<std::uint64_t> end = EndOfData(recording);
  const std::uint64_t next =
      HasReadTail(recording) ? std::min(recording.TailPosition(), recording.fileSize) : recording.fileSize;
  if (end && *end < next) parts.push_back(fmt::format("{} bytes behind the data", next - *end));
}

void AddIgnoredTail(const CRecordingFile& recording, std::vector<std::string>& parts) {
  const std::uint64_t tail = recording.TailPosition();
  if (recording.headerRevision != kModifiedRevision || tail == 0 || tail >= recording.fileSize) return;
  parts.push_back(fmt::format("the tail of a modified recording, {} bytes", recording.fileSize - tail));
}

// ---- bytes of the header that have no name

template <class... Bytes>
std::size_t CountSet(const Bytes&... reserved) {
  const auto countIn = [](const auto& bytes) {
    const auto all = std::as_bytes(std::span(&bytes, 1));
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [](std::byte b) { return b != std::byte{0}; }));
  };
  return (countIn(reserved) + ...);
}

void AddReservedBytes(const HeaderImage& image, std::vector<std::string>& parts) {
  const RecordingHeader& h = image.header;
  std::size_t count = CountSet(h.reserved251, h.reserved357, h.reserved388, h.reserved415, h.reserved420,
                               h.reserved434, h.reserved445, h.reserved478, h.reserved493, h.reserved521,
                               h.reserved681, h.reserved685, h.reserved696, h.reserved807, h.reserved808,
                               h.reserved825, h.reserved854, h.reserved883, h.reserved890);
  for (const ChannelRecord& c : image.ChannelsInUse()) {
    count += CountSet(c.reserved17, c.reserved27, c.reserved31, c.reserved39, c.reserved43, c.reserved47,
                      c.reserved49, c.reserved51, c.reserved70);
  }
  if (count != 0) parts.push_back(fmt::format("{} bytes of the header that no field has", count));
}

// ---- records of tails

using Lengths = std::map<std::uint32_t, std::vector<std::uint32_t>>;  // by tag

Lengths RecordsOf(const CRecordingFile& recording) {
  Lengths lengths;
  const std::unique_ptr<File> file = FileOf(recording);
  if (!file || !HasReadTail(recording)) return lengths;
  CTffFile tail(*file, recording.TailPosition());
  for (const auto& [position, record] : tail.Entries()) {
    const std::uint64_t left = recording.fileSize - std::min(recording.fileSize, position + sizeof record);
    lengths[record.tag].push_back(static_cast<std::uint32_t>(std::min<std::uint64_t>(record.length, left)));
  }
  return lengths;
}

std::string NameOf(std::uint32_t tag) {
  return fmt::format("tag {}, {}", tag, NameOfTag(tag));
}

}  // namespace

std::vector<std::string> UnreadParts(CRecordingFile& recording) {
  std::vector<std::string> parts;
  if (recording.GetFileClass(&recording.rawHeader) == kContinuous)
    AddWordsBesideSamples(recording, recording.GetContinuousSampleCount(), parts);
  AddBytesBehindData(recording, parts);
  AddIgnoredTail(recording, parts);
  AddReservedBytes(recording.rawHeader, parts);
  return parts;
}

std::vector<std::string> LostRecords(const CRecordingFile& before, const CRecordingFile& after) {
  std::vector<std::string> lost;
  Lengths now = RecordsOf(after);
  for (const auto& [tag, lengths] : RecordsOf(before)) {
    if (tag == tag::kMarker || tag == tag::kTailRevision) continue;  // told by number, and written anew
    const std::vector<std::uint32_t>& kept = now[tag];
    if (kept.size() < lengths.size())
      lost.push_back(fmt::format("{} records of the tail ({})", lengths.size() - kept.size(), NameOf(tag)));
    for (std::size_t i = 0; i < std::min(kept.size(), lengths.size()); ++i) {
      if (kept[i] >= lengths[i]) continue;
      lost.push_back(
          fmt::format("{} bytes at the end of a record of the tail ({})", lengths[i] - kept[i], NameOf(tag)));
    }
  }
  return lost;
}

}  // namespace wavelock::command

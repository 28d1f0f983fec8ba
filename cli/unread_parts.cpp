#include "cli/unread_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <tuple>

#include "cli/counted.h"
#include "cli/section_list.h"
#include "wavelock/setup/section_tags.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock::command {
namespace {

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
    if (words != 0)
      parts.push_back(fmt::format("bits behind the keypad in {} beside samples", Counted(words, "word")));
  } else if (layout == kWithLeadingWord) {
    const std::uint64_t words = CountWords(*file, start, samples, channels + 1, width, 0, 0xFFFFFFFF);
    if (words != 0) parts.push_back(Counted(words, "word") + " ahead of samples");
  }
}

// ---- bytes that belong to nothing

void AddBytesBehindData(CRecordingFile& recording, std::vector<std::string>& parts) {
  const auto data = recording.ExtentOfData();
  if (data && data->end < data->next)
    parts.push_back(Counted(data->next - data->end, "byte") + " behind the data");
}

void AddIgnoredTail(const CRecordingFile& recording, std::vector<std::string>& parts) {
  const std::uint64_t tail = recording.TailPosition();
  if (recording.headerRevision != kModifiedRevision || tail == 0 || tail >= recording.fileSize) return;
  parts.push_back("the tail of a modified recording, " + Counted(recording.fileSize - tail, "byte"));
}

// ---- bytes of the header that have no name

template <std::size_t N>
std::size_t CountSet(const StoredBytes<N>& bytes) {
  return N - static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), std::byte{0}));
}

template <class Record, class... Members>
std::size_t CountSet(const Record& record, const std::tuple<Members...>& reserved) {
  return std::apply([&record](auto... bytes) { return (CountSet(record.*bytes) + ...); }, reserved);
}

void AddReservedBytes(const HeaderImage& image, std::vector<std::string>& parts) {
  std::size_t count = CountSet(image.header, kReservedOfHeader);
  for (const ChannelRecord& record : image.ChannelsInUse()) count += CountSet(record, kReservedOfChannel);
  if (count != 0) parts.push_back(Counted(count, "byte") + " of the header that no field has");
}

// ---- records of tails

using Lengths = std::map<std::uint32_t, std::vector<std::uint32_t>>;  // by tag

Lengths RecordsOf(const CRecordingFile& recording) {
  Lengths lengths;
  const std::unique_ptr<File> file = FileOf(recording);
  if (!file || !recording.HasTail()) return lengths;
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
      lost.push_back(
          fmt::format("{} of the tail ({})", Counted(lengths.size() - kept.size(), "record"), NameOf(tag)));
    for (std::size_t i = 0; i < std::min(kept.size(), lengths.size()); ++i) {
      if (kept[i] >= lengths[i]) continue;
      lost.push_back(fmt::format("{} at the end of a record of the tail ({})",
                                 Counted(lengths[i] - kept[i], "byte"), NameOf(tag)));
    }
  }
  return lost;
}

}  // namespace wavelock::command

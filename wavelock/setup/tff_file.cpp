#include "wavelock/setup/tff_file.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <numeric>
#include <utility>

namespace wavelock {
namespace {

constexpr char kMagic[] = "QVR TFF";  // with its NUL
static_assert(sizeof kMagic == sizeof(TffHeader::magic));

constexpr std::uint32_t kIdentity[] = {0x8A0502CE, 0x805316F0, 0xA901F4F7, 0x8A110B20};
constexpr std::uint16_t kWideSamples = 1;

TffHeader NewHeader() {
  TffHeader header{};
  std::memcpy(header.magic.data(), kMagic, sizeof kMagic);
  std::memcpy(header.identityBlock.data(), kIdentity, sizeof kIdentity);
  return header;
}

// Reads the heads of records at rising positions, many of them with one call where payloads are short.
class HeadReader {
 public:
  explicit HeadReader(File& file) : file_(file) {}

  // False at the end of the file, also where less than a whole head is left.
  bool ReadAt(std::uint64_t position, TffRecord& record) {
    if (!Holds(position) && !Fill(position)) return false;
    std::memcpy(&record, window_.data() + (position - start_), sizeof record);
    return true;
  }

 private:
  bool Holds(std::uint64_t position) const {
    return position >= start_ && position - start_ <= size_ &&
           size_ - (position - start_) >= sizeof(TffRecord);
  }

  bool Fill(std::uint64_t position) {
    size_ = 0;
    if (!file_.SeekTo(position)) return false;
    start_ = position;
    size_ = file_.Read(window_).value_or(0);
    return Holds(position);
  }

  File& file_;
  std::uint64_t start_ = 0;
  std::size_t size_ = 0;
  std::array<std::byte, 16 * 1024> window_;
};

std::uint64_t PositionBehind(const CTffFile::Entry& entry) {
  return entry.position + sizeof(TffRecord) + entry.record.length;
}

}  // namespace

CTffFile::CTffFile(Host& host) : header(NewHeader()), files_(&host.files) {}

CTffFile::CTffFile(File& open, std::uint64_t start)
    : header(NewHeader()), startPosition(start), file_(&open) {}

bool CTffFile::Open(const std::string& path, OpenMode mode) {
  owned_ = files_ != nullptr ? files_->Open(path, mode) : nullptr;
  file_ = owned_.get();
  isIndexed_ = false;
  return file_ != nullptr;
}

void CTffFile::SetWideSamples(int on) {
  if (on != 0) header.flags = static_cast<std::uint16_t>(header.flags | kWideSamples);
}

bool CTffFile::HasWideSamples() const {
  return (header.flags & kWideSamples) != 0;
}

bool CTffFile::Append(std::span<const std::byte> bytes) {
  isIndexed_ = false;
  return file_ != nullptr && file_->Write(bytes);
}

int CTffFile::WriteHeader() {
  return Append(BytesOf(header)) ? static_cast<int>(sizeof header) : 0;
}

std::uint32_t CTffFile::ReadHeader() {
  if (file_ == nullptr) return kNoContainer;
  TffHeader read = NewHeader();
  const std::size_t got = file_->Read(BytesOf(read)).value_or(0);
  if (got < read.magic.size() || std::memcmp(read.magic.data(), kMagic, sizeof kMagic) != 0)
    return kNoContainer;
  header = read;
  return header.flags;
}

bool CTffFile::WriteSection(std::uint32_t tag, std::uint32_t length, const void* data,
                            std::uint16_t version) {
  if (tag == 0) return false;
  TffRecord record{};
  record.tag = tag;
  record.version = version;
  record.length = length;
  record.lengthAgain = length;
  if (!Append(BytesOf(record))) return false;
  return data == nullptr || Append({static_cast<const std::byte*>(data), length});
}

std::uint64_t CTffFile::ReadSection(std::uint32_t tag, std::uint64_t& length, void* buffer,
                                    std::uint32_t occurrence) {
  const std::uint64_t room = std::exchange(length, 0);
  if (buffer == nullptr) return 0;
  length = ReadPayload(FindSection(tag, occurrence), room, buffer);
  return length;
}

std::uint64_t CTffFile::ReadNextSection(std::uint32_t tag, std::uint64_t& length, void* buffer) {
  const std::uint64_t room = std::exchange(length, 0);
  if (buffer == nullptr || tag == 0 || file_ == nullptr) return 0;
  length = ReadPayload(MoveTo(NextOf(tag)), room, buffer);
  return length;
}

std::uint64_t CTffFile::ReadPayload(std::uint64_t stored, std::uint64_t room, void* buffer) {
  const auto wanted = static_cast<std::size_t>(std::min(stored, room));
  return wanted == 0 ? 0 : file_->Read({static_cast<std::byte*>(buffer), wanted}).value_or(0);
}

std::uint64_t CTffFile::FindSection(std::uint32_t tag, std::uint32_t occurrence) {
  if (tag == 0 || occurrence == 0 || file_ == nullptr) return 0;
  return MoveTo(FindIndexed(tag, 0, occurrence));
}

// The stored length of a record, whose payload the file is then at.
std::uint64_t CTffFile::MoveTo(const std::optional<Entry>& entry) {
  if (!entry) return 0;
  lastRecord = entry->record;
  return file_->SeekTo(entry->position + sizeof(TffRecord)) ? std::uint64_t{lastRecord.length} : 0;
}

std::optional<CTffFile::Entry> CTffFile::NextOf(std::uint32_t tag) {
  const std::uint64_t position = Position();
  BuildIndex();
  return IsIndexed(position) ? FindIndexed(tag, position, 1) : WalkTo(tag, position);
}

bool CTffFile::IsIndexed(std::uint64_t position) const {
  const auto at = std::lower_bound(entries_.begin(), entries_.end(), position,
                                   [](const Entry& entry, std::uint64_t p) { return entry.position < p; });
  return at != entries_.end() && at->position == position;
}

std::optional<CTffFile::Entry> CTffFile::FindIndexed(std::uint32_t tag, std::uint64_t fromPosition,
                                                     std::uint32_t occurrence) {
  BuildIndex();
  const auto comesBefore = [&](std::uint32_t index, std::uint32_t wanted) {
    const Entry& entry = entries_[index];
    return entry.record.tag != wanted ? entry.record.tag < wanted : entry.position < fromPosition;
  };
  const auto first = std::lower_bound(byTag_.begin(), byTag_.end(), tag, comesBefore);
  if (static_cast<std::uint64_t>(byTag_.end() - first) < occurrence) return std::nullopt;
  const Entry& found = entries_[first[occurrence - 1]];
  return found.record.tag == tag ? std::optional(found) : std::nullopt;
}

// From inside a payload that was longer than its reader's room: what follows there is taken for heads of
// records, until one of them ends where a record begins.
std::optional<CTffFile::Entry> CTffFile::WalkTo(std::uint32_t tag, std::uint64_t position) {
  HeadReader heads(*file_);
  for (Entry entry{position, {}}; heads.ReadAt(entry.position, entry.record);
       entry.position = PositionBehind(entry)) {
    if (entry.record.tag == tag) return entry;
    if (IsIndexed(PositionBehind(entry))) return FindIndexed(tag, PositionBehind(entry), 1);
  }
  return std::nullopt;
}

void CTffFile::BuildIndex() {
  if (isIndexed_) return;
  isIndexed_ = true;
  entries_.clear();
  byTag_.clear();
  if (!file_->SeekTo(startPosition) || ReadHeader() == kNoContainer) return;
  try {
    HeadReader heads(*file_);
    for (Entry entry{Position(), {}}; heads.ReadAt(entry.position, entry.record);
         entry.position = PositionBehind(entry)) {
      entries_.push_back(entry);
    }
    byTag_.resize(entries_.size());
  } catch (const std::bad_alloc&) {
    entries_.clear();
    return;
  }
  std::iota(byTag_.begin(), byTag_.end(), 0u);
  std::stable_sort(byTag_.begin(), byTag_.end(), [this](std::uint32_t a, std::uint32_t b) {
    return entries_[a].record.tag < entries_[b].record.tag;
  });
}

const std::vector<CTffFile::Entry>& CTffFile::Entries() {
  if (file_ != nullptr) BuildIndex();
  return entries_;
}

std::uint64_t CTffFile::SeekTo(std::int64_t offset, SeekOrigin origin) {
  return file_ != nullptr ? file_->Seek(offset, origin).value_or(0) : 0;
}

std::uint64_t CTffFile::Position() {
  return file_ != nullptr ? file_->Position().value_or(0) : 0;
}

std::uint64_t CTffFile::Length() {
  return file_ != nullptr ? file_->Size().value_or(0) : 0;
}

}  // namespace wavelock

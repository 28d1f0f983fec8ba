// Lays a recording out: the block at the start, samples, event table, tail. The order of the Composer's
// operations is the order of the file.
#include "tests/support/recording_builder.h"

#include <algorithm>
#include <fstream>
#include <ios>
#include <span>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace wavelock {
namespace {

using Bytes = RecordingBuilder::Bytes;

constexpr std::size_t kHeaderSize = 900;
constexpr std::size_t kChannelSize = 75;
constexpr std::size_t kChannelRecordsBelowRevision4 = 32;  // however many channels there are

constexpr std::size_t kOldestChannels = 699;
constexpr std::size_t kOldestChannelSize = 26;
constexpr std::size_t kOldestChannelRecords = 64;
constexpr std::size_t kOldestSize = kOldestChannels + kOldestChannelSize * kOldestChannelRecords;
constexpr std::size_t kOldestBehindTexts = 227;  // where forms with a short block go on

constexpr std::size_t kOldestShortBlock = 30;
constexpr std::size_t kOldestNoteBlock = 66;

constexpr std::size_t kEventTableHead = 1 + 4 + 4;
constexpr std::uint64_t kSampleIndexesFrom = 1u << 30;  // in larger files event points are no byte offsets

std::uint8_t U8(int value) {
  return static_cast<std::uint8_t>(value);
}

std::uint32_t U32(std::uint64_t value) {
  return static_cast<std::uint32_t>(value);
}

// Rates that 16 bits do not hold are stored in hundreds above 60000.
std::uint16_t RateCode(int rate) {
  return static_cast<std::uint16_t>(rate <= 60000 ? rate : rate / 100 + 60000);
}

// Cut to `size` characters or filled up with NULs.
Bytes TextOf(std::size_t size, std::string_view text) {
  Bytes bytes = ByteWriter().Text(text);
  bytes.resize(size);
  return bytes;
}

void PutInto(Bytes& block, std::size_t offset, const Bytes& bytes) {
  if (offset > block.size() || bytes.size() > block.size() - offset)
    throw std::out_of_range("field outside the header");
  std::copy(bytes.begin(), bytes.end(), block.begin() + static_cast<std::ptrdiff_t>(offset));
}

}  // namespace

class RecordingBuilder::Composer {
 public:
  using Sink = std::function<void(std::uint64_t position, std::span<const std::byte> bytes)>;

  explicit Composer(const RecordingBuilder& said)
      : b_(said),
        revision_(IsOldest() ? 0 : b_.revision_),
        layout_(IsOldest() ? 0 : b_.layout_.value_or(revision_ < 7 ? 0 : 1)),
        epochs_(Epochs()),
        tail_(Tail()),
        eventTablePosition_(b_.eventTableAt_.value_or(DataEnd())),
        eventTableKind_(b_.eventTableKind_.value_or(eventTablePosition_ < kSampleIndexesFrom ? 2 : 3)) {}

  void Write(const Sink& sink) const {
    sink(0, Header());
    sink(DataStart(), b_.data_);
    sink(DataStart(), epochs_);
    for (const Run& run : b_.runs_) {
      if (layout_ == 3) {
        WriteBlocks(sink, run);
      } else {
        WriteRecords(sink, run);
      }
    }
    sink(eventTablePosition_, EventTable());
    sink(TailPosition(), tail_);
    sink(TailPosition() + tail_.size(), b_.appended_);
  }

  std::uint64_t DataStart() const {
    if (IsOldest()) return WithBlocks(Bytes(kOldestSize)).size();
    return kHeaderSize + kChannelSize * ChannelRecords();
  }

  std::uint64_t EventTablePosition() const { return eventTablePosition_; }

  std::uint64_t TailPosition() const {
    return b_.tailAt_.value_or(eventTablePosition_ + (HasEventTable() ? EventTableSize() : 0));
  }

 private:
  bool IsOldest() const { return b_.oldestFirstByte_.has_value(); }
  std::size_t ChannelCount() const { return b_.labels_.size(); }
  std::size_t ChannelRecords() const {
    if (IsOldest()) return kOldestChannelRecords;
    return revision_ < 4 ? kChannelRecordsBelowRevision4 : ChannelCount();
  }

  // ---- the block at the start

  // A field, where it lies in a versioned header and in the oldest one; 0 where that one has none.
  struct Field {
    std::size_t versioned;
    std::size_t oldest;
    Bytes bytes;
  };

  std::vector<Field> SharedFields() const {
    const auto& [start, end] = Times();
    return {{20, 0, ByteWriter().U8(U8(b_.oldestFirstByte_.value_or(b_.fileForm_)))},
            {225, 205, TextOf(10, b_.date_)},
            {362, 231, ByteWriter().Word(std::max<std::size_t>(b_.epochs_.size(), 1), 2)},
            {368, 233, ByteWriter().Word(PointCount(), 2)},
            {370, 235, ByteWriter().Word(ChannelCount(), 2)},
            {374, 239, ByteWriter().U8(U8(b_.frequencyDomain_))},
            {376, 240, ByteWriter().U16(RateCode(b_.rate_))},
            {378, 242, ByteWriter().F64(b_.calibration_)},
            {505, 324, ByteWriter().F32(start).F32(end).F32(start).F32(end)},  // the axis and the view of it
            {538, 357, ByteWriter().U8(U8(b_.acquisitionMode_))}};
  }

  Bytes Header() const {
    Bytes block(IsOldest() ? kOldestSize : DataStart());
    if (!IsOldest()) PutVersionedFields(block);
    for (const auto& [versioned, oldest, bytes] : SharedFields())
      PutInto(block, IsOldest() ? oldest : versioned, bytes);
    for (std::size_t i = 0; i < std::min(ChannelCount(), ChannelRecords()); ++i) {
      if (IsOldest()) {
        PutInto(block, kOldestChannels + kOldestChannelSize * i, TextOf(9, b_.labels_[i]));
      } else {
        PutInto(block, kHeaderSize + kChannelSize * i, ChannelRecord(i));
      }
    }
    PutPatches(block);
    return IsOldest() ? WithBlocks(block) : block;
  }

  void PutVersionedFields(Bytes& block) const {
    PutInto(block, 0, ByteWriter().Text("Version 3.0"));
    if (b_.tail_) PutInto(block, 12, ByteWriter().U64(TailPosition()));
    PutInto(block, 143, ByteWriter().Text("UU"));  // sex and hand
    PutInto(block, 295, ByteWriter().F32(1));      // scale of the summary
    PutInto(block, 353, ByteWriter().Word(b_.events_.size(), 4));
    PutInto(block, 372, ByteWriter().U16(1));
    PutInto(block, 390, ByteWriter().F32(10));
    PutInto(block, 683, ByteWriter().U16(150));  // base of the gain table
    PutInto(block, 698, ByteWriter().F32(2.5f));
    PutInto(block, 800, ByteWriter().F32(BinWidth()).U8(U8(revision_)).U16(1));
    PutInto(block, 816, ByteWriter().F32(40).F32(20));  // box on the display
    PutInto(block, 884, ByteWriter().U8(U8(b_.timeFrequencyFlag_)).U8(U8(layout_)));
    if (HasEventTable()) PutInto(block, 886, ByteWriter().Word(eventTablePosition_, 4));
    PutInto(block, 894, ByteWriter().Word(layout_ == 3 ? BlockBytes() : 1, 4));
  }

  Bytes ChannelRecord(std::size_t channel) const {
    ByteWriter record;
    record.Bytes(TextOf(10, b_.labels_[channel].substr(0, 9))).U8(255);  // no link
    record.Zeros(2).U8(1).Zeros(1).U16(1).Zeros(42);                     // enabled, one sweep
    record.F32(b_.calibration_).Zeros(1).U8(5).U8(3);                    // from 0.3 to 70 Hz
    return record.Zeros(3).U8(U8(static_cast<int>(channel))).Zeros(1).F32(b_.sensitivity_);
  }

  void PutPatches(Bytes& block) const {
    const std::size_t channels = IsOldest() ? kOldestChannels : kHeaderSize;
    const std::size_t channelSize = IsOldest() ? kOldestChannelSize : kChannelSize;
    for (const Patch& patch : b_.patches_) {
      const std::size_t record =
          patch.channel ? channels + channelSize * static_cast<std::size_t>(*patch.channel) : 0;
      const std::size_t room = patch.channel ? channelSize : channels;
      if (patch.offset + patch.bytes.size() > room) throw std::out_of_range("field outside its record");
      PutInto(block, record + patch.offset, patch.bytes);
    }
  }

  bool HasShortBlock() const { return b_.oldestFirstByte_ == 2 || b_.oldestFirstByte_ == 5; }
  bool HasNoteBlock() const { return b_.oldestFirstByte_ == 3 || b_.oldestFirstByte_ == 5; }

  Bytes WithBlocks(const Bytes& block) const {
    const std::span<const std::byte> all(block);
    ByteWriter header;
    if (HasShortBlock()) {
      header.Bytes(all.first(1)).Zeros(kOldestShortBlock).Bytes(all.subspan(kOldestBehindTexts));
    } else {
      header.Bytes(all);
    }
    return header.Zeros(HasNoteBlock() ? kOldestNoteBlock : 0);
  }

  std::size_t PointCount() const {
    if (b_.points_) return static_cast<std::size_t>(*b_.points_);
    if (b_.epochs_.empty() || ChannelCount() == 0) return 640;
    const Epoch& epoch = b_.epochs_.front();
    return b_.frequencyDomain_ != 0 ? epoch.spectrum.size() / 2 / ChannelCount()
                                    : epoch.samples.size() / ChannelCount();
  }

  float Rate() const { return static_cast<float>(b_.rate_); }
  float Points() const { return static_cast<float>(PointCount()); }

  // Of the set in seconds, or its span of frequencies.
  std::array<float, 2> Times() const {
    if (b_.times_) return *b_.times_;
    return {0, b_.frequencyDomain_ != 0 ? Rate() / 2 : Points() / Rate()};
  }

  float BinWidth() const { return Rate() / (b_.frequencyDomain_ != 0 ? 2 * Points() : Points()); }

  // ---- epochs

  // Epochs one behind the other, each with a head that grew with revision 3.
  Bytes Epochs() const {
    ByteWriter out;
    for (const Epoch& epoch : b_.epochs_) {
      out.U8(epoch.accept).U16(epoch.trialType);
      if (revision_ > 2) out.U16(epoch.correct).F32(epoch.reactionTime).U16(epoch.response).U16(0);
      if (b_.frequencyDomain_ != 0) {
        for (const float value : epoch.spectrum) out.F32(value);
      } else {
        for (const std::int32_t value : epoch.samples) AppendWord(out, value);
      }
    }
    return out;
  }

  // ---- continuous samples

  void AppendWord(ByteWriter& out, std::int32_t value) const {
    out.Word(static_cast<std::uint32_t>(value), b_.width_);
  }

  std::uint64_t EndOf(const Run& run) const {
    const std::uint64_t count =
        run.function || ChannelCount() == 0 ? run.count : run.values.size() / ChannelCount();
    return run.first + count;
  }

  std::int32_t ValueAt(const Run& run, std::uint64_t sample, std::size_t channel) const {
    if (run.function) return run.function(sample, static_cast<int>(channel));
    return run.values[(sample - run.first) * ChannelCount() + channel];
  }

  std::uint64_t RecordBytes() const {
    const std::size_t extra = layout_ == 0 ? 2 : layout_ == 2 ? 1 : 0;
    return (ChannelCount() + extra) * b_.width_;
  }

  std::uint64_t BlockBytes() const { return b_.blockSamples_ * b_.width_; }  // of one channel

  // Of all samples before `end`; blocks are always whole.
  std::uint64_t BytesUpTo(std::uint64_t end) const {
    if (layout_ != 3) return end * RecordBytes();
    return (end + b_.blockSamples_ - 1) / b_.blockSamples_ * BlockBytes() * ChannelCount();
  }

  std::uint64_t DataEnd() const {
    std::uint64_t size = std::max(b_.data_.size(), epochs_.size());
    for (const Run& run : b_.runs_) size = std::max(size, BytesUpTo(EndOf(run)));
    return DataStart() + size;
  }

  // A record a sample, handed on in pieces of bounded size.
  void WriteRecords(const Sink& sink, const Run& run) const {
    constexpr std::uint64_t kRecordsInOnePiece = 4096;
    const auto triggers = AllTriggers();
    const std::uint64_t end = EndOf(run);
    for (std::uint64_t first = run.first; first < end; first += kRecordsInOnePiece) {
      ByteWriter piece;
      for (std::uint64_t sample = first; sample < std::min(end, first + kRecordsInOnePiece); ++sample) {
        AppendRecord(piece, run, sample, triggers);
      }
      sink(DataStart() + first * RecordBytes(), piece.Written());
    }
  }

  void AppendRecord(ByteWriter& out, const Run& run, std::uint64_t sample,
                    const std::map<std::uint64_t, Triggers>& triggers) const {
    if (layout_ == 2) AppendWord(out, b_.leadingWord_);
    for (std::size_t channel = 0; channel < ChannelCount(); ++channel) {
      AppendWord(out, ValueAt(run, sample, channel));
    }
    if (layout_ != 0) return;
    const auto found = triggers.find(sample);
    const Triggers words = found != triggers.end() ? found->second : Triggers();
    AppendWord(out, words.stimulus);
    AppendWord(out, words.response);
  }

  std::map<std::uint64_t, Triggers> AllTriggers() const {
    std::map<std::uint64_t, Triggers> triggers;
    for (const Event& event : b_.events_) {
      Triggers& words = triggers[event.sample];
      if (event.stimType != 0) words.stimulus = event.stimType;
      if (event.keypad != 0) words.response = event.keypad;
    }
    for (const auto& [sample, words] : b_.triggerWords_) triggers[sample] = words;
    return triggers;
  }

  // A block holds all its samples of the first channel, then all of the second.
  void WriteBlocks(const Sink& sink, const Run& run) const {
    const std::uint64_t end = EndOf(run);
    for (std::uint64_t first = run.first; first < end; first += b_.blockSamples_) {
      ByteWriter block;
      for (std::size_t channel = 0; channel < ChannelCount(); ++channel) {
        for (std::uint64_t sample = first; sample < first + b_.blockSamples_; ++sample) {
          AppendWord(block, sample < end ? ValueAt(run, sample, channel) : 0);
        }
      }
      sink(DataStart() + BytesUpTo(first), block.Written());
    }
  }

  // ---- event table

  bool HasEventTable() const {
    return !IsOldest() && layout_ != 0 && layout_ != 2 && (b_.acquisitionMode_ == 3 || !b_.events_.empty());
  }

  std::uint64_t EventSize() const { return eventTableKind_ == 1 ? 8 : 19; }
  std::uint64_t EventTableSize() const { return kEventTableHead + EventSize() * b_.events_.size(); }

  Bytes EventTable() const {
    ByteWriter out;
    if (!HasEventTable()) return out;
    const auto size = static_cast<std::int32_t>(EventSize() * b_.events_.size());
    out.U8(U8(eventTableKind_)).I32(b_.eventTableByteSize_.value_or(size)).I32(0);
    for (const Event& event : b_.events_) AppendEvent(out, event);
    return out;
  }

  void AppendEvent(ByteWriter& out, const Event& event) const {
    out.U16(event.stimType).U8(event.keyboard).U8(U8((event.segmentClass << 4) | (event.keypad & 0xF)));
    out.U32(event.storedPoint.value_or(PointOf(event)));
    if (eventTableKind_ != 1) out.Bytes(std::as_bytes(std::span(event.extra)));
  }

  // Byte offsets count whole samples in every layout, and wrap at 32 bits.
  std::uint32_t PointOf(const Event& event) const {
    const bool isByteOffset = eventTableKind_ == 1 || eventTableKind_ == 2;
    return isByteOffset ? U32(DataStart() + event.sample * ChannelCount() * b_.width_) : event.sample;
  }

  // ---- tail

  Bytes Tail() const {
    if (!b_.tail_) return {};
    StoredContainer container;
    container.flags = b_.width_ == 4 ? 1 : 0;
    container.records = *b_.tail_;
    return container.Bytes();
  }

  const RecordingBuilder& b_;
  const int revision_;
  const int layout_;
  const Bytes epochs_;
  const Bytes tail_;
  const std::uint64_t eventTablePosition_;
  const int eventTableKind_;
};

RecordingBuilder& RecordingBuilder::Revision(int revision) {
  oldestFirstByte_.reset();
  return Set(revision_, revision);
}

RecordingBuilder& RecordingBuilder::Kind(int fileForm, int acquisitionMode, int timeFrequencyFlag) {
  return Set(fileForm_, fileForm).AcquisitionMode(acquisitionMode).Set(timeFrequencyFlag_, timeFrequencyFlag);
}

RecordingBuilder& RecordingBuilder::Channels(int count) {
  labels_.clear();
  for (int channel = 1; channel <= count; ++channel) labels_.push_back(std::to_string(channel));
  return *this;
}

RecordingBuilder& RecordingBuilder::Samples(std::vector<std::int32_t> values) {
  runs_.clear();
  return SamplesAt(0, std::move(values));
}

RecordingBuilder& RecordingBuilder::Samples(std::uint64_t count, SampleFunction value) {
  runs_ = {{.first = 0, .values = {}, .count = count, .function = std::move(value)}};
  return *this;
}

RecordingBuilder& RecordingBuilder::SamplesAt(std::uint64_t first, std::vector<std::int32_t> values) {
  runs_.push_back({.first = first, .values = std::move(values), .count = 0, .function = nullptr});
  return *this;
}

RecordingBuilder& RecordingBuilder::TriggerWords(std::uint64_t sample, std::uint16_t stimulus,
                                                 std::uint16_t response) {
  return Set(triggerWords_[sample], Triggers{stimulus, response});
}

std::uint64_t RecordingBuilder::DataStart() const {
  return Composer(*this).DataStart();
}
std::uint64_t RecordingBuilder::EventTablePosition() const {
  return Composer(*this).EventTablePosition();
}
std::uint64_t RecordingBuilder::TailPosition() const {
  return Composer(*this).TailPosition();
}

Bytes RecordingBuilder::Build() const {
  Bytes file;
  Composer(*this).Write([&file](std::uint64_t position, std::span<const std::byte> bytes) {
    if (bytes.empty()) return;
    file.resize(std::max<std::uint64_t>(file.size(), position + bytes.size()));
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(position));
  });
  file.resize(fileSize_.value_or(file.size()));
  return file;
}

bool RecordingBuilder::WriteTo(const std::filesystem::path& path) const {
  std::ofstream file(path, std::ios::binary);
  Composer(*this).Write([&file](std::uint64_t position, std::span<const std::byte> bytes) {
    if (bytes.empty()) return;
    file.seekp(static_cast<std::streamoff>(position));
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  });
  file.close();
  std::error_code failed;
  if (file && fileSize_) std::filesystem::resize_file(path, *fileSize_, failed);
  return file && !failed;
}

}  // namespace wavelock

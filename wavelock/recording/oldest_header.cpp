#include "wavelock/recording/oldest_header.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "wavelock/recording/header_revisions.h"

namespace wavelock {
namespace {

// ---- the layout

// Where the field at an old offset goes. Old offsets that no row names are read by nobody.
struct OldField {
  std::size_t oldOffset;
  std::size_t size;  // of the old field
  std::size_t offset;
  std::size_t width;  // of the new field, below `size` for texts that are cut
};

#define WAVELOCK_OLD_FIELD(oldOffset, size, field)                                    \
  OldField {                                                                          \
    oldOffset, size, offsetof(RecordingHeader, field), sizeof(RecordingHeader::field) \
  }

constexpr OldField kTexts[] = {
    WAVELOCK_OLD_FIELD(1, 20, subjectTextA),    WAVELOCK_OLD_FIELD(21, 20, operatorName),
    WAVELOCK_OLD_FIELD(41, 20, researcherName), WAVELOCK_OLD_FIELD(61, 20, subjectTextB),
    WAVELOCK_OLD_FIELD(81, 20, instituteName),  WAVELOCK_OLD_FIELD(101, 20, subjectTextC),
    WAVELOCK_OLD_FIELD(125, 20, subjectTextD),  WAVELOCK_OLD_FIELD(145, 20, subjectTextE),
    WAVELOCK_OLD_FIELD(165, 20, subjectTextF),  WAVELOCK_OLD_FIELD(185, 20, subjectTextG),
    WAVELOCK_OLD_FIELD(215, 12, recordTime),    WAVELOCK_OLD_FIELD(379, 80, dashTextC),
    WAVELOCK_OLD_FIELD(459, 160, dashTextE),
};

constexpr OldField kNumbers[] = {
    WAVELOCK_OLD_FIELD(0, 1, fileForm),          WAVELOCK_OLD_FIELD(121, 2, subjectAge),
    WAVELOCK_OLD_FIELD(123, 1, subjectSex),      WAVELOCK_OLD_FIELD(124, 1, subjectHand),
    WAVELOCK_OLD_FIELD(205, 10, recordDate),     WAVELOCK_OLD_FIELD(227, 2, oldBytes358),
    WAVELOCK_OLD_FIELD(229, 2, sweepCount),      WAVELOCK_OLD_FIELD(231, 2, averagedSweeps),
    WAVELOCK_OLD_FIELD(233, 2, pointCount),      WAVELOCK_OLD_FIELD(235, 2, channelCount),
    WAVELOCK_OLD_FIELD(237, 2, countC),          WAVELOCK_OLD_FIELD(239, 1, frequencyDomain),
    WAVELOCK_OLD_FIELD(240, 2, rateCode),        WAVELOCK_OLD_FIELD(242, 8, defaultCalibration),
    WAVELOCK_OLD_FIELD(250, 1, flagA),           WAVELOCK_OLD_FIELD(251, 4, valueA),
    WAVELOCK_OLD_FIELD(255, 2, indexA),          WAVELOCK_OLD_FIELD(257, 4, oldBlock394),
    WAVELOCK_OLD_FIELD(261, 2, oldField406),     WAVELOCK_OLD_FIELD(263, 1, baselineFlag),
    WAVELOCK_OLD_FIELD(264, 4, windowAStart),    WAVELOCK_OLD_FIELD(268, 4, windowAEnd),
    WAVELOCK_OLD_FIELD(272, 1, rejectFlag),      WAVELOCK_OLD_FIELD(277, 4, windowBStart),
    WAVELOCK_OLD_FIELD(281, 4, windowBEnd),      WAVELOCK_OLD_FIELD(285, 4, rejectMin),
    WAVELOCK_OLD_FIELD(289, 4, rejectMax),       WAVELOCK_OLD_FIELD(293, 1, triggerMode),
    WAVELOCK_OLD_FIELD(294, 4, triggerValue),    WAVELOCK_OLD_FIELD(298, 1, triggerChannel),
    WAVELOCK_OLD_FIELD(299, 4, triggerX),        WAVELOCK_OLD_FIELD(303, 8, oldBlock484),
    WAVELOCK_OLD_FIELD(315, 1, autoScale),       WAVELOCK_OLD_FIELD(316, 4, displayMin),
    WAVELOCK_OLD_FIELD(320, 4, displayMax),      WAVELOCK_OLD_FIELD(324, 4, timeStart),
    WAVELOCK_OLD_FIELD(328, 4, timeEnd),         WAVELOCK_OLD_FIELD(332, 4, viewStart),
    WAVELOCK_OLD_FIELD(336, 4, viewEnd),         WAVELOCK_OLD_FIELD(340, 4, reserved521),
    WAVELOCK_OLD_FIELD(344, 4, fixValue525),     WAVELOCK_OLD_FIELD(348, 9, oldBlock529),
    WAVELOCK_OLD_FIELD(357, 1, acquisitionMode), WAVELOCK_OLD_FIELD(358, 1, oldByte539),
    WAVELOCK_OLD_FIELD(619, 1, oldByte387),      WAVELOCK_OLD_FIELD(620, 1, hasVariance),
    WAVELOCK_OLD_FIELD(621, 2, acceptedSweeps),  WAVELOCK_OLD_FIELD(623, 2, rejectedSweeps),
};

constexpr bool NumbersKeepTheirSize() {
  return std::all_of(std::begin(kNumbers), std::end(kNumbers),
                     [](const OldField& f) { return f.size == f.width; });
}
static_assert(NumbersKeepTheirSize());

// A text of up to 20 bytes that lands in 10 plain bytes, so it is cut without a NUL.
constexpr std::size_t kRawBlockOffset = 359;
constexpr std::size_t kRawBlockSize = 20;

constexpr std::size_t kSweepsOffset = 231;
constexpr std::size_t kChannelCountOffset = 235;
constexpr std::size_t kFlaggedChannelOffset = 273;

// Files with a short block hold the first byte and then the block from here on.
constexpr std::size_t kBehindSubject = 227;

struct OldChannel {
  StoredText<10> label;
  Stored<float> boxX;
  Stored<float> boxY;
  StoredBytes<4> reserved27;
  StoredBytes<4> reserved39;
};
static_assert(sizeof(OldChannel) == 26);
constexpr std::size_t kChannelsOffset = 699;
static_assert(kChannelsOffset + kMaxOldestChannels * sizeof(OldChannel) == sizeof(OldestHeader::block));

// More than this is no recording at all, of whatever form.
constexpr int kImpossibleChannelCount = 515;

// ---- access

std::byte* FieldIn(HeaderImage& image, const OldField& field) {
  return reinterpret_cast<std::byte*>(&image.header) + field.offset;
}

std::string_view TextAt(const OldestHeader& old, std::size_t offset, std::size_t size) {
  const auto* text = reinterpret_cast<const char*>(old.block.data()) + offset;
  return {text, static_cast<std::size_t>(std::find(text, text + size, '\0') - text)};
}

template <class T>
T ValueAt(const OldestHeader& old, std::size_t offset) {
  T value;
  std::memcpy(&value, old.block.data() + offset, sizeof value);
  return value;
}

bool IsInFile(const OldestHeader& old, const OldField& field) {
  return !old.shortBlock || field.oldOffset == 0 || field.oldOffset >= kBehindSubject;
}

// ---- steps of the conversion

void CopyText(std::string_view text, std::byte* field, std::size_t width) {
  if (text.size() > width) text = text.substr(0, width - 1);
  std::memset(field, 0, width);
  std::memcpy(field, text.data(), text.size());
}

void CopyFields(const OldestHeader& old, HeaderImage& image) {
  for (const OldField& field : kNumbers) {
    if (IsInFile(old, field))
      std::memcpy(FieldIn(image, field), old.block.data() + field.oldOffset, field.size);
  }
  for (const OldField& field : kTexts) {
    if (IsInFile(old, field))
      CopyText(TextAt(old, field.oldOffset, field.size), FieldIn(image, field), field.width);
  }
  auto& raw = image.header.rawBlock540;
  const std::string_view text = TextAt(old, kRawBlockOffset, kRawBlockSize).substr(0, raw.size());
  std::memcpy(raw.data(), text.data(), text.size());
}

void TakeShortBlock(const OldestShortBlock& block, RecordingHeader& header) {
  header.subjectTextG = block.subjectTextG;
  header.summaryA = block.summaryA;
  header.reserved251 = block.reserved251;
  header.summaryB = block.summaryB;
}

void TakeNoteBlock(const OldestNoteBlock& block, RecordingHeader& header) {
  CopyText(block.text.View(), reinterpret_cast<std::byte*>(header.dashTextA.Bytes().data()),
           sizeof header.dashTextA);
  header.reserved357 = block.reserved357;
  header.summaryB = 0;
}

constexpr std::uint16_t kFixField862 = 0x71C;

void TakeSweeps(const OldestHeader& old, HeaderImage& image) {
  constexpr std::size_t kChannelsWithSweeps = 32;
  const auto sweeps = ValueAt<std::uint16_t>(old, kSweepsOffset);
  image.header.summaryB = static_cast<std::int16_t>(sweeps);
  image.header.fixField862 = kFixField862;
  for (ChannelRecord& record : std::span(image.channels).first(kChannelsWithSweeps)) {
    record.sweeps = sweeps;
    record.sensitivity = 1.0f;
  }
}

void SetWhatTheLayoutLacks(RecordingHeader& header) {
  header.versionText.Assign("Version 2.0");
  header.oldValues398 = {};
  for (auto& value : header.oldValues398) value = 10.0f;
  for (auto& value : header.oldField410) value = 31;
  header.valueB = 20;
  for (auto& value : header.oldField428) value = 20;
  header.dashTextF.Assign("------");
  header.fixField862 = kFixField862;
}

void ConvertChannels(const OldestHeader& old, HeaderImage& image) {
  const auto flagged = ValueAt<std::uint8_t>(old, kFlaggedChannelOffset);
  for (std::size_t i = 0; i < kMaxOldestChannels; ++i) {
    OldChannel channel;
    std::memcpy(&channel, old.block.data() + kChannelsOffset + i * sizeof channel, sizeof channel);
    ChannelRecord& record = image.channels[i];
    CopyText(channel.label.View(), reinterpret_cast<std::byte*>(record.label.Bytes().data()),
             sizeof record.label);
    record.channelLink = -1;
    record.channelFlagA = i == flagged ? 1 : 0;
    record.boxX = channel.boxX;
    record.boxY = channel.boxY;
    record.reserved27 = channel.reserved27;
    record.reserved39 = channel.reserved39;
  }
  for (ChannelRecord& record : image.channels) record.sensitivity = 1.0f;
}

}  // namespace

int OldestHeader::ChannelCount() const {
  return ValueAt<std::int16_t>(*this, kChannelCountOffset);
}

std::optional<OldestHeader> ReadOldestHeader(File& file, std::uint8_t firstByte) {
  const bool isShort = firstByte == 2 || firstByte == 5;
  const bool hasNote = firstByte == 3 || firstByte == 5;
  OldestHeader old;
  old.block[0] = std::byte{firstByte};
  if (isShort && !file.ReadExactly(BytesOf(old.shortBlock.emplace()))) return std::nullopt;
  if (!file.ReadExactly(std::span(old.block).subspan(isShort ? kBehindSubject : 1))) return std::nullopt;
  if (hasNote && !file.ReadExactly(BytesOf(old.noteBlock.emplace()))) return std::nullopt;
  return old;
}

bool ConvertOldestHeader(const OldestHeader& old, HeaderImage& image) {
  RecordingHeader& header = image.header;
  if (old.shortBlock) TakeShortBlock(*old.shortBlock, header);
  if (old.noteBlock) TakeNoteBlock(*old.noteBlock, header);
  if (!old.shortBlock && !old.noteBlock) TakeSweeps(old, image);
  if (old.ChannelCount() > kImpossibleChannelCount) return false;
  SetWhatTheLayoutLacks(header);
  CopyFields(old, image);
  FillBinWidth(header);
  ConvertChannels(old, image);
  FillDisplayDefaults(header);
  return true;
}

}  // namespace wavelock

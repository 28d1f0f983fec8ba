// The oldest layout of a header: another order of fields, and channel records of 26 bytes. A file has it when
// its first byte is not "V"; that byte is then the file form and tells which blocks follow.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "wavelock/numerics/stored.h"
#include "wavelock/platform/file_service.h"
#include "wavelock/recording/recording_header.h"

namespace wavelock {

// Channels of a file in the oldest layout.
inline constexpr int kMaxOldestChannels = 64;

// Stands in for the subject and the date in files that lack them.
struct OldestShortBlock {
  StoredText<20> subjectTextG;
  Stored<float> summaryA;
  StoredBytes<4> reserved251;
  Stored<std::int16_t> summaryB;
};
static_assert(sizeof(OldestShortBlock) == 30);

struct OldestNoteBlock {
  StoredText<65> text;
  StoredBytes<1> reserved357;
};
static_assert(sizeof(OldestNoteBlock) == 66);

struct OldestHeader {
  std::array<std::byte, 2363> block{};  // byte 0 is the first of the file
  std::optional<OldestShortBlock> shortBlock;
  std::optional<OldestNoteBlock> noteBlock;

  int ChannelCount() const;
};

// Reads the rest of the header behind its first byte, where `file` stands. Nothing when the file is too
// short; the position is at the first sample otherwise.
std::optional<OldestHeader> ReadOldestHeader(File& file, std::uint8_t firstByte);

// Fills an image that is all zero but for its first byte. False when the header claims more channels than any
// recording has; only what stands beside the main block is then in the image.
bool ConvertOldestHeader(const OldestHeader& old, HeaderImage& image);

}  // namespace wavelock

// Continuous samples: where they lie, how many there are, and how they reach the caller's buffer.
#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <optional>

#include "wavelock/numerics/positions.h"
#include "wavelock/numerics/streaming.h"
#include "wavelock/recording/deinterleave.h"
#include "wavelock/recording/overlay_pass.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/recording/sample_conversion.h"

namespace wavelock {
namespace {

// Bytes that are read and rearranged at a time: enough to make a read worth its call, little enough to stay
// in the cache.
constexpr std::size_t kChunkBytes = 256 * 1024;

// Blocks of layout 3 above this size are never read whole.
constexpr std::size_t kMostBlockBytes = 1024 * 1024;

std::int64_t Quotient(std::int64_t dividend, std::int64_t divisor) {
  return divisor != 0 ? dividend / divisor : 0;
}

std::size_t WordsBesideChannels(int layout) {
  return layout == kWithTriggers ? 2 : layout == kWithLeadingWord ? 1 : 0;
}

}  // namespace

// The table of a large file lies less than 4 GiB before the tail, so the tail's high word is its own or one
// above.
std::uint64_t CRecordingFile::EventTablePosition() const {
  const RecordingHeader& header = rawHeader.header;
  const std::uint32_t low = header.eventTablePosition;
  if (largeFile == 0) return static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(low)});
  const std::uint32_t borrow = header.tailPositionLow < low ? 1 : 0;
  const std::uint32_t high = header.tailPositionHigh - borrow;
  return (std::uint64_t{high} << 32) | low;
}

std::uint64_t CRecordingFile::GetContinuousSampleCount() {
  const RecordingHeader& header = rawHeader.header;
  const std::int64_t channels = header.channelCount;
  const std::int64_t width = sampleWidth;
  const auto toFileEnd = static_cast<std::int64_t>(fileSize) - dataStart;
  // Never above the file's size, so it has a sign only when the table claims to lie before the samples.
  const std::int64_t toTable =
      static_cast<std::int64_t>(std::min(EventTablePosition(), fileSize)) - dataStart;
  std::int64_t count = 0;
  switch (header.sampleLayout) {
    case kWithTriggers:
      count = Quotient(toFileEnd, channels + 2) / width;
      break;
    case kPlain:
      count = Quotient(toTable, channels * width);
      break;
    case kWithLeadingWord:
      count = Quotient(toFileEnd, channels + 1) / width;
      break;
    default: {
      const std::int64_t blockSize = std::int64_t{header.blockBytes} * channels;
      if (blockSize != 0) count = (toTable - toTable % blockSize) / (width * channels);
    }
  }
  return static_cast<std::uint64_t>(count);
}

// Layouts without a table of events end with the file.
CRecordingFile::DataExtent CRecordingFile::ExtentOfSamples() {
  const RecordingHeader& header = rawHeader.header;
  const int layout = header.sampleLayout;
  const std::uint64_t words = std::uint64_t{header.channelCount} + WordsBesideChannels(layout);
  const std::uint64_t bytes = GetContinuousSampleCount() * words * static_cast<std::uint64_t>(sampleWidth);
  const bool hasTable = layout != kWithTriggers && layout != kWithLeadingWord;
  return {static_cast<std::uint64_t>(dataStart) + bytes,
          hasTable ? std::min(EventTablePosition(), fileSize) : fileSize};
}

// A damaged header may count fewer samples than there are: none may be left between the last one and what
// follows the samples.
bool CRecordingFile::CountsAllSamples() {
  const RecordingHeader& header = rawHeader.header;
  const int layout = header.sampleLayout;
  const std::uint64_t channels = header.channelCount;
  const std::uint64_t end = ExtentOfSamples().next;
  const auto start = static_cast<std::uint64_t>(dataStart);
  const std::uint64_t unit =
      layout == kBlocks ? header.blockBytes * channels
                        : (channels + WordsBesideChannels(layout)) * static_cast<std::uint64_t>(sampleWidth);
  if (end < start || unit == 0) return false;
  const std::uint64_t samplesInUnit =
      layout == kBlocks ? header.blockBytes / static_cast<std::uint64_t>(sampleWidth) : 1;
  const std::uint64_t samples = GetContinuousSampleCount();
  const std::uint64_t units = (end - start) / unit;
  return samples <= units * samplesInUnit &&
         units * samplesInUnit - samples < std::max<std::uint64_t>(1, samplesInUnit);
}

bool CRecordingFile::IsContinuousRange(std::uint64_t start, std::uint64_t end) {
  if (GetFileClass(&rawHeader) != kContinuous) return false;
  const std::uint64_t total = GetContinuousSampleCount();
  return start < total && end <= total && start < end;
}

bool CRecordingFile::ReadContinuousRaw(std::uint64_t start, std::uint64_t end, void* out,
                                       std::int32_t outBytes, int skipPolynomials, int skipRows) try {
  if (!IsContinuousRange(start, end) || out == nullptr || !file) return false;
  const std::uint64_t channels = rawHeader.header.channelCount;
  const auto width = static_cast<std::uint64_t>(sampleWidth);
  if (outBytes < 0) return false;
  const std::optional<std::uint64_t> bytes = CheckedMultiply(channels * width, end - start);
  if (!bytes || *bytes != static_cast<std::uint64_t>(outBytes)) return false;
  const std::span<std::byte> block(static_cast<std::byte*>(out), static_cast<std::size_t>(outBytes));
  if (!ReadStored(start, end, block)) return false;
  if (!overlay.HasRows() && !overlay.HasSegments()) return true;
  const auto corrections = StartCorrections(start, skipPolynomials, skipRows);
  return corrections && corrections->Apply(block);
} catch (const std::bad_alloc&) {
  return false;
}

bool CRecordingFile::ReadStored(std::uint64_t start, std::uint64_t end, std::span<std::byte> out) {
  if (rawHeader.header.sampleLayout != kBlocks) return ReadRecords(start, end - start, out.data());
  return sampleWidth == 2 && ReadBlocks(start, end, reinterpret_cast<std::uint16_t*>(out.data()));
}

bool CRecordingFile::ReadRecords(std::uint64_t start, std::uint64_t count, std::byte* out) {
  const int layout = rawHeader.header.sampleLayout;
  const std::size_t channels = rawHeader.header.channelCount;
  const std::size_t words = channels + WordsBesideChannels(layout);
  const std::size_t skip = layout == kWithLeadingWord ? 1 : 0;
  const auto width = static_cast<std::size_t>(sampleWidth);
  const std::size_t recordBytes = words * width;
  const auto offset = CheckedMultiply(start, recordBytes);
  const auto position =
      offset ? CheckedAdd(*offset, static_cast<std::uint64_t>(std::int64_t{dataStart})) : std::nullopt;
  if (!position || dataStart < 0 || !LiesInside(*position, count * recordBytes, fileSize)) return false;
  if (!file->SeekTo(*position)) return false;
  if (words == channels) return file->ReadExactly({out, static_cast<std::size_t>(count) * recordBytes});

  const std::size_t recordsAtOnce = std::max<std::size_t>(1, kChunkBytes / recordBytes);
  while (count > 0) {
    const auto records = static_cast<std::size_t>(std::min<std::uint64_t>(count, recordsAtOnce));
    const std::span<std::byte> chunk = readBuffer_.Take(records * recordBytes);
    if (chunk.empty() || !file->ReadExactly(chunk)) return false;
    CopyFromRecords(chunk.data(), records, recordBytes, skip * width, channels * width, out);
    out += records * channels * width;
    count -= records;
  }
  return true;
}

// One block of layout 3: for each channel a run of samples, the runs one behind the other.
struct BlockShape {
  std::uint64_t channels;
  std::uint64_t run;  // samples of one channel
  bool isStreamed;    // when more is wanted of the blocks than caches hold

  std::uint64_t Words() const { return channels * run; }
  std::uint64_t Bytes() const { return Words() * sizeof(std::uint16_t); }

  // A read has the price of this many bytes, which decides whether few samples of a block come by one read of
  // all of it or by one read for each channel.
  static constexpr std::uint64_t kPriceOfRead = 4096;
  bool IsReadWhole(std::uint64_t samples) const {
    const std::uint64_t wanted = channels * samples * sizeof(std::uint16_t);
    return Bytes() <= kMostBlockBytes && Bytes() <= wanted + channels * kPriceOfRead;
  }
};

namespace {

const std::uint16_t* WordsIn(std::span<const std::byte> bytes) {
  return reinterpret_cast<const std::uint16_t*>(bytes.data());
}

}  // namespace

bool CRecordingFile::ReadBlocks(std::uint64_t start, std::uint64_t end, std::uint16_t* out) {
  const std::int64_t runBytes = static_cast<std::int32_t>(std::uint32_t{rawHeader.header.blockBytes});
  if (runBytes < sampleWidth || dataStart < 0) return false;
  const std::uint64_t channels = rawHeader.header.channelCount;
  const BlockShape shape{channels, static_cast<std::uint64_t>(runBytes / sampleWidth),
                         (end - start) * channels >= kMoreThanCachesHold / sizeof *out};
  const std::uint64_t behind = (end - 1) / shape.run + 1;
  const auto blocksEnd = CheckedMultiply(behind, shape.Bytes());
  const auto lastByte =
      blocksEnd ? CheckedAdd(*blocksEnd, static_cast<std::uint64_t>(dataStart)) : std::nullopt;
  if (!lastByte || *lastByte > fileSize) return false;

  const std::uint64_t blocksAtOnce = std::max<std::uint64_t>(1, kChunkBytes / shape.Bytes());
  for (std::uint64_t block = start / shape.run; block < behind;) {
    const std::uint64_t blocks = std::min(blocksAtOnce, behind - block);
    const std::uint64_t first = block * shape.run;
    const std::uint64_t from = std::max(start, first) - first;
    const std::uint64_t to = std::min(end, first + blocks * shape.run) - first;
    const std::uint64_t position = static_cast<std::uint64_t>(dataStart) + block * shape.Bytes();
    const bool isWhole = blocks > 1 || shape.IsReadWhole(to - from);
    if (!(isWhole ? ReadWholeBlocks(shape, position, blocks, from, to, out)
                  : ReadPartOfBlock(shape, position, from, to, out))) {
      return false;
    }
    out += (to - from) * shape.channels;
    block += blocks;
  }
  return true;
}

// Samples `from` to `to`, counted from the first of the blocks, by one read of all of them.
bool CRecordingFile::ReadWholeBlocks(const BlockShape& shape, std::uint64_t position, std::uint64_t blocks,
                                     std::uint64_t from, std::uint64_t to, std::uint16_t* out) {
  const std::span<std::byte> chunk = readBuffer_.Take(static_cast<std::size_t>(blocks * shape.Bytes()));
  if (chunk.empty() || !file->SeekTo(position) || !file->ReadExactly(chunk)) return false;
  const std::uint16_t* words = WordsIn(chunk);
  for (; from < to; words += shape.Words()) {
    const std::uint64_t offset = from % shape.run;
    const std::uint64_t samples = std::min(shape.run - offset, to - from);
    TransposeChannels(words + offset, static_cast<std::size_t>(shape.channels),
                      static_cast<std::size_t>(shape.run), static_cast<std::size_t>(samples), out,
                      shape.isStreamed);
    out += samples * shape.channels;
    from += samples;
  }
  return true;
}

// The same samples of one block by a read for each channel, some thousand samples at a time.
bool CRecordingFile::ReadPartOfBlock(const BlockShape& shape, std::uint64_t position, std::uint64_t from,
                                     std::uint64_t to, std::uint16_t* out) {
  constexpr std::uint64_t kMinSamples = 1024;
  const std::uint64_t atOnce =
      std::max(kMinSamples, kMostBlockBytes / (shape.channels * sizeof(std::uint16_t)));
  for (; from < to;) {
    const std::uint64_t samples = std::min(atOnce, to - from);
    const auto bytes = static_cast<std::size_t>(samples * sizeof(std::uint16_t));
    const std::span<std::byte> runs = readBuffer_.Take(bytes * static_cast<std::size_t>(shape.channels));
    if (runs.empty()) return false;
    for (std::uint64_t c = 0; c < shape.channels; ++c) {
      if (!file->SeekTo(position + (c * shape.run + from) * sizeof(std::uint16_t))) return false;
      if (!file->ReadExactly(runs.subspan(static_cast<std::size_t>(c) * bytes, bytes))) return false;
    }
    TransposeChannels(WordsIn(runs), static_cast<std::size_t>(shape.channels),
                      static_cast<std::size_t>(samples), static_cast<std::size_t>(samples), out,
                      shape.isStreamed);
    out += samples * shape.channels;
    from += samples;
  }
  return true;
}

bool CRecordingFile::ReadContinuousFloat(std::uint64_t start, std::uint64_t end, float* out,
                                         std::uint32_t outBytes, int skipPolynomials, int skipRows) try {
  if (out == nullptr || !IsContinuousRange(start, end)) return false;
  const std::uint64_t channels = rawHeader.header.channelCount;
  const auto width = static_cast<std::uint64_t>(sampleWidth);
  const std::optional<std::uint64_t> values = CheckedMultiply(channels, end - start);
  if (!values || *values != outBytes / sizeof(float)) return false;
  // Setup and header disagree about the samples: what a converted block would hold is nobody's.
  if (setup->channelCount != static_cast<std::int32_t>(channels)) return false;
  if (*values * width > std::numeric_limits<std::int32_t>::max()) return false;

  // The pieces are read as they are stored, and corrected in one pass over all of them.
  std::unique_ptr<OverlayPass> corrections;
  if (overlay.HasRows() || overlay.HasSegments()) {
    corrections = StartCorrections(start, skipPolynomials, skipRows);
    if (!corrections) return false;
  }
  constexpr int kSkip = 1;
  while (start < end) {
    const std::uint64_t pieceEnd = std::min(end, EndOfPiece(start));
    const auto samples = static_cast<std::uint32_t>(pieceEnd - start);
    const std::span<std::byte> raw = rawBuffer_.Take(static_cast<std::size_t>(samples * channels * width));
    if (raw.empty()) return false;
    if (!ReadContinuousRaw(start, pieceEnd, raw.data(), static_cast<std::int32_t>(raw.size()), kSkip, kSkip))
      return false;
    if (corrections && !corrections->Apply(raw)) return false;
    if (width == 2) {
      RawToFloat16(reinterpret_cast<const std::int16_t*>(raw.data()), out, samples, *setup);
    } else {
      RawToFloat32(reinterpret_cast<const std::int32_t*>(raw.data()), out, samples, *setup);
    }
    out += samples * channels;
    start = pieceEnd;
  }
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

// Floats are made in pieces that stay in the cache between reading and converting. A piece of layout 3 ends
// with a block, so that no block is read twice.
std::uint64_t CRecordingFile::EndOfPiece(std::uint64_t start) const {
  const RecordingHeader& header = rawHeader.header;
  const std::uint64_t sampleBytes =
      std::uint64_t{header.channelCount} * static_cast<std::uint64_t>(sampleWidth);
  const std::uint64_t samples = std::max<std::uint64_t>(1, kChunkBytes / sampleBytes);
  const std::uint64_t run = header.sampleLayout == kBlocks ? header.blockBytes / 2 : 0;
  if (run == 0 || run * sampleBytes > kMostBlockBytes) return start + samples;
  return (start + std::max(samples, run)) / run * run;
}

bool CRecordingFile::AppendContinuousFloat(const float* in, std::uint32_t inBytes) try {
  if (in == nullptr || setup->channelCount < 1) return false;
  const std::span<const float> values(in, inBytes / sizeof(float));
  return AppendCounts(values, values.size() - values.size() % static_cast<std::size_t>(setup->channelCount));
} catch (const std::bad_alloc&) {
  return false;
}

// Writes the first `counted` values as counts, and zeros for those behind them. All are converted whether or
// not there is anything to write to, since a value beyond the range is told in any case.
bool CRecordingFile::AppendCounts(std::span<const float> values, std::size_t counted) {
  const auto channels = static_cast<std::size_t>(setup->channelCount);
  const auto width = static_cast<std::size_t>(sampleWidth);
  const std::size_t samplesAtOnce = std::max<std::size_t>(1, kChunkBytes / (channels * width));
  bool isWritten = IsBeingMade();
  for (std::size_t first = 0; first < values.size();) {
    const std::size_t piece = std::min(samplesAtOnce * channels, values.size() - first);
    const std::span<std::byte> raw = rawBuffer_.Take(piece * width);
    if (raw.empty()) return false;
    const std::size_t toConvert = std::min(piece, counted - std::min(counted, first));
    const bool wasLimited = FloatsToRaw(values.subspan(first, toConvert), raw, sampleWidth, *setup);
    if (wasLimited) pendingConversionNotice = 1;
    const std::span<std::byte> rest = raw.subspan(toConvert * width);
    std::fill(rest.begin(), rest.end(), std::byte{0});
    isWritten = isWritten && file->Write(raw);
    first += piece;
  }
  return isWritten;
}

}  // namespace wavelock

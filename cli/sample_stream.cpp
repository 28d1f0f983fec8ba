#include "cli/sample_stream.h"

#include <algorithm>
#include <vector>

namespace wavelock::command {
namespace {

constexpr std::size_t kBlockBytes = 4 * 1024 * 1024;

bool ReadBlock(CRecordingFile& recording, std::uint64_t from, std::uint64_t to, SampleForm form,
               std::span<std::byte> block) {
  const auto bytes = static_cast<std::uint32_t>(block.size());
  const int skipPolynomials = form.skipPolynomials ? 1 : 0;
  const int skipRows = form.skipRows ? 1 : 0;
  if (form.raw) {
    return recording.ReadContinuousRaw(from, to, block.data(), static_cast<std::int32_t>(bytes),
                                       skipPolynomials, skipRows);
  }
  return recording.ReadContinuousFloat(from, to, reinterpret_cast<float*>(block.data()), bytes,
                                       skipPolynomials, skipRows);
}

}  // namespace

StreamEnd StreamSamples(CRecordingFile& recording, SampleRange range, SampleForm form,
                        const BlockTaker& take) {
  const std::size_t valueBytes = form.raw ? static_cast<std::size_t>(recording.sampleWidth) : sizeof(float);
  const std::size_t sampleBytes = recording.rawHeader.header.channelCount * valueBytes;
  if (sampleBytes == 0) return StreamEnd::kUnreadable;
  const std::uint64_t atOnce =
      std::min<std::uint64_t>(std::max<std::size_t>(1, kBlockBytes / sampleBytes), range.Count());
  std::vector<std::byte> memory(static_cast<std::size_t>(atOnce) * sampleBytes);
  for (std::uint64_t from = range.from; from < range.to;) {
    const std::uint64_t samples = std::min(atOnce, range.to - from);
    const auto block = std::span(memory).first(static_cast<std::size_t>(samples) * sampleBytes);
    if (!ReadBlock(recording, from, from + samples, form, block)) return StreamEnd::kUnreadable;
    if (!take(block, samples)) return StreamEnd::kStopped;
    from += samples;
  }
  return StreamEnd::kComplete;
}

std::uint64_t CountSamples(CRecordingFile& recording) {
  const std::uint64_t count = recording.GetContinuousSampleCount();
  const std::uint64_t sampleBytes =
      std::uint64_t{recording.rawHeader.header.channelCount} * static_cast<unsigned>(recording.sampleWidth);
  return sampleBytes != 0 && count <= recording.fileSize / sampleBytes ? count : 0;
}

}  // namespace wavelock::command

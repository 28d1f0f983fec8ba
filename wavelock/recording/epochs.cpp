// Epochs: their data, their heads, and appending them to a file. An epoch is a head and behind it one block
// of data; the epochs of a file follow each other without gaps.
#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "wavelock/numerics/positions.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/recording/sample_conversion.h"

namespace wavelock {
namespace {

constexpr int kLastRevisionWithShortHeads = 2;

// Real and imaginary part of one point of a spectrum.
constexpr std::uint64_t kSpectrumPointBytes = 2 * sizeof(float);

// Bytes that are read at a time: enough to make a read worth its call, little enough to stay in the cache.
constexpr std::size_t kRunBytes = 256 * 1024;

// A read has the price of this many bytes: heads that lie closer together are read with the data between
// them.
constexpr std::uint64_t kPriceOfRead = 4096;

template <class T>
void StoreAt(T* target, T value) {
  if (target != nullptr) *target = value;
}

}  // namespace

std::uint32_t CRecordingFile::GetEpochCount() {
  return GetFileClass(&rawHeader) == kEpochs ? std::uint32_t{rawHeader.header.averagedSweeps} : 1;
}

int CRecordingFile::GetEpochHeaderSize() const {
  constexpr int kHeadBytes = sizeof(EpochHeader);
  constexpr int kShortHeadBytes = kShortEpochHeaderBytes;
  return headerRevision <= kLastRevisionWithShortHeads ? kShortHeadBytes : kHeadBytes;
}

std::uint64_t CRecordingFile::EpochStride() const {
  const RecordingHeader& header = rawHeader.header;
  const std::uint64_t valueBytes =
      header.frequencyDomain == 0 ? static_cast<std::uint64_t>(sampleWidth) : kSpectrumPointBytes;
  return static_cast<std::uint64_t>(GetEpochHeaderSize()) +
         std::uint64_t{header.channelCount} * header.pointCount * valueBytes;
}

std::uint64_t CRecordingFile::GetEpochPosition(std::int32_t index) {
  if (GetFileClass(&rawHeader) != kEpochs) return 0;
  return static_cast<std::uint64_t>(std::int64_t{dataStart}) +
         static_cast<std::uint64_t>(std::int64_t{index}) * EpochStride();
}

bool CRecordingFile::IsEpoch(std::uint32_t index) {
  return GetFileClass(&rawHeader) == kEpochs && index < GetEpochCount();
}

// To the data of an epoch, `bytes` bytes of which lie inside the file.
bool CRecordingFile::SeekToEpochData(std::uint32_t index, std::uint64_t bytes) {
  if (!file || dataStart < 0) return false;
  const std::uint64_t position =
      GetEpochPosition(static_cast<std::int32_t>(index)) + static_cast<std::uint64_t>(GetEpochHeaderSize());
  return LiesInside(position, bytes, fileSize) && file->SeekTo(position);
}

bool CRecordingFile::ReadEpochRaw(std::uint32_t index, void* out, std::uint32_t outBytes) {
  const RecordingHeader& header = rawHeader.header;
  if (out == nullptr || !IsEpoch(index)) return false;
  const std::uint64_t values = std::uint64_t{header.channelCount} * header.pointCount;
  if (outBytes != values * static_cast<std::uint64_t>(sampleWidth)) return false;
  return SeekToEpochData(index, outBytes) && file->ReadExactly({static_cast<std::byte*>(out), outBytes});
}

bool CRecordingFile::ReadEpochFloat(std::uint32_t index, float* out, std::uint32_t outBytes) try {
  if (out == nullptr || !IsEpoch(index)) return false;
  return rawHeader.header.frequencyDomain == 0 ? ReadEpochSamples(index, {out, outBytes / sizeof(float)})
                                               : ReadEpochSpectrum(index, out, outBytes);
} catch (const std::bad_alloc&) {
  return false;
}

// In pieces that stay in the cache between reading and converting.
bool CRecordingFile::ReadEpochSamples(std::uint32_t index, std::span<float> out) {
  const std::size_t channels = rawHeader.header.channelCount;
  const std::size_t points = rawHeader.header.pointCount;
  const std::size_t pointBytes = channels * static_cast<std::size_t>(sampleWidth);
  if (out.size() != channels * points || !SeekToEpochData(index, points * pointBytes)) return false;
  // Setup and header may disagree about the shape: what only one of them has stays as it was.
  const auto wanted = std::min(points, static_cast<std::size_t>(std::max(setup->pointCount, 0)));
  const std::size_t pointsAtOnce = std::max<std::size_t>(1, kRunBytes / std::max<std::size_t>(1, pointBytes));
  for (std::size_t point = 0; point < wanted; point += pointsAtOnce) {
    const EpochShape shape{.points = std::min(pointsAtOnce, wanted - point), .channels = channels};
    const std::span<std::byte> raw = rawBuffer_.Take(shape.points * pointBytes);
    if (raw.empty() || !file->ReadExactly(raw)) return false;
    float* const piece = out.data() + point * channels;
    if (sampleWidth == 2) {
      EpochToFloat16(reinterpret_cast<const std::int16_t*>(raw.data()), piece, shape, *setup);
    } else {
      EpochToFloat32(reinterpret_cast<const std::int32_t*>(raw.data()), piece, shape, *setup);
    }
  }
  return true;
}

bool CRecordingFile::ReadEpochSpectrum(std::uint32_t index, float* out, std::uint32_t outBytes) {
  if (!file) return false;
  TakeSpectrumAsAmplitudes();
  if (setup->pointCount < 0 || setup->channelCount < 0) return false;
  const auto values = CheckedMultiply(std::uint64_t{2} * static_cast<std::uint32_t>(setup->pointCount),
                                      static_cast<std::uint32_t>(setup->channelCount));
  if (!values || *values != outBytes / sizeof(float)) return false;
  return SeekToEpochData(index, outBytes) && file->ReadExactly({reinterpret_cast<std::byte*>(out), outBytes});
}

void CRecordingFile::TakeSpectrumAsAmplitudes() {
  constexpr std::int32_t kAmplitudes = 1;
  if (setup->spectrumScale == kAmplitudes) return;
  ReportMessage(NumberedMessage(MessageNumber::kSpectrumWithoutScale));
  setup->spectrumScale = kAmplitudes;
}

bool CRecordingFile::LoadEpochHeaders() {
  ClearEpochHeaders();
  if (GetFileClass(&rawHeader) != kEpochs || !file || dataStart < 0) return false;
  const std::uint32_t count = GetEpochCount();
  if (count == 0) return true;
  const std::uint64_t lastHead = GetEpochPosition(static_cast<std::int32_t>(count - 1));
  if (!LiesInside(lastHead, static_cast<std::uint64_t>(GetEpochHeaderSize()), fileSize)) return false;
  if (epochHeaders.SetSize(static_cast<std::int32_t>(count)) && ReadEpochHeads()) return true;
  ClearEpochHeaders();
  return false;
}

// Fills the list, whose records are zero and whose heads lie inside the file.
bool CRecordingFile::ReadEpochHeads() {
  const auto headBytes = static_cast<std::size_t>(GetEpochHeaderSize());
  const std::uint64_t stride = EpochStride();
  const std::uint64_t headsAtOnce = stride <= kPriceOfRead ? kRunBytes / stride : 1;
  std::uint64_t position = GetEpochPosition(0);
  for (std::span<EpochHeader> rest = epochHeaders.Elements(); !rest.empty();) {
    const auto heads =
        rest.first(static_cast<std::size_t>(std::min<std::uint64_t>(rest.size(), headsAtOnce)));
    const std::span<std::byte> run =
        readBuffer_.Take(static_cast<std::size_t>((heads.size() - 1) * stride) + headBytes);
    if (run.empty() || !file->SeekTo(position) || !file->ReadExactly(run)) return false;
    for (std::size_t i = 0; i < heads.size(); ++i) {
      std::memcpy(&heads[i], run.data() + i * static_cast<std::size_t>(stride), headBytes);
    }
    position += heads.size() * stride;
    rest = rest.subspan(heads.size());
  }
  return true;
}

void CRecordingFile::ClearEpochHeaders() {
  epochHeaders.SetSize(0);
}

bool CRecordingFile::GetEpochInfo(std::int32_t index, std::uint16_t* trialType, std::uint8_t* accept,
                                  std::uint16_t* correct, float* reactionTime, std::uint16_t* response) {
  const auto place = static_cast<std::uint32_t>(index);
  if (!IsEpoch(place)) return false;
  if (epochHeaders.IsEmpty() && !LoadEpochHeaders()) return false;
  const std::span<const EpochHeader> heads = epochHeaders.Elements();
  if (place >= heads.size()) return false;
  const EpochHeader& head = heads[place];
  StoreAt<std::uint16_t>(trialType, head.trialType);
  StoreAt<std::uint8_t>(accept, head.accept);
  StoreAt<std::uint16_t>(correct, head.correct);
  StoreAt<float>(reactionTime, head.reactionTime);
  StoreAt<std::uint16_t>(response, head.response);
  return true;
}

bool CRecordingFile::AppendEpochHead(std::uint16_t trialType, std::uint8_t accept, std::uint16_t correct,
                                     float reactionTime, std::uint16_t response) {
  if (!IsBeingMade()) return false;
  EpochHeader head;
  head.trialType = trialType;
  head.accept = accept;
  head.correct = correct;
  head.reactionTime = reactionTime;
  head.response = response;
  return file->Write(BytesOf(head));
}

bool CRecordingFile::AppendEpochFloat(const float* in, std::uint32_t inBytes) try {
  const std::size_t came = inBytes / sizeof(float);
  if ((in == nullptr && came != 0) || setup->channelCount < 1) return false;
  const std::uint64_t wanted = static_cast<std::uint64_t>(std::max(setup->pointCount, 0)) *
                               static_cast<std::uint64_t>(setup->channelCount);
  return AppendCounts({in, came}, static_cast<std::size_t>(std::min<std::uint64_t>(came, wanted)));
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace wavelock

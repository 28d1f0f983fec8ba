#include "tests/support/read_everything.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "wavelock/annotations/epoch_info.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kMostValues = 3000;  // in one read
constexpr std::uint64_t kMostOfSet = 20 * kMostValues;

alignas(float) std::byte buffer[kMostOfSet * sizeof(float)];

// Room for so many bytes, with nothing of the buffer behind it.
template <class Value>
Value* RoomFor(std::uint64_t bytes) {
  return reinterpret_cast<Value*>(std::end(buffer) - bytes);
}

void ReadSamples(CRecordingFile& recording, std::uint64_t start, std::uint64_t end) {
  const std::uint64_t values = (end - start) * recording.rawHeader.header.channelCount;
  if (values > kMostValues) return;
  const auto rawBytes = values * static_cast<std::uint64_t>(recording.sampleWidth);
  const auto floatBytes = values * sizeof(float);
  for (const auto& [skipPolynomials, skipRows] : {std::pair(0, 0), {1, 0}, {0, 1}}) {
    recording.ReadContinuousFloat(start, end, RoomFor<float>(floatBytes),
                                  static_cast<std::uint32_t>(floatBytes), skipPolynomials, skipRows);
    recording.ReadContinuousRaw(start, end, RoomFor<std::byte>(rawBytes), static_cast<std::int32_t>(rawBytes),
                                skipPolynomials, skipRows);
  }
}

void ReadContinuous(CRecordingFile& recording) {
  const std::uint64_t channels = std::max<std::uint64_t>(1, recording.rawHeader.header.channelCount);
  const std::uint64_t total = recording.GetContinuousSampleCount();
  const std::uint64_t most = std::min(total, kMostValues / channels);
  ReadSamples(recording, 0, most);
  ReadSamples(recording, total - most, total);
  ReadSamples(recording, total / 2, total / 2 + 1);
  ReadSamples(recording, total, total + 1);
}

void ReadEpoch(CRecordingFile& recording, std::uint32_t index) {
  const auto points = static_cast<std::uint64_t>(std::max(recording.setup->pointCount, 0));
  const auto channels = static_cast<std::uint64_t>(std::max(recording.setup->channelCount, 0));
  for (const std::uint64_t values : {std::uint64_t{0}, points * channels, 2 * points * channels}) {
    if (values > kMostOfSet) continue;
    const auto rawBytes = values * static_cast<std::uint64_t>(recording.sampleWidth);
    const auto floatBytes = values * sizeof(float);
    recording.ReadEpochRaw(index, RoomFor<std::byte>(rawBytes), static_cast<std::uint32_t>(rawBytes));
    recording.ReadEpochFloat(index, RoomFor<float>(floatBytes), static_cast<std::uint32_t>(floatBytes));
  }
  EpochInfo info;
  recording.GetEpochInfo(static_cast<std::int32_t>(index), &info.trialType, &info.accept, &info.correct,
                         &info.reactionTime, &info.response);
}

void ReadEpochs(CRecordingFile& recording) {
  const std::uint32_t count = recording.GetEpochCount();
  for (const std::uint32_t index : {0u, count / 2, count - 1, count}) ReadEpoch(recording, index);
}

void ReadDataObjects(CRecordingFile& recording) {
  constexpr std::int32_t kPoints = 4;
  const std::uint64_t bytes = kPoints * sizeof(float) * recording.rawHeader.header.channelCount;
  for (int section = 1; section <= 4 && bytes <= sizeof buffer; ++section)
    recording.ReadAveragedSection(kPoints, RoomFor<float>(bytes), section);
  for (const std::uint32_t index : {0u, recording.GetEpochCount() - 1}) {
    if (CTFDEpoch* const data = recording.LoadDataObject(index)) {
      data->Demultiplex();
      data->Multiplex();
      const CTFDEpoch copy(*data);
    }
  }
  recording.BuildPairedData();
  recording.BuildPairedData();
}

void ReadBesidesSamples(CRecordingFile& recording) {
  recording.GetEventCount();
  recording.labelList.SortByValue();
  for (const std::uint32_t sample : {0u, 1u, 1000u, 0xFFFFFFFFu}) {
    const std::uint32_t row = recording.overlay.FindRow(sample);
    recording.overlay.GetRowValue(static_cast<std::int32_t>(row) - 1, sample);
    recording.overlay.EvaluateAt(sample);
  }
}

}  // namespace

void ReadIntoOwnBuffers(CRecordingFile& recording) {
  recording.IsFileWritable();
  ReadContinuous(recording);
  ReadEpochs(recording);
  ReadDataObjects(recording);
  ReadBesidesSamples(recording);
}

void ReadEverything(CRecordingFile& recording) {
  ReadIntoOwnBuffers(recording);
  for (std::int32_t i = 0; i < recording.markerList.GetCount(); ++i)
    recording.markerList.GetAt(i)->GetLabel(false);
}

}  // namespace wavelock

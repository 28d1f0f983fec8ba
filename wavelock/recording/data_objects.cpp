// Averages and epochs as whole objects in memory.
#include <algorithm>
#include <cstring>
#include <new>

#include "wavelock/numerics/positions.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// Bytes of rows that are read or written at a time.
constexpr std::size_t kChunkBytes = 256 * 1024;

}  // namespace

CTFDEpoch* CRecordingFile::LoadDataObject(std::uint32_t index) try {
  if (keptData) return keptData->Multiplex() && TakeMarkers(*keptData, index) ? keptData.get() : nullptr;
  loadedData.reset();
  if (!LoadSet(index) || !LoadFsp() || !TakeMarkers(*loadedData, index)) loadedData.reset();
  return loadedData.get();
} catch (const std::bad_alloc&) {
  loadedData.reset();
  return nullptr;
}

bool CRecordingFile::LoadSet(std::uint32_t index) {
  switch (GetAcquisitionKind()) {
    case kAverage:
    case kAverageWithStatistics:
      return LoadAverage();
    case kEpochs:
      if (index >= GetEpochCount()) return false;
      return (setup->frequencyDomain == 0 ? LoadEpoch(index) : LoadSpectrum(index)) && TakeEpochInfo(index);
    default:
      ReportMessage(NumberedMessage(MessageNumber::kNoDataObject));
      return false;
  }
}

// Whether a set of that many values, stored in two bytes or more each, can come from this file. The setup in
// a tail may tell of more than the file has, and what is missing is zero; but no file makes the library take
// all the memory there is.
bool CRecordingFile::IsPlausibleSet(std::int64_t rows, std::int64_t columns) const {
  constexpr std::uint64_t kMostMissingBytes = 16 * 1024 * 1024;
  if (rows < 0 || columns < 0) return false;
  const auto values = CheckedMultiply(static_cast<std::uint64_t>(std::max<std::int64_t>(rows, 1)),
                                      static_cast<std::uint64_t>(std::max<std::int64_t>(columns, 1)));
  const auto limit = CheckedAdd(fileSize, kMostMissingBytes);
  return values && limit && *values <= *limit / sizeof(std::int16_t);
}

// False, and no object, for impossible sizes and when memory ran out.
bool CRecordingFile::MakeLoadedData(int multiplexed) {
  if (!IsPlausibleSet(setup->pointCount, setup->channelCount)) return false;
  if (setup->dataKind == kAverageWithStatistics &&
      !IsPlausibleSet(setup->acceptedSweeps, setup->channelCount)) {
    return false;
  }
  loadedData.reset(new (std::nothrow) CTFDEpoch(setup.get(), multiplexed));
  return loadedData && loadedData->valid != 0;
}

bool CRecordingFile::LoadAverage() {
  // The sections have the header's channels, the object has the setup's.
  if (setup->channelCount < rawHeader.header.channelCount || !MakeLoadedData(1)) return false;
  if (!ReadAveragedSection(setup->pointCount, loadedData->mainBlock, 1)) return false;
  return setup->hasVariance == 0 || ReadAveragedSection(setup->pointCount, loadedData->varianceBlock, 2);
}

bool CRecordingFile::LoadFsp() {
  if (setup->dataKind != kAverageWithStatistics) return true;
  return ReadAveragedSection(setup->acceptedSweeps, loadedData->fspFirst.All().data(), 3) &&
         ReadAveragedSection(setup->acceptedSweeps, loadedData->fspSecond.All().data(), 4);
}

bool CRecordingFile::LoadEpoch(std::uint32_t index) {
  return MakeLoadedData(1) && ReadEpochFloat(index, loadedData->mainBlock, loadedData->blockBytes);
}

bool CRecordingFile::LoadSpectrum(std::uint32_t index) {
  setup->mainField8040 = 1;
  TakeSpectrumAsAmplitudes();
  if (!MakeLoadedData(0) || (!loadedData->imaginary && !loadedData->AllocImaginary())) return false;
  return SeekToEpochData(index, 2 * std::uint64_t{loadedData->blockBytes}) && ReadSpectrumRows(*loadedData);
}

// Real and imaginary rows take turns in the file.
bool CRecordingFile::ReadSpectrumRows(CTFDEpoch& data) {
  const std::size_t rowBytes = data.main.Columns() * sizeof(float);
  const std::size_t channelsAtOnce =
      std::max<std::size_t>(1, kChunkBytes / std::max<std::size_t>(1, 2 * rowBytes));
  for (std::size_t c = 0; c < data.main.Rows() && rowBytes > 0; c += channelsAtOnce) {
    const std::size_t channels = std::min(channelsAtOnce, data.main.Rows() - c);
    const std::span<std::byte> rows = readBuffer_.Take(2 * channels * rowBytes);
    if (rows.empty() || !file->ReadExactly(rows)) return false;
    for (std::size_t i = 0; i < channels; ++i) {
      std::memcpy(data.main[c + i], rows.data() + 2 * i * rowBytes, rowBytes);
      std::memcpy(data.imaginary[c + i], rows.data() + (2 * i + 1) * rowBytes, rowBytes);
    }
  }
  return true;
}

bool CRecordingFile::TakeEpochInfo(std::uint32_t index) {
  EpochInfo info;
  if (!GetEpochInfo(static_cast<std::int32_t>(index), &info.trialType, &info.accept, &info.correct,
                    &info.reactionTime, &info.response)) {
    return false;
  }
  info.tail = static_cast<std::int32_t>(index);
  loadedData->epochInfo = info;
  return true;
}

bool CRecordingFile::TakeMarkers(CTFDEpoch& data, std::uint32_t index) const {
  data.markers.RemoveAll();
  for (std::int32_t i = 0; i < markerList.GetCount(); ++i) {
    const CMarker& marker = *markerList.GetAt(i);
    if (marker.epoch != static_cast<std::int32_t>(index)) continue;
    if (!data.markers.Add(std::unique_ptr<CMarker>(new (std::nothrow) CMarker(marker)))) return false;
  }
  return true;
}

bool CRecordingFile::KeepAverage() {
  if (LoadDataObject(0) == nullptr) return false;
  keptData = std::move(loadedData);
  keptData->errorText = {};  // as of a copy
  CloseFile();
  return true;
}

bool CRecordingFile::WriteTimeFrequencyData(CTFDEpoch* data) {
  if (data == nullptr || !IsBeingMade() || !data->Demultiplex()) return false;
  if (data->imaginary.Rows() != data->main.Rows() || data->imaginary.Columns() != data->main.Columns())
    return false;
  const std::size_t rowBytes = data->main.Columns() * sizeof(float);
  const std::size_t channelsAtOnce =
      std::max<std::size_t>(1, kChunkBytes / std::max<std::size_t>(1, 2 * rowBytes));
  for (std::size_t c = 0; c < data->main.Rows() && rowBytes > 0; c += channelsAtOnce) {
    const std::size_t channels = std::min(channelsAtOnce, data->main.Rows() - c);
    const std::span<std::byte> rows = readBuffer_.Take(2 * channels * rowBytes);
    if (rows.empty()) return false;
    for (std::size_t i = 0; i < channels; ++i) {
      std::memcpy(rows.data() + 2 * i * rowBytes, data->main[c + i], rowBytes);
      std::memcpy(rows.data() + (2 * i + 1) * rowBytes, data->imaginary[c + i], rowBytes);
    }
    if (!file->Write(rows)) return false;
  }
  return true;
}

}  // namespace wavelock

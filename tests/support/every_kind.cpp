#include "tests/support/every_kind.h"

#include <memory>
#include <utility>

#include "tests/support/annotated_recordings.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

constexpr std::int32_t kChannels = 3;
constexpr std::int32_t kPoints = 16;
constexpr std::int32_t kSamples = 500;
constexpr std::int32_t kSweeps = 4;

// Less than a page: tests of memory that fails count larger requests of the library alone.
std::vector<float> Wave(std::int32_t count) {
  std::vector<float> values(static_cast<std::size_t>(count * kChannels));
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(i % 97) - 48;
  return values;
}

std::uint32_t SizeOf(const std::vector<float>& values) {
  return static_cast<std::uint32_t>(values.size() * sizeof(float));
}

bool Begin(CRecordingFile& recording, DataKind kind, const std::string& path, int width = 2) {
  CSetup& setup = *recording.setup;
  setup.dataKind = kind;
  setup.channelCount = kChannels;
  setup.pointCount = kPoints;
  setup.acceptedSweeps = kSweeps;
  for (SetupChannel& channel : setup.Channels()) channel.countScale = channel.channelScale = 1;
  return recording.CreateFile(path, width);
}

bool AddMarker(CRecordingFile& recording) {
  auto marker = std::make_unique<CMarker>();
  marker->channel = 1;
  marker->SetName("peak");
  return recording.markerList.Add(std::move(marker));
}

bool AddCorrections(CCorrectionOverlay& overlay) {
  overlay.params.polyOrder = 1;
  overlay.params.polyChannels = kChannels;
  OverlayRow row{};
  row.startSample = 100;
  row.channelValue[1] = 10;
  auto segment = std::make_unique<OverlaySegment>();
  segment->endSample = kSamples;
  bool isWhole = true;
  for (int i = 0; i < 2 * kChannels; ++i) isWhole = segment->coefficients.Append(0.5 * i) && isWhole;
  return overlay.AddRow(row) && overlay.AddSegment(std::move(segment)) && isWhole;
}

template <int kWidth>
bool MakeContinuous(CRecordingFile& recording, const std::string& path) {
  if (!Begin(recording, kContinuous, path, kWidth)) return false;
  const std::vector<float> wave = Wave(kSamples / 2);
  for (int half = 0; half < 2; ++half) {
    if (!recording.AppendContinuousFloat(wave.data(), SizeOf(wave))) return false;
  }
  EventRecord event{};
  event.stimType = 5;
  event.point = 70;
  recording.eventGroup.Append(event);
  return recording.labelList.Add({"label", 9}) && AddCorrections(recording.overlay) &&
         recording.SaveAndClose(86400);
}

bool MakeEpochs(CRecordingFile& recording, const std::string& path) {
  if (!Begin(recording, kEpochs, path)) return false;
  const std::vector<float> wave = Wave(kPoints);
  for (std::uint16_t i = 0; i < 3; ++i) {
    if (!recording.AppendEpochHead(i, 1, 0, 0.5f, 2) ||
        !recording.AppendEpochFloat(wave.data(), SizeOf(wave)))
      return false;
  }
  recording.setup->averagedSweeps = 3;
  return AddMarker(recording) && recording.SaveAndClose(0);
}

bool MakeSpectra(CRecordingFile& recording, const std::string& path) {
  recording.setup->frequencyDomain = 1;
  recording.setup->hasImaginary = 1;
  if (!Begin(recording, kEpochs, path)) return false;
  CTFDEpoch data(recording.GetSetup(), 0);
  if (data.valid == 0 || (!data.imaginary && !data.AllocImaginary())) return false;
  recording.setup->averagedSweeps = 1;
  return recording.AppendEpochHead(1, 1, 0, 0, 0) && recording.WriteTimeFrequencyData(&data) &&
         recording.SaveAndClose(0);
}

template <bool kWithStatistics>
bool MakeAverage(CRecordingFile& recording, const std::string& path) {
  if (!Begin(recording, kAverage, path)) return false;
  const std::vector<float> wave = Wave(kPoints);
  const std::uint32_t sweepBytes = kSweeps * kChannels * sizeof(float);
  if (recording.WriteAverageSection(wave.data(), 0, 1) <= 0 ||
      recording.WriteVarianceSection(wave.data(), 0) <= 0) {
    return false;
  }
  if (kWithStatistics && (recording.WriteAverageSection(wave.data(), sweepBytes, 3) <= 0 ||
                          recording.WriteAverageSection(wave.data(), sweepBytes, 4) <= 0)) {
    return false;
  }
  return AddMarker(recording) && recording.SaveAndClose(0);
}

bool MakePairs(CRecordingFile& recording, const std::string& path) {
  if (!Begin(recording, kTimeFrequency, path)) return false;
  CTFDPaired pairs(recording.GetSetup(), 2);
  if (pairs.valid == 0) return false;
  for (int i = 0; i < 2; ++i) {
    pairs.pairIndex[0][i] = i;
    pairs.pairIndex[1][i] = i + 1;
  }
  return recording.WritePairedData(&pairs) && recording.SaveAndClose(0);
}

}  // namespace

std::vector<NamedRecording> RecordingsOfEveryKind() {
  const auto ramp = [](std::uint64_t s, int c) { return static_cast<std::int32_t>(s) * (c + 1) % 1000; };
  const std::vector<RecordingBuilder::Event> events = {{.stimType = 1, .sample = 5},
                                                       {.stimType = 2, .sample = 100}};
  const RecordingBuilder::Epoch spectrum = {.spectrum = {1, 2, 3, 4, 5, 6, 7, 8}};
  const RecordingBuilder continuous =
      RecordingBuilder().Channels(3).Rate(250).Samples(500, ramp).Events(events);
  return {
      {"continuous", continuous},
      {"wide", RecordingBuilder(continuous).Width(4).Tail(PlainSetupSections(3))},
      {"trigger words", RecordingBuilder().Revision(6).Channels(3).Samples(200, ramp).TriggerWords(4, 1, 2)},
      {"blocks", RecordingBuilder().Layout(3).BlockSamples(32).Channels(5).Samples(300, ramp)},
      {"leading word", RecordingBuilder().Revision(3).Layout(2).Channels(2).Samples({1, 2, 3, 4})},
      {"oldest", RecordingBuilder().OldestLayout(5).AcquisitionMode(3).Channels(2).Samples({1, 2, 3, 4})},
      {"epochs", RecordingBuilder().Epoched().Channels(2).Points(8).Epochs({{.samples = {1, 2}}})},
      {"old epochs", RecordingBuilder().Revision(2).Epoched().Channels(1).Points(4).Epochs(
                         {{.samples = {1, 2, 3, 4}}, {.trialType = 2, .samples = {5, 6, 7, 8}}})},
      {"spectra",
       RecordingBuilder().Epoched().FrequencyDomain().Channels(2).Points(2).Epochs({spectrum, spectrum})},
      {"average", RecordingBuilder().Averaged().Channels(1).Points(4).Data(
                      ByteWriter().Zeros(5).F32(1).F32(2).F32(3).F32(4))},
      {"statistics", RecordingBuilder()
                         .AveragedWithStatistics()
                         .Channels(2)
                         .Points(4)
                         .PutU8(375, 1)   // variance
                         .PutU16(364, 3)  // accepted sweeps
                         .Data(Bytes(2 * (5 + 4 * 4) + 2 * 4 * 4 + 2 * 2 * 3 * 4, std::byte{1}))},
      {"pairs", RecordingBuilder().Revision(13).TimeFrequency().Channels(2).Points(2).Data(
                    ByteWriter().Zeros(8 + 16).U32(0).U32(1050).U32(1050).U32(0))},
      {"marked", MarkedRecording([](CSetup& setup) {
                   setup.dataKind = kEpochs;
                   setup.pointCount = 2;
                 })
                     .Epoched()
                     .Samples(std::vector<std::int32_t>())
                     .Points(2)
                     .Epochs({{.samples = {1, 2, 3, 4}}})},
      {"corrected", CorrectedRecording()},
  };
}

std::vector<NamedMaker> MakersOfEveryKind() {
  return {{"continuous", MakeContinuous<2>},
          {"wide", MakeContinuous<4>},
          {"epochs", MakeEpochs},
          {"spectra", MakeSpectra},
          {"average", MakeAverage<false>},
          {"statistics", MakeAverage<true>},
          {"pairs", MakePairs}};
}

}  // namespace wavelock

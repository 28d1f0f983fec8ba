#include "tests/support/every_kind.h"

#include <memory>
#include <numeric>
#include <span>
#include <utility>

#include "tests/support/annotated_recordings.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

constexpr std::int32_t kChannels = 3;
constexpr std::int32_t kPoints = 16;
constexpr std::int32_t kSamples = 500;
constexpr std::int32_t kSweeps = 3;

// Whole counts of every channel, in microvolts. Less than a page: tests of memory that fails count larger
// requests of the library alone.
std::vector<float> Wave(std::int32_t count, std::size_t seed) {
  std::vector<float> values(static_cast<std::size_t>(count * kChannels));
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i] = static_cast<float>((7 * i + 13 * seed) % 97) - 48;
    if (i % kChannels == 0) values[i] /= 2;
  }
  return values;
}

std::uint32_t SizeOf(const std::vector<float>& values) {
  return static_cast<std::uint32_t>(values.size() * sizeof(float));
}

bool Begin(CRecordingFile& recording, DataKind kind, const std::string& path, int width) {
  CSetup& setup = *recording.setup;
  setup.dataKind = kind;
  setup.fromRecording = 1;
  setup.channelCount = kChannels;
  setup.sampleRate = 200;
  setup.actualRate = 200;
  setup.timeStart = 0;
  setup.averagedSweeps = setup.acceptedSweeps = 1;
  if (kind != kContinuous) {
    setup.windowBEnd = 0;
    setup.pointCount = kPoints;
    setup.sweepCount = setup.averagedSweeps = setup.acceptedSweeps = kSweeps;
    for (SetupChannel& channel : setup.Channels()) channel.sweeps = 1;
  }
  for (SetupChannel& channel : setup.Channels()) channel.countScale = channel.channelScale = 1;
  setup.channels[0].countScale = 0.25F;
  setup.channels[0].channelScale = 2;
  return recording.CreateFile(path, width);
}

bool AddMarker(CRecordingFile& recording) {
  auto marker = std::make_unique<CMarker>();
  marker->channel = 1;
  marker->sampleIndex = 3;
  marker->epoch = 0;
  marker->SetName("peak");
  return recording.markerList.Add(std::move(marker));
}

// 2 below in the first channel, 1 above in the second and from sample 100 on 5.
bool AddCorrections(CCorrectionOverlay& overlay) {
  overlay.params.polyOrder = 0;
  overlay.params.polyChannels = 2;
  OverlayRow row{};
  row.startSample = 100;
  row.channelValue[1] = 4;
  auto segment = std::make_unique<OverlaySegment>();
  segment->endSample = kSamples;
  const bool isWhole = segment->coefficients.Append(2.0) && segment->coefficients.Append(-1.0);
  return isWhole && overlay.AddRow(row) && overlay.AddSegment(std::move(segment));
}

bool AddEvents(CRecordingFile& recording) {
  for (std::uint32_t i = 0; i < 10; ++i) {
    EventRecord event{};
    event.stimType = static_cast<std::uint16_t>(i);
    event.point = 5 * i;
    if (!recording.GetEventTable().Append(event)) return false;
  }
  return true;
}

bool MakeContinuous(CRecordingFile& recording, const std::string& path, int width) {
  if (!Begin(recording, kContinuous, path, width)) return false;
  for (std::size_t half = 0; half < 2; ++half) {
    const std::vector<float> wave = Wave(kSamples / 2, half);
    if (!recording.AppendContinuousFloat(wave.data(), SizeOf(wave))) return false;
  }
  return AddEvents(recording) && recording.labelList.Add({"label", 9}) && AddCorrections(recording.overlay) &&
         recording.SaveAndClose(86400);
}

bool MakeEpochs(CRecordingFile& recording, const std::string& path, int width) {
  if (!Begin(recording, kEpochs, path, width)) return false;
  for (std::uint16_t i = 0; i < kSweeps; ++i) {
    const std::vector<float> wave = Wave(kPoints, i);
    if (!recording.AppendEpochHead(i, 1, 0, 0.5f, 2) ||
        !recording.AppendEpochFloat(wave.data(), SizeOf(wave)))
      return false;
  }
  return AddMarker(recording) && recording.SaveAndClose(0);
}

void UseSpectra(CSetup& setup) {
  setup.frequencyDomain = setup.hasImaginary = 1;
  setup.spectrumPoints = 2 * kPoints;
}

bool MakeSpectra(CRecordingFile& recording, const std::string& path, int width) {
  UseSpectra(*recording.setup);
  if (!Begin(recording, kEpochs, path, width)) return false;
  for (std::uint16_t i = 0; i < kSweeps; ++i) {
    CTFDEpoch set(recording.GetSetup(), 0);
    if (set.valid == 0) return false;
    std::iota(set.main.All().begin(), set.main.All().end(), 0.1F);
    std::iota(set.imaginary.All().begin(), set.imaginary.All().end(), -30.3F);
    if (!recording.AppendEpochHead(i, 1, 0, 0, 0) || !recording.WriteTimeFrequencyData(&set)) return false;
  }
  return recording.SaveAndClose(0);
}

template <bool kWithStatistics>
bool MakeAverage(CRecordingFile& recording, const std::string& path, int width) {
  if (!Begin(recording, kAverage, path, width)) return false;
  const std::vector<float> mean = Wave(kPoints, 1);
  const std::vector<float> variance = Wave(kPoints, 2);
  const std::vector<float> first = Wave(kSweeps, 3);
  const std::vector<float> second = Wave(kSweeps, 4);
  if (recording.WriteAverageSection(mean.data(), SizeOf(mean), 1) <= 0 ||
      recording.WriteVarianceSection(variance.data(), SizeOf(variance)) <= 0) {
    return false;
  }
  if (kWithStatistics && (recording.WriteAverageSection(first.data(), SizeOf(first), 3) <= 0 ||
                          recording.WriteAverageSection(second.data(), SizeOf(second), 4) <= 0)) {
    return false;
  }
  return AddMarker(recording) && recording.SaveAndClose(0);
}

bool MakePairs(CRecordingFile& recording, const std::string& path, int width) {
  UseSpectra(*recording.setup);
  if (!Begin(recording, kTimeFrequency, path, width)) return false;
  CTFDPaired pairs(recording.GetSetup(), 2);
  if (pairs.valid == 0) return false;
  for (int i = 0; i < 2; ++i) {
    pairs.pairIndex[0][i] = i;
    pairs.pairIndex[1][i] = i + 1;
  }
  std::iota(pairs.real.All().begin(), pairs.real.All().end(), 0.1F);
  std::iota(pairs.imaginary.All().begin(), pairs.imaginary.All().end(), -30.3F);
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
      {"epochs", RecordingBuilder().Epoched().Channels(2).Points(2).Epochs({{.samples = {1, 2, 3, 4}}})},
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
  std::vector<NamedMaker> makers;
  for (const int width : {2, 4}) {
    const std::string prefix = width == 4 ? "wide " : "";
    makers.push_back({prefix + "continuous", kContinuous, width, MakeContinuous});
    makers.push_back({prefix + "epochs", kEpochs, width, MakeEpochs});
    makers.push_back({prefix + "spectra", kEpochs, width, MakeSpectra});
    makers.push_back({prefix + "average", kAverage, width, MakeAverage<false>});
    makers.push_back({prefix + "statistics", kAverageWithStatistics, width, MakeAverage<true>});
    makers.push_back({prefix + "pairs", kTimeFrequency, width, MakePairs});
  }
  return makers;
}

}  // namespace wavelock

#include "cli/demo_recordings.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

#include "cli/demo_signals.h"
#include "wavelock/platform/memory_profile_store.h"
#include "wavelock/platform/silent_modal_interface.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::command {
namespace {

// ---- a host that is the same on every machine, but for its files

class NoProcess : public Process {
 public:
  std::string ExecutablePath() override { return {}; }
  std::string LocalTime(std::int64_t, const char*) override { return {}; }
  std::uint32_t OsVersionWord() override { return 0; }
};

struct DemoHost {
  explicit DemoHost(FileService& files) : host{files, profile, modal, process} {}

  MemoryProfileStore profile{};
  SilentModalInterface modal{};
  NoProcess process{};
  Host host;
};

constexpr int kSilent = 1;

// ---- what all recordings of the session have in common

constexpr char kDate[] = "06/23/2005";
constexpr char kTime[] = "10:30:00";
constexpr double kHeadRadiusMm = 85;
constexpr float kRangeVolts = 5.5F;
constexpr double kGain = 500;

// Microvolts of one step of a converter with that many steps.
float StepOf(double counts) {
  return static_cast<float>(kRangeVolts * 1e6 / (counts * kGain));
}

void Describe(const Electrode& electrode, SetupChannel& channel) {
  channel.label.Assign(electrode.label);
  const double squared = electrode.right * electrode.right + electrode.front * electrode.front;
  const double up = std::sqrt(std::max(0.0, 1 - squared));
  channel.position = {static_cast<float>(kHeadRadiusMm * electrode.right),
                      static_cast<float>(kHeadRadiusMm * electrode.front),
                      static_cast<float>(kHeadRadiusMm * up)};
  channel.lowpassHz = 70;
  channel.highpassHz = 0.1F;
}

void DescribeSubject(CSetup& setup) {
  CSubjectInfo& subject = *setup.subject;
  subject.subjectTextA = "Demo";
  subject.instituteName = "Wavelock";
  subject.age = 30;
  subject.hand = 0;
  subject.recordDate = kDate;
  subject.recordTime = kTime;
  std::copy_n(kDate, setup.recordDateRaw.size(), setup.recordDateRaw.begin());
  std::copy_n(kTime, sizeof kTime, setup.recordTimeRaw.begin());
}

void DescribeTimeAxis(CSetup& setup, int points, int pointsBefore) {
  setup.sampleRate = kDemoRate;
  setup.actualRate = kDemoRate;
  setup.pointCount = points;
  setup.timeStart = -static_cast<float>(pointsBefore) / kDemoRate;
  setup.displayStart = setup.timeStart * 1000;
  setup.displayEnd = (setup.timeStart + static_cast<float>(points) / kDemoRate) * 1000;
}

// `channels` are indexes of electrodes.
void DescribeSession(CSetup& setup, const std::vector<std::size_t>& channels) {
  setup.ResetToDefaults();
  setup.fromRecording = 1;
  setup.channelCount = static_cast<std::int32_t>(channels.size());
  std::int32_t index = 0;
  for (SetupChannel& channel : setup.Channels()) {
    channel = DefaultChannel(index);
    Describe(kDemoElectrodes[channels[static_cast<std::size_t>(index++)]], channel);
  }
  setup.LayoutGrid(0);
  setup.hasPositions = 1;
  setup.adcRangeVolts = kRangeVolts;
  setup.adcCounts = 65536;
  setup.mainsFrequency = 50;
  setup.sourceName = "Demo";
  DescribeSubject(setup);
}

void DescribeSession(CSetup& setup, std::size_t channelCount) {
  std::vector<std::size_t> channels(channelCount);
  std::iota(channels.begin(), channels.end(), std::size_t{0});
  DescribeSession(setup, channels);
}

std::uint32_t SizeOf(std::span<const float> values) {
  return static_cast<std::uint32_t>(values.size_bytes());
}

bool SaveWhole(CRecordingFile& recording) {
  return recording.SaveAndClose(0) && recording.IsSavedWhole();
}

// ---- continuous

constexpr std::uint8_t kAnswerKey = 1;

bool AddEvents(const DemoSession& session, CRecordingFile& recording) {
  for (const Tone& tone : session.tones) {
    EventRecord stimulus{};
    stimulus.stimType = static_cast<std::uint16_t>(tone.kind);
    stimulus.point = tone.sample;
    if (!recording.GetEventTable().Append(stimulus)) return false;
    if (tone.answer == 0) continue;
    EventRecord answer{};
    answer.SetKeypad(kAnswerKey);
    answer.point = tone.sample + tone.answer;
    if (!recording.GetEventTable().Append(answer)) return false;
  }
  return true;
}

bool AddLabels(const DemoSession& session, CRecordingFile& recording) {
  return recording.labelList.Add({"eyes closed", 0}) &&
         recording.labelList.Add({"second half", session.samples / 2});
}

// An offset of each electrode, in microvolts.
float OffsetOf(std::size_t channel) {
  return static_cast<float>(40 + 5 * static_cast<int>(channel % 7));
}

// The amplifier was reset in the first third; what it took away since then is given back.
bool CorrectReset(const DemoSession& session, CRecordingFile& recording, std::vector<float>& microvolts) {
  const std::uint32_t resetAt = session.samples / 3;
  OverlayRow before{};
  OverlayRow after{};
  after.startSample = resetAt;
  for (std::size_t c = 0; c < session.channels; ++c) after.channelValue[c] = OffsetOf(c);
  for (std::size_t i = resetAt * session.channels; i < microvolts.size(); ++i) {
    microvolts[i] -= OffsetOf(i % session.channels);
  }
  return recording.overlay.AddRow(before) && recording.overlay.AddRow(after);
}

// The amplifier drifts along a parabola, which is subtracted. The axis of a segment goes from -100 to 100.
bool CorrectDrift(const DemoSession& session, CRecordingFile& recording, std::vector<float>& microvolts) {
  constexpr double kEndOfAxis = 100;
  constexpr int kOrder = 2;
  recording.overlay.params.polyOrder = kOrder;
  recording.overlay.params.polyChannels = static_cast<std::int32_t>(session.channels);
  auto segment = std::make_unique<OverlaySegment>();
  segment->endSample = session.samples;
  const double scales[] = {1, 2 / kEndOfAxis, 1.5 / (kEndOfAxis * kEndOfAxis)};  // by power
  for (const double scale : scales) {
    for (std::size_t c = 0; c < session.channels; ++c) {
      if (!segment->coefficients.Append(scale * static_cast<double>(OffsetOf(c)))) return false;
    }
  }
  for (std::size_t i = 0; i < microvolts.size(); ++i) {
    const auto sample = static_cast<double>(i / session.channels);
    const double t = (sample / session.samples * 2 - 1) * kEndOfAxis;
    const double drift = scales[0] + scales[1] * t + scales[2] * t * t;
    microvolts[i] += static_cast<float>(drift * static_cast<double>(OffsetOf(i % session.channels)));
  }
  return recording.overlay.AddSegment(std::move(segment));
}

bool MakeContinuous(const std::string& path, Host& host, const DemoSession& session, int width) {
  CRecordingFile recording(kSilent, host);
  CSetup& setup = *recording.GetSetup();
  constexpr std::int32_t kWideCounts = 1 << 24;
  DescribeSession(setup, session.channels);
  DescribeTimeAxis(setup, kDemoRate, 0);
  setup.dataKind = kContinuous;
  if (width == 4) setup.adcCounts = kWideCounts;
  for (SetupChannel& channel : setup.Channels()) channel.countScale = StepOf(setup.adcCounts);
  std::vector<float> recorded = session.microvolts;
  if (!AddEvents(session, recording) || !AddLabels(session, recording)) return false;
  if (!CorrectReset(session, recording, recorded)) return false;
  if (width == 4 && !CorrectDrift(session, recording, recorded)) return false;
  return recording.CreateFile(path, width) &&
         recording.AppendContinuousFloat(recorded.data(), SizeOf(recorded)) && SaveWhole(recording);
}

// What a reader gets of it: limited to the converter's steps, and corrected.
std::optional<std::vector<float>> ReadBack(const std::string& path, Host& host, const DemoSession& session) {
  CRecordingFile recording(kSilent, host);
  std::vector<float> microvolts(session.microvolts.size());
  if (!recording.OpenFile(path) ||
      !recording.ReadContinuousFloat(0, session.samples, microvolts.data(), SizeOf(microvolts), 0, 0)) {
    return std::nullopt;
  }
  return microvolts;
}

// ---- what is made of the continuous recording

struct Material {
  Host& host;
  const DemoSession& session;
  std::vector<std::span<const float>> epochs;  // one for each tone
  std::vector<DemoSpectrum> spectra;
};

bool AppendHead(CRecordingFile& recording, const Tone& tone) {
  const float reactionTime = static_cast<float>(tone.answer) / kDemoRate;
  return recording.AppendEpochHead(static_cast<std::uint16_t>(tone.kind), tone.isDisturbed ? 0 : 1, 1,
                                   reactionTime, tone.answer != 0 ? kAnswerKey : 0);
}

void DescribeEpochs(CSetup& setup, const Material& material) {
  DescribeSession(setup, material.session.channels);
  DescribeTimeAxis(setup, kEpochPoints, kPointsBeforeTone);
  setup.dataKind = kEpochs;
  for (SetupChannel& channel : setup.Channels()) channel.countScale = StepOf(setup.adcCounts);
  setup.averagedSweeps = static_cast<std::int32_t>(material.epochs.size());
  setup.sweepCount = setup.averagedSweeps;
}

bool AddMarker(CRecordingFile& recording, const char* name, int sample, int channel, int epoch) {
  auto marker = std::make_unique<CMarker>();
  marker->SetName(name);
  marker->sampleIndex = sample;
  marker->timeMs = 1000.0 * (sample - kPointsBeforeTone) / kDemoRate;
  marker->channel = channel;
  marker->epoch = epoch;
  return recording.markerList.Add(std::move(marker));
}

bool MakeEpochs(const std::string& path, const Material& material) {
  CRecordingFile recording(kSilent, material.host);
  DescribeEpochs(*recording.GetSetup(), material);
  if (!AddMarker(recording, "Tone", kPointsBeforeTone, -1, 0) || !recording.CreateFile(path, 2)) return false;
  for (std::size_t i = 0; i < material.epochs.size(); ++i) {
    const std::span<const float> epoch = material.epochs[i];
    if (!AppendHead(recording, material.session.tones[i]) ||
        !recording.AppendEpochFloat(epoch.data(), SizeOf(epoch))) {
      return false;
    }
  }
  return SaveWhole(recording);
}

void DescribeFrequencyAxis(CSetup& setup) {
  setup.frequencyDomain = 1;
  setup.hasImaginary = 1;
  setup.pointCount = kEpochBins;
  setup.spectrumPoints = kEpochPoints;
  setup.spectrumScale = 1;
  setup.spectrumDisplayEnd = 40;
  setup.timeStart = 0;
}

bool MakeSpectra(const std::string& path, const Material& material) {
  CRecordingFile recording(kSilent, material.host);
  CSetup& setup = *recording.GetSetup();
  DescribeEpochs(setup, material);
  DescribeFrequencyAxis(setup);
  if (!recording.CreateFile(path, 2)) return false;
  for (std::size_t i = 0; i < material.spectra.size(); ++i) {
    CTFDEpoch data(&setup, 0);
    if (data.valid == 0) return false;
    const DemoSpectrum& spectrum = material.spectra[i];
    std::copy(spectrum.real.begin(), spectrum.real.end(), data.mainBlock);
    std::copy(spectrum.imaginary.begin(), spectrum.imaginary.end(), data.imaginaryBlock);
    if (!AppendHead(recording, material.session.tones[i]) || !recording.WriteTimeFrequencyData(&data))
      return false;
  }
  return SaveWhole(recording);
}

// Of the tones of a kind without a blink near them; of all of a session in which there was none.
bool MakeAverage(const std::string& path, const Material& material, ToneKind kind, bool withStatistics) {
  std::vector<std::span<const float>> accepted;
  std::int32_t rejected = 0;
  for (std::size_t i = 0; i < material.epochs.size(); ++i) {
    const Tone& tone = material.session.tones[i];
    if (tone.kind != kind) continue;
    if (tone.isDisturbed) ++rejected;
    if (!tone.isDisturbed) accepted.push_back(material.epochs[i]);
  }
  if (accepted.empty()) accepted = material.epochs;
  const DemoAverage average = AverageOf(accepted, material.session.channels);
  CRecordingFile recording(kSilent, material.host);
  CSetup& setup = *recording.GetSetup();
  DescribeEpochs(setup, material);
  setup.dataKind = kAverage;
  setup.acceptedSweeps = static_cast<std::int32_t>(accepted.size());
  setup.rejectedSweeps = rejected;
  setup.averagedSweeps = setup.acceptedSweeps;
  for (SetupChannel& channel : setup.Channels()) channel.sweeps = setup.acceptedSweeps;
  constexpr int kPeak = kPointsBeforeTone + kDemoRate * 35 / 100;
  const auto pz = static_cast<int>(std::min<std::size_t>(14, material.session.channels - 1));
  if (kind == ToneKind::kRare && !AddMarker(recording, "Late wave", kPeak, pz, 0)) return false;
  if (!recording.CreateFile(path, 2)) return false;
  recording.WriteAverageSection(average.mean.data(), SizeOf(average.mean), 1);
  recording.WriteVarianceSection(average.variance.data(), SizeOf(average.variance));
  if (withStatistics) {
    recording.WriteAverageSection(average.power.data(), SizeOf(average.power), 3);
    recording.WriteAverageSection(average.noise.data(), SizeOf(average.noise), 4);
  }
  return SaveWhole(recording);
}

bool MakePairs(const std::string& path, const Material& material) {
  std::vector<std::size_t> channels = {3, 4, 5, 14, 17, 18, 31};
  if (material.session.channels <= channels.back()) channels = {0, 1};
  CRecordingFile recording(kSilent, material.host);
  CSetup& setup = *recording.GetSetup();
  DescribeSession(setup, channels);
  DescribeTimeAxis(setup, kEpochPoints, 0);
  DescribeFrequencyAxis(setup);
  setup.dataKind = kTimeFrequency;
  for (SetupChannel& channel : setup.Channels()) channel.countScale = StepOf(setup.adcCounts);
  const std::size_t pairs = channels.size() * (channels.size() - 1) / 2;
  CTFDPaired data(&setup, static_cast<std::int32_t>(pairs));
  if (data.ready == 0) return false;
  std::size_t pair = 0;
  for (std::size_t first = 0; first < channels.size(); ++first) {
    for (std::size_t second = first + 1; second < channels.size(); ++second, ++pair) {
      const Coherency coherency = CoherencyOf(material.spectra, channels[first], channels[second]);
      data.pairIndex[0][pair] = static_cast<std::int32_t>(first);
      data.pairIndex[1][pair] = static_cast<std::int32_t>(second);
      std::copy(coherency.real.begin(), coherency.real.end(), data.real[pair]);
      std::copy(coherency.imaginary.begin(), coherency.imaginary.end(), data.imaginary[pair]);
    }
  }
  return recording.CreateFile(path, 2) && recording.WritePairedData(&data) && SaveWhole(recording);
}

bool MakeSetupFile(const std::string& path, Host& host, const DemoSession& session) {
  CRecordingFile recording(kSilent, host);
  CSetup& setup = *recording.GetSetup();
  DescribeSession(setup, session.channels);
  DescribeTimeAxis(setup, kEpochPoints, kPointsBeforeTone);
  setup.fromRecording = 0;
  return setup.SaveTo(path, host.files);
}

constexpr char kContinuousName[] = "continuous.rec";
constexpr char kWideName[] = "continuous_32bit.rec";
constexpr char kEpochsName[] = "epochs.rec";
constexpr char kSpectraName[] = "spectra.rec";
constexpr char kAverageName[] = "average.rec";
constexpr char kStatisticsName[] = "average_statistics.rec";
constexpr char kPairsName[] = "pairs.rec";
constexpr char kSetupName[] = "demo.ast";

}  // namespace

std::vector<std::string> DemoFileNames() {
  return {kContinuousName, kWideName,       kEpochsName, kSpectraName,
          kAverageName,    kStatisticsName, kPairsName,  kSetupName};
}

std::string MakeDemoFiles(FileService& files, const std::string& folder, const DemoPlan& plan) {
  DemoHost demo(files);
  const auto pathOf = [&folder](const char* name) { return (std::filesystem::path(folder) / name).string(); };
  const DemoSession session = RecordSession(plan);
  if (!MakeContinuous(pathOf(kContinuousName), demo.host, session, 2)) return kContinuousName;
  if (!MakeContinuous(pathOf(kWideName), demo.host, session, 4)) return kWideName;
  const auto microvolts = ReadBack(pathOf(kContinuousName), demo.host, session);
  if (!microvolts) return kContinuousName;
  Material material{demo.host, session, {}, {}};
  for (const Tone& tone : session.tones) {
    material.epochs.push_back(EpochOf(*microvolts, session.channels, tone));
    material.spectra.push_back(SpectrumOf(material.epochs.back(), session.channels));
  }
  if (!MakeEpochs(pathOf(kEpochsName), material)) return kEpochsName;
  if (!MakeSpectra(pathOf(kSpectraName), material)) return kSpectraName;
  if (!MakeAverage(pathOf(kAverageName), material, ToneKind::kFrequent, false)) return kAverageName;
  if (!MakeAverage(pathOf(kStatisticsName), material, ToneKind::kRare, true)) return kStatisticsName;
  if (!MakePairs(pathOf(kPairsName), material)) return kPairsName;
  if (!MakeSetupFile(pathOf(kSetupName), demo.host, session)) return kSetupName;
  return {};
}

}  // namespace wavelock::command

// Reading a setup from the run of its sections. Files of older software lack sections, have shorter ones or
// have them in older versions; each step tells what its section then leaves behind. What stands where is told
// by section_tables.h; this file repairs what the stored values should not be.
#include <algorithm>
#include <cmath>
#include <new>
#include <string>

#include "wavelock/numerics/conversions.h"
#include "wavelock/prompts/notices.h"
#include "wavelock/setup/derivations.h"
#include "wavelock/setup/section_tables.h"
#include "wavelock/setup/setup.h"
#include "wavelock/setup/stored_section.h"

namespace wavelock {
namespace {

constexpr std::int32_t kMostChannels = 1 << 20;  // more are more than memory is given for
constexpr std::int32_t kMostLabels = static_cast<std::int32_t>(kSetupLabelCount);
constexpr std::int32_t kGreen = 65280;

bool IsZero(float a, float b) {
  return a == 0 && b == 0;
}

std::int32_t Within(std::int32_t value, std::int32_t least, std::int32_t most, std::int32_t otherwise) {
  return value >= least && value <= most ? value : otherwise;
}

// ----- The main section

constexpr std::string_view kMapFileMissing =
    "The map file %s\n"
    "does not exist or is in another location that was specified by setup file.\n"
    "To fix the problem, renter map file name using the following steps:\n"
    "1. Edit\n"
    "2. Overall settings\n"
    "3. Select a valid Map file name";
constexpr std::string_view kMappingFileMissing =
    "The LDR file %s\n"
    "used for mapping does not exist or is in another location that was specified by setup file.\n"
    "To fix the problem, renter derivation file name using the following steps:\n"
    "1. Edit\n"
    "2. Overall settings\n"
    "3. Select a valid Derivation (LDR) file name";
constexpr std::string_view kOriginalMapping = "Original";

// Tells the person about a file that is named and not there, and forgets the name.
void CheckNamedFile(FixedText<512>& path, std::string_view notice, Host& host) {
  if (path.Empty() || host.files.Exists(std::string(path.View()))) return;
  ShowNotice(host, WithInsertion(notice, path.View()));
  path.Assign({});
}

void CheckFilesOfBands(SetupBands& bands, Host& host) {
  for (SetupBand& band : bands) {
    CheckNamedFile(band.mapFile, kMapFileMissing, host);
    if (band.mappingLdrFile != kOriginalMapping)
      CheckNamedFile(band.mappingLdrFile, kMappingFileMissing, host);
  }
}

bool LoadMainSection(CSetup& setup, CTffFile& file, Host& host) {
  // In the setup of a recording missing files are nothing to tell.
  const bool checksFiles = setup.fromRecording == 0;
  std::uint16_t version = 0;
  if (!ReadExactSection<MainSection>(file, setup, &version)) return false;
  if (checksFiles) CheckFilesOfBands(setup.bands, host);
  setup.derivedCount = {};
  if (version < 2) {
    setup.mainField8192 = 1;
    setup.mainField8196 = 0;
  }
  if (setup.adcCounts == 0) setup.adcCounts = 65536;
  if (setup.adcRangeVolts == 0) setup.adcRangeVolts = 5.5F;
  return true;
}

// ----- Channels

// The whole number of times that the amplifier has raised the signal.
float GainOf(const CSetup& setup, const SetupChannel& channel) {
  if (setup.adcCounts == 0 || channel.countScale == 0) return 0;
  const double microvolts = setup.adcRangeVolts * 1000000.0;
  const double gain = std::trunc(microvolts / setup.adcCounts / channel.countScale + 0.5);
  return static_cast<float>(gain + 0.0);  // a whole number has no zero below zero
}

void SetDefaultColors(SetupChannel& channel) {
  channel.colorA = kGreen;
  channel.colorB = channel.colorC = channel.colorD = 0;
}

void LoadChannel(CSetup& setup, const StoredSection<ChannelSection>& record, SetupChannel& channel) {
  record.LoadInto(channel);
  if (!std::isfinite(channel.signalRatio)) channel.signalRatio = 0;
  channel.gain = GainOf(setup, channel);
  if (record.Version() == 0) SetDefaultColors(channel);
  for (ChannelLink& link : channel.links) link.linkIndex = Within(link.linkIndex, -1, 8, -1);
}

// Not many more channels than the container has room for; a count beyond that fails when they run out. No
// channels are left of a count that cannot be true.
bool MakeRoomForChannels(CSetup& setup, CTffFile& file) {
  constexpr std::int32_t kMadeAnyway = 4096;
  constexpr std::int32_t kNone = -1;
  if (setup.channelCapacity > kMostChannels) return setup.channels.Make(kNone);
  const std::uint64_t room = file.Length() / ChannelSection::kSize;
  const auto most = static_cast<std::int32_t>(std::min<std::uint64_t>(room, kMostChannels));
  return setup.channels.Make(std::min(setup.channelCapacity, std::max(most, kMadeAnyway)));
}

// Also a setup without channels must have the first record.
bool LoadChannels(CSetup& setup, CTffFile& file) {
  if (!MakeRoomForChannels(setup, file)) return false;
  StoredSection<ChannelSection> record;
  if (!record.Read(file) || !record.IsWhole()) return false;
  std::uint32_t tag = ChannelSection::kTag;
  for (std::int32_t i = 0; i < setup.channelCount; ++i) {
    const auto index = static_cast<std::size_t>(i);
    if (i > 0 && !record.ReadWholeOfRun(file, ++tag)) return false;
    // Records that lie in each other's payloads can be more than there is room for.
    if (index >= setup.channels.Size()) return false;
    LoadChannel(setup, record, setup.channels[index]);
  }
  setup.hasPositions = setup.PositionsSpread() ? 1 : 0;
  return true;
}

// ----- Axis, trigger, spectrum

void LoadTimeAxis(CSetup& setup, CTffFile& file) {
  std::uint16_t version = 0;
  if (!ReadExactSection<TimeAxisSection>(file, setup, &version)) return;
  if (version == 0) {
    setup.acceptedSweeps = setup.rejectedSweeps = setup.averagedSweeps = 0;
  } else {
    const double end = setup.AxisEndMs();
    for (float* window : {&setup.windowAEnd, &setup.windowBEnd, &setup.displayEnd})
      if (*window > end) *window = static_cast<float>(end);
  }
  const std::int32_t sweeps = setup.channels[0].sweeps;
  const std::int64_t bothSweeps = std::int64_t{setup.acceptedSweeps} + setup.rejectedSweeps;
  if (WrapToInt32(bothSweeps) == 0) setup.acceptedSweeps = sweeps;
  if (setup.averagedSweeps == 0) setup.averagedSweeps = sweeps;
}

void LoadTrigger(CSetup& setup, CTffFile& file) {
  if (!ReadExactSection<TriggerSection>(file, setup)) return;
  if (setup.triggerMode == kRetiredTriggerMode) setup.triggerMode = kUsualTriggerMode;
}

void LoadSpectrum(CSetup& setup, CTffFile& file) {
  constexpr std::int32_t kUsual = 2;
  std::uint16_t version = 0;
  if (!ReadExactSection<SpectrumSection>(file, setup, &version)) return;
  for (std::int32_t* field : {&setup.spectrumField84, &setup.spectrumField88})
    if (version < 2 || *field == 0) *field = kUsual;
}

void LoadFlagA(CSetup& setup, CTffFile& file) {
  constexpr float kFirstMilliseconds = 50;  // older software stored milliseconds in place of seconds
  if (!ReadExactSection<FlagASection>(file, setup)) return;
  if (setup.windowSeconds >= kFirstMilliseconds)
    setup.windowSeconds = static_cast<float>(setup.windowSeconds * 0.001);
}

// ----- Derived channels

// Outputs of a derivation file that have no stored channel get a default one that bears their number.
void LoadDerivedChannel(CTffFile& file, std::uint32_t tag, std::int32_t index, SetupChannel& channel) {
  StoredSection<DerivedChannelSection> record;
  if (!record.Read(file, tag) || !record.IsWhole()) {
    channel = DefaultDerivedChannel(index, std::to_string(index + 1));
    return;
  }
  record.LoadInto(channel);
  if (record.Version() == 0) SetDefaultColors(channel);
}

void LoadChannelGroups(CSetup& setup, CTffFile& file) {
  for (std::int32_t& count : setup.derivedCount) count = Within(count, 0, CSetup::channelLimit, 0);
  for (std::size_t group = 0; group < kDerivationFileCount; ++group) {
    setup.MakeChannelGroup(static_cast<std::int32_t>(group));
    std::int32_t index = 0;
    for (SetupChannel& channel : setup.GroupChannels(group)) {
      const std::uint32_t tag = tag::kFirstDerivedChannel[group] + static_cast<std::uint32_t>(index);
      LoadDerivedChannel(file, tag, index++, channel);
    }
  }
}

// ----- Labels

// A label without code or text does not count, and leaves its place as it was.
void LoadArtifactLabels(CSetup& setup, CTffFile& file) {
  const std::int32_t stored = std::min(setup.artifactLabelCount, kMostLabels);
  std::int32_t taken = 0;
  StoredSection<LabelSection> record;
  for (std::int32_t i = 0; i < stored; ++i) {
    if (!record.Read(file, tag::kFirstArtifactLabel + static_cast<std::uint32_t>(i))) break;
    SetupLabel label;
    record.LoadInto(label);
    if (label.code == 0 || label.text.Empty()) continue;
    setup.artifactLabels[static_cast<std::size_t>(i)] = label;
    ++taken;
  }
  setup.artifactLabelCount = taken;
  if (taken == 0) setup.ResetArtifactLabels();
}

void LoadEventLabels(CSetup& setup, CTffFile& file) {
  setup.eventLabelCount = std::min(setup.eventLabelCount, kMostLabels);
  StoredSection<LabelSection> record;
  for (std::int32_t i = 0; i < setup.eventLabelCount; ++i) {
    if (!record.Read(file, tag::kFirstEventLabel + static_cast<std::uint32_t>(i))) return;
    record.LoadInto(setup.eventLabels[static_cast<std::size_t>(i)]);
  }
}

// ----- Subject, waveforms, tables

void LoadSubject(CSubjectInfo& subject, CTffFile& file) {
  StoredSection<SubjectSection> record;
  if (record.Read(file)) record.LoadInto(subject);
}

// A short section replaces the beginning of what there is.
template <class Section>
void LoadOver(typename Section::Model& model, CTffFile& file) {
  StoredSection<Section> record;
  record.TakeFrom(model);
  if (record.ReadOver(file)) record.LoadInto(model);
}

void LoadWaveforms(WaveformSet& waveforms, CTffFile& file) {
  LoadOver<WaveformSourcesSection>(waveforms, file);
  waveforms.ClearHandles();
  LoadOver<WaveformSlotsSection>(waveforms, file);
  LoadOver<WaveformNamesSection>(waveforms.names, file);
}

void LoadRecordTable(CSetup& setup, CTffFile& file) {
  const auto count =
      static_cast<std::uint32_t>(std::clamp(setup.recordTableCount, 0, RecordTableEntry::kMostEntries));
  for (std::uint32_t i = 0; i < count; ++i) {
    RecordTableEntry entry(setup.recordTable, i);
    StoredSection<RecordTableSection> record;
    record.TakeFrom(entry);
    if (!record.ReadOver(file, RecordTableSection::kTag + i)) return;
    record.LoadInto(entry);
  }
}

// ----- Parameter blocks

void LoadParamsA(CSetup& setup, CTffFile& file) {
  ParamsA& params = setup.paramsA;
  StoredSection<ParamsASection> record;
  if (!record.Read(file) || record.Version() == 0) {
    params = {};
    params.aChannel = params.aChannel2 = setup.KChannel();
    return;
  }
  record.LoadInto(params);
  const ParamsA usual;
  params.aCount = Within(params.aCount, 1, 500, usual.aCount);
  if (IsZero(params.aRangeLow, params.aRangeHigh)) {
    params.aRangeLow = usual.aRangeLow;
    params.aRangeHigh = usual.aRangeHigh;
  }
  if (IsZero(params.aWindowStart, params.aWindowEnd)) {
    params.aWindowStart = usual.aWindowStart;
    params.aWindowEnd = usual.aWindowEnd;
  }
  if (params.aLevel == 0) params.aLevel = usual.aLevel;
  // The place behind the last channel counts as one.
  params.aChannel = Within(params.aChannel, 0, setup.channelCount, setup.KChannel());
  params.aChannel2 = Within(params.aChannel2, 0, setup.channelCount, params.aChannel);
}

constexpr float kUsualLevelB = 100;

// What a setup without the section gets, which is not what a new setup has.
ParamsB ParamsBOfOlderSetups() {
  ParamsB params;
  params.bLevel = kUsualLevelB;
  params.bField44 = 5;
  params.bSpare = 1;
  params.bFilter.description.value2 = 15;
  return params;
}

void LoadParamsB(ParamsB& params, CTffFile& file) {
  if (!ReadExactSection<ParamsBSection>(file, params)) {
    params = ParamsBOfOlderSetups();
    return;
  }
  const ParamsB usual;
  params.bCount = Within(params.bCount, 1, 500, usual.bCount);
  if (IsZero(params.bWindowStart, params.bWindowEnd)) {
    params.bWindowStart = usual.bWindowStart;
    params.bWindowEnd = usual.bWindowEnd;
  }
  if (params.bLevel == 0) params.bLevel = kUsualLevelB;
}

// Older sections end before cField40 or before cField48. The substitutes are not those of a new setup.
void LoadParamsC(ParamsC& params, CTffFile& file) {
  constexpr std::uint64_t kSizeUpToField40 = 40;
  constexpr std::uint64_t kSizeUpToField48 = 48;
  StoredSection<ParamsCSection> record;
  record.Read(file);
  if (record.Length() < kSizeUpToField40) return;
  record.LoadInto(params);
  if (record.Length() < kSizeUpToField48) params.cField40 = params.cField44 = 0;
  if (!record.IsWhole()) {
    params.cField48 = params.cField52 = params.cField56 = 0;
    params.cField60 = 15;
  }
  params.cCount = Within(params.cCount, 1, 500, 3);
  if (IsZero(params.cWindowStart, params.cWindowEnd)) {
    params.cWindowStart = -100;
    params.cWindowEnd = 400;
  }
  if (params.cLevel == 0) params.cLevel = 200;
  if (IsZero(params.cRangeLow, params.cRangeHigh)) {
    params.cRangeLow = -800;
    params.cRangeHigh = 800;
  }
}

// ----- Auxiliary inputs

// Slope and offset from the ends of the range in physical units. An input without a range has neither.
void WorkOutScale(const AuxInput& input) {
  AuxInputs& inputs = input.inputs;
  const std::size_t i = input.index;
  const double range = static_cast<double>(inputs.auxRawHigh[i]) - inputs.auxRawLow[i];
  if (range == 0) {
    inputs.auxSlope[i] = inputs.auxOffset[i] = 0;
    return;
  }
  inputs.auxSlope[i] = static_cast<float>((static_cast<double>(input.highEnd) - input.lowEnd) / range);
  const double slope = inputs.auxSlope[i];
  inputs.auxOffset[i] = static_cast<float>((input.highEnd - inputs.auxRawHigh[i] * slope) / slope);
}

void LoadAuxInputs(AuxInputs& inputs, CTffFile& file) {
  StoredSection<AuxInputSection> record;
  for (std::uint32_t i = 0; i < kAuxInputCount; ++i) {
    const std::uint32_t tag = AuxInputSection::kTag + i;
    const bool isThere = i == 0 ? record.Read(file) && record.IsWhole() : record.ReadWholeOfRun(file, tag);
    if (!isThere) return;
    AuxInput input{inputs, i};
    record.LoadInto(input);
    WorkOutScale(input);
  }
}

void LoadSetup(CSetup& setup, CTffFile& file, Host& host) {
  LoadTimeAxis(setup, file);
  LoadTrigger(setup, file);
  ReadExactSection<FilterSection>(file, setup);
  LoadSpectrum(setup, file);
  LoadFlagA(setup, file);
  LoadDerivationFiles(setup, host);
  LoadChannelGroups(setup, file);
  LoadArtifactLabels(setup, file);
  LoadEventLabels(setup, file);
  LoadSubject(*setup.subject, file);
  LoadWaveforms(setup.waveforms, file);
  if (setup.dataKind != kContinuous) {
    setup.AdjustSlots(static_cast<float>(setup.AxisStartMs()), static_cast<float>(setup.AxisEndMs()),
                      setup.sampleRate);
  }
  if (!ReadExactSection<DisplayOrderSection>(file, setup)) setup.ResetDisplayOrder();
  LoadRecordTable(setup, file);
  LoadParamsA(setup, file);
  LoadParamsB(setup.paramsB, file);
  LoadParamsC(setup.paramsC, file);
  if (!ReadExactSection<SpareSection>(file, setup)) setup.block1010 = {};
  LoadAuxInputs(setup.auxInputs, file);
  if (!ReadExactSection<SourceNameSection>(file, setup)) setup.ResetSourceName();
}

}  // namespace

bool CSetup::Load(CTffFile& file) try {
  if (!LoadMainSection(*this, file, *host_)) return false;
  channelCapacity = std::max(channelCount, channelLimit);
  wideSamples = file.HasWideSamples() ? 1 : 0;
  if (!LoadChannels(*this, file)) return false;
  LoadSetup(*this, file, *host_);
  modified = 0;
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace wavelock

// Writing a setup as the run of its sections, in the order that readers of one pass expect. A record that
// cannot be written does not keep later ones from being tried.
#include <algorithm>

#include "wavelock/setup/section_tables.h"
#include "wavelock/setup/setup.h"
#include "wavelock/setup/stored_section.h"

namespace wavelock {
namespace {

constexpr std::int32_t kMostLabels = static_cast<std::int32_t>(kSetupLabelCount);

// A record for each of `models`, with tags counting up; ends with the first that cannot be written.
template <class Section, class Models>
void WriteRun(Models&& models, CTffFile& file, std::uint32_t firstTag = Section::kTag) {
  for (auto& model : models) {
    if (!WriteSectionOf<Section>(model, file, firstTag++)) return;
  }
}

void WriteDerivedChannels(std::span<SetupChannel> channels, CTffFile& file, std::uint32_t firstTag) {
  for (SetupChannel& channel : channels) WriteSectionOf<DerivedChannelSection>(channel, file, firstTag++);
}

std::span<SetupLabel> FirstLabels(SetupLabels& labels, std::int32_t count) {
  return std::span(labels).first(static_cast<std::size_t>(std::clamp(count, 0, kMostLabels)));
}

void WriteRecordTable(CSetup& setup, CTffFile& file) {
  const auto count =
      static_cast<std::uint32_t>(std::clamp(setup.recordTableCount, 0, RecordTableEntry::kMostEntries));
  for (std::uint32_t i = 0; i < count; ++i) {
    RecordTableEntry entry(setup.recordTable, i);
    if (!WriteSectionOf<RecordTableSection>(entry, file, RecordTableSection::kTag + i)) return;
  }
}

float PhysicalEnd(float raw, const AuxInput& input) {
  const double offset = input.inputs.auxOffset[input.index];
  return static_cast<float>((raw + offset) * input.inputs.auxSlope[input.index]);
}

void WriteAuxInputs(AuxInputs& inputs, CTffFile& file) {
  for (std::uint32_t i = 0; i < kAuxInputCount; ++i) {
    AuxInput input{inputs, i};
    input.lowEnd = PhysicalEnd(inputs.auxRawLow[i], input);
    input.highEnd = PhysicalEnd(inputs.auxRawHigh[i], input);
    if (!WriteSectionOf<AuxInputSection>(input, file, AuxInputSection::kTag + i)) return;
  }
}

}  // namespace

bool CSetup::Write(CTffFile& file) {
  if (triggerMode == kRetiredTriggerMode) triggerMode = kUsualTriggerMode;
  file.SetWideSamples(wideSamples);
  file.WriteHeader();
  WriteSectionOf<MainSection>(*this, file);
  WriteSectionOf<TimeAxisSection>(*this, file);
  WriteSectionOf<TriggerSection>(*this, file);
  WriteSectionOf<FilterSection>(*this, file);
  WriteSectionOf<SpectrumSection>(*this, file);
  WriteSectionOf<FlagASection>(*this, file);
  WriteRun<ChannelSection>(Channels(), file);
  for (std::size_t group = 0; group < channelGroups.size(); ++group)
    WriteDerivedChannels(GroupChannels(group), file, tag::kFirstDerivedChannel[group]);
  WriteRun<LabelSection>(FirstLabels(artifactLabels, artifactLabelCount), file, tag::kFirstArtifactLabel);
  eventLabelCount = std::min(eventLabelCount, kMostLabels);
  WriteRun<LabelSection>(FirstLabels(eventLabels, eventLabelCount), file, tag::kFirstEventLabel);
  WriteSectionOf<WaveformSourcesSection>(waveforms, file);
  WriteSectionOf<WaveformSlotsSection>(waveforms, file);
  WriteSectionOf<WaveformNamesSection>(waveforms.names, file);
  WriteSectionOf<SubjectSection>(*subject, file);
  WriteSectionOf<DisplayOrderSection>(*this, file);
  WriteRecordTable(*this, file);
  WriteSectionOf<ParamsASection>(paramsA, file);
  WriteSectionOf<ParamsBSection>(paramsB, file);
  WriteSectionOf<ParamsCSection>(paramsC, file);
  WriteSectionOf<SpareSection>(*this, file);
  WriteAuxInputs(auxInputs, file);
  WriteSectionOf<SourceNameSection>(*this, file);
  modified = 0;
  return true;
}

}  // namespace wavelock

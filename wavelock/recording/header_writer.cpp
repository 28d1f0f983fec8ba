// From the setup to the fixed header, always in its current form. What the setup has no field for is written
// as zero or as a constant. A value that cannot stand in a header is replaced there, and in the setup too
// unless it says otherwise.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "wavelock/numerics/conversions.h"
#include "wavelock/recording/header_tables.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// A single, though a reader of headers has it as a double: a calibration need not come back bit for bit.
constexpr float kCalibrationScale = 204.8f;
constexpr double kGridWidth = 640;
constexpr double kGridHeight = 187;
constexpr double kGridOriginY = 13;
constexpr double kSecondsPerMs = 0.001;

bool IsKnownKind(int dataKind) {
  return dataKind >= kAverage && dataKind <= kTimeFrequency;
}

float InSeconds(float ms) {
  return static_cast<float>(ms * kSecondsPerMs);
}

// The low bits, as a field of that width takes them.
template <class Field>
void TakeLow(Field& field, std::int32_t value) {
  field = static_cast<typename Field::Value>(value);
}

template <class Value>
void ReplaceOutside(Value& value, Value low, Value high, Value substitute) {
  if (value < low || value > high) value = substitute;
}

// ---- the header, in the order of its fields as far as one does not need another

void FillTexts(const CSubjectInfo& subject, RecordingHeader& header) {
  header.versionText.Assign("Version 3.0");
  header.subjectTextA.Assign(subject.subjectTextA);
  header.operatorName.Assign(subject.operatorName);
  header.researcherName.Assign(subject.researcherName);
  header.subjectTextB.Assign(subject.subjectTextB);
  header.instituteName.Assign(subject.instituteName);
  header.subjectTextC.Assign(subject.subjectTextC);
  header.subjectTextD.Assign(subject.subjectTextD);
  header.subjectTextE.Assign(subject.subjectTextE);
  header.subjectTextF.Assign(subject.subjectTextF);
  header.subjectTextG.Assign(subject.subjectTextG);
  TakeLow(header.subjectAge, subject.age);
  header.subjectSex = subject.sex == 1 ? 'F' : subject.sex == 0 ? 'M' : 'U';
  header.subjectHand = subject.hand == 1 ? 'L' : subject.hand == 0 ? 'R' : subject.hand == 2 ? 'M' : 'U';
  const std::string_view date =
      std::string_view(subject.recordDate).substr(0, header.recordDate.Bytes().size());
  std::copy(date.begin(), date.end(), header.recordDate.Bytes().begin());
  header.recordTime.Assign(subject.recordTime);
}

// Texts that old readers want there.
constexpr std::string_view kDashes = "--------";

void FillSummaryDashes(RecordingHeader& header) {
  header.dashTextA.Assign(kDashes);
  header.dashTextB.Assign(kDashes);
}

void FillDashes(RecordingHeader& header) {
  header.dashTextC.Assign(kDashes);
  header.dashTextD.Assign(kDashes);
  header.dashTextE.Assign(kDashes);
  header.dashTextF.Assign(kDashes);
  header.dashTextG.Assign(kDashes);
}

void FillSummary(CSetup& setup, RecordingHeader& header) {
  ReplaceOutside(setup.summaryA, 0.0f, 200.0f, 0.0f);
  ReplaceOutside(setup.summaryC, 0.0f, 100.0f, 0.0f);
  ReplaceOutside(setup.summaryD, 0.0f, 100000000.0f, 0.0f);
  header.summaryA = setup.summaryA;
  header.summaryC = setup.summaryC;
  header.summaryD = setup.summaryD;
  TakeLow(header.summaryB, setup.summaryB);
  header.summaryScale = 1.0f;
}

void FillCounts(const CSetup& setup, RecordingHeader& header) {
  TakeLow(header.sweepCount, setup.sweepCount);
  TakeLow(header.averagedSweeps, setup.averagedSweeps);
  if (header.averagedSweeps == 0 && setup.channels.Size() > 0) {
    TakeLow(header.averagedSweeps, setup.channels[0].sweeps);  // the setup keeps its own
  }
  TakeLow(header.acceptedSweeps, setup.acceptedSweeps);
  TakeLow(header.rejectedSweeps, setup.rejectedSweeps);
  TakeLow(header.pointCount, setup.pointCount);
  TakeLow(header.channelCount, setup.channelCount);
  TakeLow(header.countC, setup.countC);
  TakeLow(header.frequencyDomain, setup.frequencyDomain);
  TakeLow(header.hasVariance, setup.hasVariance);
  header.rateCode = EncodeRate(setup.sampleRate);
  header.defaultCalibration = 1.0;
}

void FillAnalysis(CSetup& setup, RecordingHeader& header) {
  ReplaceOutside(setup.flagA, 0, 1, 0);
  ReplaceOutside(setup.valueA, 0.0f, 100.0f, 10.0f);
  ReplaceOutside(setup.indexA, 0, CSetup::channelLimit, 0);
  ReplaceOutside(setup.flagB, 0, 1, 0);
  ReplaceOutside(setup.windowSeconds, 0.0f, 10000.0f, 0.6f);
  ReplaceOutside(setup.valueB, 0, 100000, 20);
  TakeLow(header.flagA, setup.flagA);
  header.valueA = setup.valueA;
  TakeLow(header.indexA, setup.indexA);
  TakeLow(header.flagB, setup.flagB);
  const std::int32_t points =
      TruncateToInt32(static_cast<double>(setup.actualRate) * setup.windowSeconds + 0.5);
  TakeLow(header.windowPoints, WrapToInt32(std::int64_t{points} + 1));
  TakeLow(header.valueB, setup.valueB);
}

// What the amplifier multiplied by, from the range of its converter. 0 where the setup does not say.
std::int32_t AmplifierGain(const CSetup& setup, const SetupChannel& channel) {
  constexpr double kMicrovoltsPerVolt = 1000000;
  const double countsInMicrovolts = static_cast<double>(setup.adcCounts) * channel.countScale;
  if (countsInMicrovolts == 0) return 0;
  return WrapToInt32(
      Truncate<std::int64_t>(setup.adcRangeVolts * kMicrovoltsPerVolt / countsInMicrovolts + 0.5));
}

void FillAmplifier(CSetup& setup, RecordingHeader& header) {
  if (setup.adcRangeVolts <= 0) setup.adcRangeVolts = 5.5f;
  if (setup.adcCounts == 0) setup.adcCounts = 65536;
  header.mainsOn = setup.mainsFrequency != 0 ? 1 : 0;
  if (setup.channels.Size() == 0) return;
  const SetupChannel& first = setup.channels[0];
  header.ampGain = static_cast<float>(AmplifierGain(setup, first));
  header.lowpassIndex = IndexOf(kLowpassHz, first.lowpassHz);
  header.highpassIndex = IndexOf(kHighpassHzWhenWriting, first.highpassHz);
}

void FillWindows(const CSetup& setup, RecordingHeader& header) {
  TakeLow(header.baselineFlag, setup.baselineFlag);
  header.windowAStart = InSeconds(setup.windowAStart);
  header.windowAEnd = InSeconds(setup.windowAEnd);
  TakeLow(header.rejectFlag, setup.rejectFlag);
  header.windowBStart = InSeconds(setup.windowBStart);
  header.windowBEnd = InSeconds(setup.windowBEnd);
  header.rejectMin = setup.rejectMin;
  header.rejectMax = setup.rejectMax;
}

void FillTrigger(CSetup& setup, RecordingHeader& header) {
  if (setup.triggerMode == 1) setup.triggerMode = 2;
  TakeLow(header.triggerMode, setup.triggerMode);
  header.triggerValue = setup.triggerMode == 0 ? setup.triggerValue : static_cast<float>(setup.triggerCount);
  TakeLow(header.triggerChannel, setup.triggerChannel);
  header.triggerX = setup.triggerX;
  header.triggerFlagCode = setup.triggerCommon != 0 ? 2 : setup.triggerFlagA == 0 ? 1 : 0;
}

void FillAxes(const CSetup& setup, RecordingHeader& header) {
  const bool isSpectrum = setup.frequencyDomain != 0;
  TakeLow(header.autoScale, isSpectrum ? 1 : setup.autoScale);
  header.displayMin = isSpectrum ? setup.spectrumDisplayMin : setup.displayMin;
  header.displayMax = isSpectrum ? setup.spectrumDisplayMax : setup.displayMax;
  header.timeStart = isSpectrum ? 0.0f : setup.timeStart;
  header.timeEnd =
      isSpectrum
          ? setup.spectrumEnd
          : static_cast<float>(setup.pointCount / static_cast<double>(setup.actualRate) + setup.timeStart);
  header.viewStart = header.timeStart;
  header.viewEnd = header.timeEnd;
}

void FillDisplay(const CSetup& setup, RecordingHeader& header) {
  TakeLow(header.triggerCommon, setup.triggerCommon);
  const bool isSpectrum = setup.frequencyDomain != 0;
  header.displayStart = isSpectrum ? setup.spectrumDisplayStart : InSeconds(setup.displayStart);
  header.displayEnd = isSpectrum ? setup.spectrumDisplayEnd : InSeconds(setup.displayEnd);
  if (header.displayStart < header.timeStart) header.displayStart = header.timeStart;
  if (header.displayEnd > header.timeEnd) header.displayEnd = header.timeEnd;
  const std::int32_t scale = setup.spectrumScale;
  header.spectrumScale = static_cast<std::uint8_t>(scale == 1 || scale == 2 ? scale : 0);
}

// What a header that was read held there outlives the subject's own date.
void FillRawBytes(const CSetup& setup, RecordingHeader& header) {
  header.rawBlock540 = setup.rawBlock540;
  std::copy(setup.recordDateRaw.begin(), setup.recordDateRaw.end(), header.recordDate.Bytes().begin());
  std::copy(setup.recordTimeRaw.begin(), setup.recordTimeRaw.end(), header.recordTime.Bytes().begin());
}

void FillFilter(const CSetup& setup, RecordingHeader& header) {
  header.mainsCode = setup.mainsFrequency == 50 ? 1 : setup.mainsFrequency == 60 ? 2 : 0;
  TakeLow(header.filterMode, setup.filterMode);
  header.filterValueA = setup.filterValueA;
  TakeLow(header.filterValueB, TruncateToInt32(setup.filterValueB));
  TakeLow(header.filterValueC, setup.filterValueC);
  TakeLow(header.filterValueD, TruncateToInt32(setup.filterValueD));
  TakeLow(header.filterValueE, TruncateToInt32(setup.filterValueE));
  header.filterValueF = setup.filterValueF;
  header.filterValueG = setup.filterValueG;
  TakeLow(header.filterValueH, setup.filterValueH);
}

// The smallest box of all, at most the whole display.
void FillBoxSize(const CSetup& setup, RecordingHeader& header) {
  double width = 1.0;
  double height = 1.0;
  for (const SetupChannel& channel : setup.Channels()) {
    width = std::min(width, static_cast<double>(channel.boxRight[0]) - channel.boxLeft[0]);
    height = std::min(height, static_cast<double>(channel.boxBottom[0]) - channel.boxTop[0]);
  }
  header.boxWidth = static_cast<float>(width * kGridWidth);
  header.boxHeight = static_cast<float>(height * kGridHeight);
}

void FillForm(const CSetup& setup, RecordingHeader& header) {
  constexpr std::int8_t kRevision = 16;
  header.binWidth = static_cast<float>(static_cast<double>(setup.actualRate) / setup.spectrumPoints);
  header.headerRevision = kRevision;
  header.countD = 1;
  FillBoxSize(setup, header);
  TakeLow(header.flagC, setup.flagC);
  header.timeFrequencyFlag = setup.dataKind == kTimeFrequency ? 1 : 0;
  header.sampleLayout = setup.dataKind == kContinuous ? 1 : 0;
  header.blockBytes = 1;
  TakeLow(header.headerByteA, setup.headerByteA);
  TakeLow(header.headerByteB, setup.headerByteB);
}

// ---- the channels

std::uint8_t SelectedLayout(const SetupChannel& channel) {
  for (std::size_t k = 1; k < kLayoutCount; ++k) {
    if (channel.layoutSelected[k] != 0) return static_cast<std::uint8_t>(k);
  }
  return 0;
}

void FillChannel(const CSetup& setup, const SetupChannel& channel, ChannelRecord& record) {
  record.label.Assign(channel.label.View());
  record.channelLink = -1;
  TakeLow(record.channelType, channel.channelType);
  TakeLow(record.channelFlagA, channel.channelFlagA);
  TakeLow(record.channelFlagC, channel.channelFlagC);
  record.enabled = channel.disabled == 0 ? 1 : 0;
  TakeLow(record.sweeps, channel.sweeps);
  record.boxX = static_cast<float>(channel.boxLeft[0] * kGridWidth);
  record.boxY = static_cast<float>(channel.boxTop[0] * kGridHeight + kGridOriginY);
  record.signalRatio = channel.signalRatio;
  record.calibration = channel.countScale * kCalibrationScale;
  TakeLow(record.gainIndex, IndexOf(kGainsWhenWriting, AmplifierGain(setup, channel)));
  TakeLow(record.highpassIndex, IndexOf(kHighpassHzWhenWriting, channel.highpassHz));
  TakeLow(record.lowpassIndex, IndexOf(kLowpassHz, channel.lowpassHz));
  record.layoutIndex = SelectedLayout(channel);
  TakeLow(record.channelFlagD, channel.channelFlagD);
  TakeLow(record.physicalChannel, channel.physicalChannel);
  record.sensitivity = channel.channelScale;
}

}  // namespace

// The kind is looked at half-way: a setup of an unknown kind leaves what stands before it.
bool CRecordingFile::FillHeader(CSetup* from, void* buffer) {
  if (from == nullptr || buffer == nullptr || !IsStorableChannelCount(from->channelCount)) return false;
  CSetup& source = *from;
  std::memset(buffer, 0, HeaderSizeFor(source.channelCount));
  auto& header = *static_cast<RecordingHeader*>(buffer);
  source.UpdateTimeAxis();
  const int kind = source.dataKind;
  if (IsKnownKind(kind)) header.fileForm = kKindCodes[kind].fileForm;
  FillTexts(*source.subject, header);
  FillSummary(source, header);
  FillSummaryDashes(header);
  FillCounts(source, header);
  FillAnalysis(source, header);
  FillAmplifier(source, header);
  FillWindows(source, header);
  FillTrigger(source, header);
  FillAxes(source, header);
  if (!IsKnownKind(kind)) return false;
  header.acquisitionMode = kKindCodes[kind].acquisitionMode;
  FillRawBytes(source, header);
  FillDisplay(source, header);
  FillFilter(source, header);
  FillDashes(header);
  FillForm(source, header);
  auto* record = reinterpret_cast<ChannelRecord*>(&header + 1);
  for (const SetupChannel& channel : source.Channels()) FillChannel(source, channel, *record++);
  if (source.channelCount > 0) {
    header.gainBase = kGainBaseWhenWriting;
    header.sampleCountField = static_cast<std::uint32_t>(SamplesOfFile());
    header.eventCount = static_cast<std::uint32_t>(eventGroup.Size());
  }
  return true;
}

bool CRecordingFile::WriteHeaderBlock(const void* buffer, File* target, int size) {
  if (buffer == nullptr || target == nullptr || size < 1) return false;
  return target->Write({static_cast<const std::byte*>(buffer), static_cast<std::size_t>(size)});
}

}  // namespace wavelock

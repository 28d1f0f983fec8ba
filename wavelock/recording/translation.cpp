// From the fixed header to the setup: seconds become milliseconds, indexes become hertz, and places on the
// display grid become fractions of the display. What a header does not state keeps the default of a new
// setup.
//
// The order matters: later steps read what earlier ones set. Where a step asks for the domain it asks the
// header, as the setup of a continuous recording is brought back to the time domain on the way.
#include <algorithm>
#include <cmath>
#include <new>
#include <string>

#include "wavelock/numerics/conversions.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/recording/header_tables.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// One unit of the display grid as a fraction of the display, and where its vertical origin lies.
constexpr double kGridX = 0.0015625;     // 1 / 640
constexpr double kGridY = 0.0053475937;  // 1 / 187
constexpr double kGridOriginY = 13;

// `calibration` in the file is this many times the microvolts of one count.
constexpr double kCalibrationScale = 204.8;

constexpr double kMsPerSecond = 1000.0;

float InMs(float seconds) {
  return static_cast<float>(seconds * kMsPerSecond);
}

bool IsTimeDomain(const RecordingHeader& header) {
  return header.frequencyDomain == 0;
}

double AxisExtent(const RecordingHeader& header) {
  return static_cast<double>(header.timeEnd) - static_cast<double>(header.timeStart);
}

// 3 and 5 give 4, 6 gives 8: a tie goes to the larger.
std::int32_t NearestPowerOfTwo(std::int32_t value) {
  if (value < 3) return 2;
  std::int64_t power = 4;
  while (power < value) power *= 2;
  const bool lowerIsNearer = power - value > value - power / 2;
  return static_cast<std::int32_t>(std::min<std::int64_t>(lowerIsNearer ? power / 2 : power, 0x7FFFFFFF));
}

// ---- plain fields

void TakeAcquisition(const RecordingHeader& header, CSetup& setup) {
  constexpr int kMainsHertz[] = {0, 50, 60};
  setup.mainsFrequency = EntryAt(kMainsHertz, header.mainsCode, 0);
  setup.frequencyDomain = static_cast<std::int8_t>(header.frequencyDomain);
  // A continuous recording is never a spectrum: this brings it back.
  if (setup.dataKind == kContinuous && setup.frequencyDomain != 0) setup.UpdateTimeAxis();
  setup.headerByteA = header.headerByteA;
  setup.headerByteB = header.headerByteB;
  setup.flagC = header.flagC;
}

void TakeWindowsAndDisplay(const RecordingHeader& header, CSetup& setup) {
  setup.autoScale = header.autoScale;
  setup.pointCount = header.pointCount;
  setup.baselineFlag = header.baselineFlag;
  setup.windowAStart = InMs(header.windowAStart);
  setup.windowAEnd = InMs(header.windowAEnd);
  setup.rejectFlag = header.rejectFlag;
  setup.windowBStart = InMs(header.windowBStart);
  setup.windowBEnd = InMs(header.windowBEnd);
  setup.rejectMin = header.rejectMin;
  setup.rejectMax = header.rejectMax;
  setup.sweepCount = header.sweepCount;
  setup.countC = header.countC;
  setup.displayMax = header.displayMax;
  setup.displayMin = header.displayMin;
  if (IsTimeDomain(header)) {
    setup.displayStart = InMs(header.displayStart);
    setup.displayEnd =
        static_cast<float>((header.pointCount - 1) * kMsPerSecond / setup.sampleRate + setup.displayStart);
  } else {
    setup.displayStart = header.displayStart;
    setup.displayEnd = header.displayEnd;
  }
}

void TakeTrigger(const RecordingHeader& header, CSetup& setup) {
  setup.triggerMode = header.triggerMode == 1 ? 2 : int{header.triggerMode};
  setup.triggerValue = header.triggerValue;
  setup.triggerFlagA = header.triggerFlagCode != 0 ? 1 : 0;
  setup.triggerChannel = header.triggerChannel;
  setup.triggerCommon = header.triggerCommon;
  setup.triggerCount = TruncateToInt32(header.triggerValue + 0.5);
  setup.triggerFlagB = 1;
  setup.triggerX = header.triggerX;
}

void TakeFilter(const RecordingHeader& header, CSetup& setup) {
  setup.filterMode = header.filterMode;
  setup.filterFlag = 0;
  setup.filterValueA = header.filterValueA;
  setup.filterValueB = header.filterValueB;
  setup.filterValueC = header.filterValueC;
  setup.filterValueD = header.filterValueD;
  setup.filterValueE = header.filterValueE;
  setup.filterValueG = header.filterValueG;
  setup.filterValueF = header.filterValueF;
  setup.filterValueH = header.filterValueH;
}

std::int32_t SpectrumPoints(const RecordingHeader& header, const CSetup& setup) {
  if (IsTimeDomain(header)) return header.pointCount;
  if (setup.dataKind != kTimeFrequency) return 2 * header.pointCount;
  return NearestPowerOfTwo(
      TruncateToInt32(DecodeRate(header.rateCode) / static_cast<double>(header.binWidth) + 0.5));
}

void TakeSpectrum(RecordingHeader& header, CSetup& setup) {
  const bool isTime = IsTimeDomain(header);
  const double rate = DecodeRate(header.rateCode);
  const int scale = header.spectrumScale;
  setup.spectrumScale = scale == 1 || scale == 2 ? scale : 0;
  setup.spectrumField8 = 0;
  setup.spectrumPoints = SpectrumPoints(header, setup);
  setup.spectrumDisplayStart = isTime ? 0.0f : setup.displayStart;
  setup.spectrumDisplayEnd = isTime ? static_cast<float>(rate * 0.5) : setup.displayEnd;
  if (header.displayMin > -0.001 && header.displayMin < 0.001) header.displayMin = 0;
  setup.spectrumDisplayMin = isTime ? 0.0f : float{header.displayMin};
  setup.spectrumDisplayMax = header.displayMax;
  setup.spectrumField64 = setup.displayField72;
  setup.binWidth = isTime ? static_cast<float>(1.0 / AxisExtent(header)) : float{header.binWidth};
  setup.spectrumStart = 0;
  // `actualRate` is still the one of a new setup here.
  setup.spectrumEnd = static_cast<float>(isTime ? setup.actualRate * 0.5 - setup.binWidth
                                                : (header.pointCount - 1.0) * header.binWidth);
}

// `sweeps` of the first channel is still the one of a new setup here.
void TakeSweeps(const RecordingHeader& header, CSetup& setup) {
  const std::int32_t sweepsOfChannel = setup.channels[0].sweeps;
  setup.acceptedSweeps = header.acceptedSweeps;
  setup.rejectedSweeps = header.rejectedSweeps;
  setup.averagedSweeps = header.averagedSweeps;
  if (setup.averagedSweeps == 0) setup.averagedSweeps = sweepsOfChannel;
  if (setup.acceptedSweeps + setup.rejectedSweeps == 0) setup.acceptedSweeps = sweepsOfChannel;
  setup.summaryA = header.summaryA;
  setup.summaryC = header.summaryC;
  setup.summaryD = header.summaryD;
  setup.summaryB = header.summaryB;
  setup.hasVariance = header.hasVariance;
  setup.mainField8012 = 1;
  setup.mainField8016 = 255;
}

float ActualRate(const RecordingHeader& header, const CSetup& setup) {
  if (setup.dataKind == kContinuous) return static_cast<float>(DecodeRate(header.rateCode));
  if (IsTimeDomain(header)) return static_cast<float>(header.pointCount / AxisExtent(header));
  return static_cast<float>(setup.spectrumPoints * static_cast<double>(header.binWidth));
}

void TakeRest(const RecordingHeader& header, CSetup& setup) {
  setup.flagA = header.flagA;
  setup.valueA = header.valueA;
  setup.indexA = header.indexA;
  setup.flagB = header.flagB;
  setup.valueB = header.valueB;
  setup.windowSeconds =
      static_cast<float>(header.windowPoints / static_cast<double>(DecodeRate(header.rateCode)));
  const bool isSpectrum = setup.frequencyDomain != 0;
  setup.hasImaginary = setup.dataKind == kTimeFrequency || (setup.dataKind == kEpochs && isSpectrum) ? 1 : 0;
  setup.mainField8036 = setup.dataKind == kAverage && isSpectrum ? 0 : 1;
  setup.mainField8040 = 1;
  setup.rawBlock540 = header.rawBlock540;
  std::copy_n(header.recordDate.Bytes().begin(), setup.recordDateRaw.size(), setup.recordDateRaw.begin());
  std::copy_n(header.recordTime.Bytes().begin(), setup.recordTimeRaw.size(), setup.recordTimeRaw.begin());
  setup.channelCapacity = std::max(setup.channelCount, CSetup::channelLimit);
}

// ---- the rates

bool RatesDisagree(double actual, double nominal) {
  constexpr double kSlow = 100;  // below this rates are not compared
  constexpr double kTolerance = 0.01;
  const double difference = 2 * std::abs(actual - nominal) / std::abs(nominal + actual);
  return difference > kTolerance && actual >= kSlow && nominal >= kSlow;
}

// ---- channels

struct Box {
  double x, y, w, h;
};

// A width that is too small to be meant becomes twice the least one, a height the least one.
Box BoxOf(const RecordingHeader& header, const ChannelRecord& record) {
  const double scale = record.boxScale + 1.0;
  Box box{record.boxX * kGridX, (record.boxY - kGridOriginY) * kGridY, header.boxWidth * kGridX * scale,
          header.boxHeight * kGridY * scale};
  if (box.w < 0.02) box.w = 0.04;
  if (box.h < 0.04) box.h = 0.04;
  return box;
}

void PlaceChannel(const Box& box, int layoutIndex, SetupChannel& channel) {
  channel.layoutScale.fill(1.0f);
  channel.layoutSelected.fill(0);
  channel.layoutSelected[0] = 1;
  if (layoutIndex < static_cast<int>(kLayoutCount))
    channel.layoutSelected[static_cast<std::size_t>(layoutIndex)] = 1;
  channel.boxLeft.fill(static_cast<float>(box.x));
  channel.boxRight.fill(static_cast<float>(box.x + box.w));
  channel.boxTop.fill(static_cast<float>(box.y));
  channel.boxBottom.fill(static_cast<float>(box.y + box.h));
  channel.zoomLeft = channel.boxLeft;
  channel.zoomRight.fill(static_cast<float>(box.x + 2 * box.w));
  channel.zoomTop = channel.boxTop;
  channel.zoomBottom.fill(static_cast<float>(box.y + 2 * box.h));
}

void RepairChannel(ChannelRecord& record) {
  if (!std::isfinite(float{record.signalRatio})) record.signalRatio = 0;
  if (record.sweeps == 0) record.sweeps = 1;
}

void TakeChannel(const RecordingHeader& header, const ChannelRecord& record, SetupChannel& channel) {
  constexpr int kNoGain = 0;
  channel.label.Assign(record.label.View());
  channel.channelType = record.channelType;
  channel.channelFlagA = record.channelFlagA;
  channel.channelFlagB = record.channelFlagB;
  channel.channelFlagC = record.channelFlagC;
  channel.disabled = record.enabled == 0 ? 1 : 0;
  PlaceChannel(BoxOf(header, record), record.layoutIndex, channel);
  channel.channelFlagD = record.channelFlagD;
  channel.channelScale = record.sensitivity;
  channel.signalRatio = record.signalRatio;
  channel.physicalChannel = record.physicalChannel;
  channel.countScale = static_cast<float>(record.calibration / kCalibrationScale);
  channel.gain =
      static_cast<float>(EntryAt(kGains, record.gainIndex, kNoGain) * (header.gainBase / kGainBase));
  channel.filterField = 0;
  channel.lowpassField = 3;
  channel.highpassField = 3;
  channel.textA = "Default";
  channel.textB = "Default";
  channel.channelValueC = 0;
  channel.channelValueD = 0;
  channel.channelValueE = 0;
  channel.channelValueF = 65535;
  channel.channelValueG = 0;
  channel.sweeps = record.sweeps;
}

// The first channel's filters count for all.
void TakeChannels(HeaderImage& image, CSetup& setup) {
  const ChannelRecord& first = image.channels[0];
  const float lowpass = EntryAt(kLowpassHz, first.lowpassIndex, 70.0f);
  const float highpass = EntryAt(kHighpassHzWhenReading, first.highpassIndex, 0.3f);
  const std::span<SetupChannel> channels = setup.Channels();
  for (std::size_t i = 0; i < channels.size(); ++i) {
    RepairChannel(image.channels[i]);
    TakeChannel(image.header, image.channels[i], channels[i]);
    channels[i].lowpassHz = lowpass;
    channels[i].highpassHz = highpass;
  }
}

// ---- the subject

std::string OrUnspecified(const std::string& text) {
  return text.empty() ? "Unspecified" : text;
}

// Either a finished date, told by its first slash, or digits that want theirs.
std::string DateOf(const RecordingHeader& header) {
  constexpr std::size_t kDigits = 8;
  constexpr std::size_t kFirstSlash = 2;
  const std::string_view text = header.recordDate.View();
  if (header.recordDate.Bytes()[kFirstSlash] == '/') return std::string(text);
  std::string date;
  for (std::size_t i = 0; i < std::min(text.size(), kDigits); ++i) {
    date += text[i];
    if (i == 1 || i == 3) date += '/';
  }
  return date;
}

void TakeSubject(const RecordingHeader& header, CSubjectInfo& subject) {
  subject.operatorName = header.operatorName.View();
  subject.instituteName = header.instituteName.View();
  subject.researcherName = header.researcherName.View();
  subject.recordDate = OrUnspecified(DateOf(header));
  subject.recordTime = OrUnspecified(std::string(header.recordTime.View()));
  subject.subjectTextA = header.subjectTextA.View();
  subject.subjectTextB = header.subjectTextB.View();
  subject.subjectTextC = header.subjectTextC.View();
  subject.age = header.subjectAge;
  const char sex = header.subjectSex;
  subject.sex = sex == 'M' ? 0 : sex == 'F' ? 1 : 2;
  const char hand = header.subjectHand;
  subject.hand = hand == 'R' ? 0 : hand == 'L' ? 1 : hand == 'M' ? 2 : 3;
  subject.subjectTextD = header.subjectTextD.View();
  subject.subjectTextF = header.subjectTextF.View();
  subject.subjectTextE = header.subjectTextE.View();
  subject.subjectTextG = header.subjectTextG.View();
  subject.subjectValueA = 0;
  subject.subjectValueB = 0;
  subject.subjectValueC = 0;
  for (std::string* none : {&subject.department, &subject.subjectTextH, &subject.subjectTextI,
                            &subject.subjectTextJ, &subject.unitName}) {
    none->clear();
  }
}

}  // namespace

bool CRecordingFile::TranslateHeader(HeaderImage* image, CSetup* target) try {
  return image != nullptr && target != nullptr && target->subject && Translate(*image, *target);
} catch (const std::bad_alloc&) {
  return false;
}

bool CRecordingFile::Translate(HeaderImage& image, CSetup& into) {
  RecordingHeader& header = image.header;
  if (!into.ResetToDefaults()) return false;
  into.dataKind = GetFileClass(&image);
  into.sampleRate = DecodeRate(header.rateCode);
  into.channelCount = header.channelCount;
  if (!IsChannelCount(into.channelCount)) {
    ReportMessage(NumberedMessage(MessageNumber::kChannelCountRefused));
    return false;
  }
  TakeAcquisition(header, into);
  TakeWindowsAndDisplay(header, into);
  TakeTrigger(header, into);
  TakeFilter(header, into);
  TakeSpectrum(header, into);
  TakeSweeps(header, into);
  into.detailKind = ClassifyHeader(&image);
  into.fromRecording = 1;
  into.timeStart = header.timeStart;
  into.actualRate = ActualRate(header, into);
  if (into.sampleRate <= 0 || !(into.actualRate > 0)) {
    ReportMessage(NumberedMessage(MessageNumber::kRateRefused));
    return false;
  }
  if (RatesDisagree(into.actualRate, into.sampleRate))
    ReportMessage(NumberedMessage(MessageNumber::kRatesDisagree));
  into.UpdateTimeAxis();  // from here on the rate comes from the axis
  TakeRest(header, into);
  TakeChannels(image, into);
  TakeSubject(header, *into.subject);
  return true;
}

}  // namespace wavelock

// The history of the header, told as its repairs: what a block as read may lack or hold, in the order in
// which it is mended. Revision by revision:
//
//   0, 1  sweeps are counted for the whole file, not for each channel
//   2     no sensitivity, no epoch head of 13 bytes
//   3     always 32 channel records, all in use
//   6     one calibration for all channels; events lie between the samples
//   7     channels have no number of their own at the amplifier
//   8     the display shows the whole time axis
//   9     spectra in squared units, spectra taken from other spectra
//   10    spectra of single sweeps are scaled by half
//   11    the gain table has another base
#include "wavelock/recording/header_revisions.h"

#include <algorithm>

#include "wavelock/recording/header_tables.h"

namespace wavelock {
namespace {

constexpr std::size_t kOldRecords = 32;  // channel records in every block of a revision below 4

std::span<ChannelRecord> OldRecords(HeaderImage& image) {
  return std::span(image.channels).first(kOldRecords);
}

template <class Field, class Value>
void FillIfZero(Field& field, Value value) {
  if (field == 0) field = value;
}

// ---- blocks of the versioned layout, as they come from the file

void TakeSummaryFromSweeps(RecordingHeader& header) {
  if (header.fileForm != 2) header.summaryB = static_cast<std::int16_t>(header.averagedSweeps);
}

void SpreadSweepsToChannels(HeaderImage& image) {
  const RecordingHeader& header = image.header;
  const auto sweeps = header.fileForm == 2 ? static_cast<std::uint16_t>(header.summaryB)
                                           : std::uint16_t{header.averagedSweeps};
  for (ChannelRecord& record : OldRecords(image)) record.sweeps = sweeps;
}

void FillSensitivity(HeaderImage& image) {
  image.header.fixField862 = 0x1820;
  for (ChannelRecord& record : OldRecords(image)) record.sensitivity = 1.0f;
}

void EnableOldChannels(HeaderImage& image) {
  for (ChannelRecord& record : OldRecords(image)) {
    record.enabled = 1;
    record.reserved47 = {};
  }
}

// ---- every header

// A block in which no channel is in use comes from a writer that did not know the flag, nor the links.
void EnableChannelsIfNoneIs(HeaderImage& image) {
  const auto channels = image.ChannelsInUse();
  if (std::any_of(channels.begin(), channels.end(), [](const ChannelRecord& r) { return r.enabled != 0; }))
    return;
  for (ChannelRecord& record : channels) {
    record.enabled = 1;
    if (record.channelLink < -1 || record.channelLink > static_cast<int>(channels.size()) - 1)
      record.channelLink = -1;
  }
}

void FillDeadFlag(RecordingHeader& header) {
  if (header.fixBlock882 != 0 && header.fixBlock882 != 1) header.fixBlock882 = 0;
}

void FillFilterValue(RecordingHeader& header) {
  FillIfZero(header.filterValueA, 2.5f);
}

void FillContinuousTaper(RecordingHeader& header) {
  if (header.acquisitionMode == 3) FillIfZero(header.fixValue525, 0.1f);
}

void ViewWholeAxis(RecordingHeader& header) {
  header.viewStart = header.timeStart;
  header.viewEnd = header.timeEnd;
}

// Comparisons with a value that is not a number are false, so such a view stays.
void KeepViewInsideAxis(RecordingHeader& header) {
  const float start = header.timeStart;
  const float end = header.timeEnd;
  if (header.viewStart < start) header.viewStart = start;
  if (header.viewStart > end) header.viewStart = start;
  if (header.viewEnd > end) header.viewEnd = end;
  if (header.viewEnd < start) header.viewEnd = end;
}

// ---- calibration

void CalibrateAllChannels(HeaderImage& image) {
  for (ChannelRecord& record : image.ChannelsInUse()) {
    record.calibration = static_cast<float>(image.header.defaultCalibration);
  }
}

void CalibrateChannelsWithout(HeaderImage& image) {
  for (ChannelRecord& record : image.ChannelsInUse()) {
    FillIfZero(record.calibration, static_cast<float>(image.header.defaultCalibration));
  }
}

// ---- from revision 7 on

constexpr float kSpectrumTaper = 0.1f;

void SetTaperByForm(RecordingHeader& header) {
  header.fixValue677 = header.fileForm == 1 || header.acquisitionMode == 7 ? 0.0f : kSpectrumTaper;
}

void RepairTaper(RecordingHeader& header) {
  if (header.fixValue677 < 0 || static_cast<double>(header.fixValue677) > 0.5) SetTaperByForm(header);
}

void NumberChannels(HeaderImage& image) {
  std::uint8_t number = 0;  // wraps at channel 256, like the field
  for (ChannelRecord& record : image.ChannelsInUse()) record.physicalChannel = number++;
}

void ForgetSpectrumScale(RecordingHeader& header) {
  SetTaperByForm(header);
  header.spectrumScale = 0;
  header.fixByte676 = 0;
}

void DisplayWholeAxis(RecordingHeader& header) {
  if (header.frequencyDomain == 0) {
    header.displayStart = header.timeStart;
    header.displayEnd = header.timeEnd;
  } else {
    header.displayStart = 0;
    header.displayEnd = static_cast<float>(static_cast<double>(header.pointCount) * header.binWidth);
  }
}

void SquareSensitivity(HeaderImage& image) {
  for (ChannelRecord& record : image.ChannelsInUse()) {
    record.sensitivity = static_cast<float>(static_cast<double>(record.sensitivity) * record.sensitivity);
  }
}

void RepairSummaryScale(RecordingHeader& header) {
  if (header.headerRevision < 11) header.summaryScale = 1.0f;
  if (header.summaryScale < 1.0f) header.summaryScale = 1.0f;
}

bool HoldsCurrentSpectra(const RecordingHeader& header) {
  return header.headerRevision >= 11 || header.frequencyDomain != 1 || header.spectrumSource == 1 ||
         header.timeFrequencyFlag != 0 || header.fileForm == 6;
}

bool HoldsSpectraOfAverages(const RecordingHeader& header) {
  const int form = header.fileForm;
  return (form == 0 || form == 2 || form == 3) && header.acquisitionMode != 7;
}

void DropTaper(RecordingHeader& header) {
  if (header.fixValue677 == 0) return;
  header.fixValue677 = 0;
  header.spectrumScale = 0;
}

// False for scaled spectra of a form whose scale is not known.
bool RepairOldSpectra(RecordingHeader& header) {
  if (!HoldsSpectraOfAverages(header)) return true;
  if (header.fixValue677 != kSpectrumTaper || (header.fixByte676 != 0 && header.fixByte676 != 2)) {
    header.fixValue677 = kSpectrumTaper;
    header.fixByte676 = 0;
  }
  return !((header.spectrumScale == 1 || header.spectrumScale == 2) && header.fileForm == 3);
}

bool BringFromRevision7(HeaderImage& image) {
  RecordingHeader& header = image.header;
  const int revision = header.headerRevision;
  CalibrateChannelsWithout(image);
  FillIfZero(header.sampleLayout, std::uint8_t{1});
  RepairTaper(header);
  if (revision < 8) {
    NumberChannels(image);
    ForgetSpectrumScale(header);
  }
  if (revision < 9) DisplayWholeAxis(header);
  if (revision < 10 && header.frequencyDomain == 1) {
    if (header.spectrumScale == 2) SquareSensitivity(image);
    if (header.spectrumSource != 0) return false;
  }
  RepairSummaryScale(header);
  if (!HoldsCurrentSpectra(header)) return RepairOldSpectra(header);
  DropTaper(header);
  return true;
}

}  // namespace

void CompleteVersionedHeader(HeaderImage& image) {
  RecordingHeader& header = image.header;
  const int revision = header.headerRevision;
  if (revision < 4) header.valueC = 10.0f;
  TakeSummaryFromSweeps(header);
  if (revision < 2) SpreadSweepsToChannels(image);
  if (header.versionText.View() == "Version 2.0" || header.binWidth == 0) FillBinWidth(header);
  FillDisplayDefaults(header);
  if (revision < 3) FillSensitivity(image);
  if (revision < 4) EnableOldChannels(image);
  FillIfZero(header.countC, std::uint16_t{1});
  FillIfZero(header.countD, std::uint16_t{1});
}

// A set without points or without an extent divides by zero: what that gives is stored.
void FillBinWidth(RecordingHeader& header) {
  const double points = header.pointCount * (header.frequencyDomain == 1 ? 2.0 : 1.0);
  const double extent = static_cast<double>(header.timeEnd) - header.timeStart;
  header.binWidth = static_cast<float>((DecodeRate(header.rateCode) / (points / extent)) * (1.0 / extent));
}

void FillDisplayDefaults(RecordingHeader& header) {
  auto& block = header.fixBlock830;
  const double timeEnd = header.timeEnd;
  FillIfZero(header.boxWidth, 40.0f);
  FillIfZero(header.boxHeight, 20.0f);
  FillIfZero(block[0], header.frequencyDomain == 0 ? static_cast<float>(timeEnd * 1000.0) : 64.0f);
  FillIfZero(block[2], static_cast<float>(header.displayMax));
  FillIfZero(block[1], static_cast<float>(block[0] * 0.5));
  FillIfZero(block[1], static_cast<float>(timeEnd * 0.1));
  FillIfZero(block[3], static_cast<float>(header.displayMax * 0.5));
  FillIfZero(block[4], 20.0f);
  FillIfZero(block[5], 170.0f);
}

void RepairGainBase(RecordingHeader& header) {
  if (header.gainBase == 0 || header.headerRevision < 12) header.gainBase = kGainBase;
}

void FillDeadRates(RecordingHeader& header) {
  if (header.fixFlag868 != 0) return;
  const double rate = DecodeRate(header.rateCode);
  header.fixBlock869 = static_cast<float>(rate * 0.01);
  header.fixBlock873 = 2;
  header.fixBlock875 = static_cast<float>(rate * 0.125);
  header.fixBlock879 = 2;
  header.fixBlock881 = 3;
  header.fixBlock882 = 1;
}

bool BringToCurrentRevision(HeaderImage& image) {
  RecordingHeader& header = image.header;
  EnableChannelsIfNoneIs(image);
  FillDeadFlag(header);
  FillFilterValue(header);
  FillContinuousTaper(header);
  if (header.headerRevision < 6) ViewWholeAxis(header);
  KeepViewInsideAxis(header);
  if (header.headerRevision < 7) {
    CalibrateAllChannels(image);
  } else if (!BringFromRevision7(image)) {
    return false;
  }
  if (header.viewStart > header.viewEnd) ViewWholeAxis(header);
  return true;
}

}  // namespace wavelock

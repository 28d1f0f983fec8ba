// The plain fields of a setup, in the order of the model. The member initialisers are the defaults of a setup
// that has no file behind it.
//
// A field whose name ends in a number is carried from file to file; the number is its offset in the section
// that its name begins with, main, display or spectrum. Other fields without a comment are carried between
// the header of a recording and the setup.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "wavelock/setup/fixed_text.h"
#include "wavelock/setup/setup_bands.h"
#include "wavelock/setup/setup_channel.h"
#include "wavelock/setup/setup_label.h"

namespace wavelock {

inline constexpr std::size_t kDisplayPlaceCount = 512;  // places for channels on one layout
inline constexpr std::size_t kDerivationFileCount = 3;
inline constexpr std::size_t kSetupBandCount = 5;
inline constexpr std::size_t kSetupLabelCount = 20;
inline constexpr std::size_t kBandTableRows = 100;
inline constexpr std::size_t kRecordTableBytes = 10400;

template <class T>
using PerDerivationFile = std::array<T, kDerivationFileCount>;
using SetupBands = std::array<SetupBand, kSetupBandCount>;
using SetupLabels = std::array<SetupLabel, kSetupLabelCount>;
using BandTable = std::array<BandTableRow, kBandTableRows>;
using DisplayTable = PerLayout<std::array<std::int32_t, kDisplayPlaceCount>>;

// What the tables hold in a new setup: the classical EEG bands, common artifacts, and every channel in its
// own place.
SetupBands DefaultBands();
SetupLabels DefaultArtifactLabels();
BandTable DefaultBandTable();
DisplayTable DefaultDisplayOrder();

struct SetupFields {
  // Acquisition and source.
  std::int32_t dataKind =
      2;  // 0 average, 1 epochs, 2 continuous, 3 average with statistics, 4 time-frequency
  std::int32_t sampleRate = 1000;  // samples per second, the whole-number view of actualRate
  std::int32_t channelCount = 32;  // 1 to 512 for a recording
  std::int32_t mainField8172 = 0;
  std::int32_t mainsFrequency = 0;   // 50, 60 or 0
  std::int32_t frequencyDomain = 0;  // not 0: a spectrum of spectrumPoints points
  std::int32_t headerByteA = 0;
  std::int32_t headerByteB = 80;
  std::int32_t flagC = 0;
  std::int32_t mainField928 = 1;
  std::int32_t mainField932 = 0;
  std::int32_t mainField936 = 0;
  std::int32_t mainField940 = 0;
  std::int32_t mainField944 = 0;
  std::int32_t mainField948 = 0;

  // Derivation files and their channels.
  PerDerivationFile<FixedText<512>> ldrFile{};     // paths
  PerDerivationFile<std::int32_t> ldrEnabled{};    // not 0: load that file
  PerDerivationFile<std::int32_t> derivedCount{};  // valid entries of channelGroups; in no section
  PerDerivationFile<std::int32_t> derivedBuild{};  // not 0: make default channels from the file's outputs
  std::int32_t ldrLoadedCount = 0;                 // files taken in by the last load
  std::int32_t mainField2512 = 0;
  std::int32_t mainField2516 = 10000;
  std::int32_t mainField2520 = 0;

  // Bands and labels.
  SetupBands bands = DefaultBands();
  SetupLabels artifactLabels = DefaultArtifactLabels();
  SetupLabels eventLabels{};

  // Time axis and display, from the header of a recording. Times in milliseconds.
  std::int32_t mainField2500 = 0;
  std::int32_t mainField2504 = 0;
  std::int32_t mainField2508 = 0;
  std::int32_t autoScale = 0;
  std::int32_t mainField8176 = 0;
  std::int32_t pointCount = 601;  // points per channel of a set or epoch in the time domain
  std::int32_t baselineFlag = 0;
  float windowAStart = -100;
  float windowAEnd = 0;
  std::int32_t rejectFlag = 0;
  float windowBStart = -100;
  float windowBEnd = 500;
  float rejectMin = -50;
  float rejectMax = 50;
  std::int32_t sweepCount = 1000;
  std::int32_t countC = 1;
  float displayStart = -100;
  float displayMax = 100;   // amplitude axis, upper end
  float displayMin = -100;  // amplitude axis, lower end
  float displayEnd = 500;
  float displayField64 = 500;
  float displayField68 = 100;
  std::int32_t displayField72 = 0;
  std::int32_t displayField76 = 0;
  FixedText<512> displayFile{};  // a path
  std::int32_t displayField636 = 1;

  // Trigger, filter, spectrum.
  std::int32_t triggerMode = 2;  // never 1
  float triggerValue = 100;
  std::int32_t triggerFlagA = 1;
  std::int32_t triggerChannel = 0;
  std::int32_t triggerCommon = 0;
  std::int32_t triggerCount = 0;  // triggerValue rounded, in the setup of a recording
  std::int32_t triggerFlagB = 0;
  float triggerX = 0.25F;
  std::int32_t filterMode = 0;
  std::int32_t filterFlag = 0;
  float filterValueA = 3.1F;
  float filterValueB = 6;
  std::int32_t filterValueC = 200;
  float filterValueD = 2;
  float filterValueE = 12;
  float filterValueG = 0.03F;
  float filterValueF = 3.1F;
  std::int32_t filterValueH = 0;
  float filterValueI = 20;
  float filterValueJ = 0.3F;
  std::int32_t spectrumField0 = 0;
  std::int32_t spectrumScale = 1;  // 0: a stored spectrum has no scale yet
  std::int32_t spectrumField8 = 1;
  std::int32_t spectrumField16 = 0;
  std::int32_t spectrumField12 = 1;
  std::int32_t spectrumField20 = 0;
  std::int32_t spectrumField24 = 1;
  std::int32_t spectrumPoints = 256;  // points per channel in the frequency domain
  float spectrumField32 = 10;
  std::int32_t spectrumField36 = 0;
  float spectrumDisplayStart = 0;  // Hz
  float spectrumDisplayEnd = 128;  // Hz
  float spectrumDisplayMin = 0;
  float spectrumDisplayMax = 100;
  float spectrumField56 = 0;
  float spectrumField60 = 100;
  std::int32_t spectrumField64 = 0;
  std::int32_t spectrumField68 = 0;
  float binWidth = 1.6666666F;       // Hz per point
  float spectrumStart = 0;           // Hz
  float spectrumEnd = 498.33334F;    // Hz; one bin below half of sampleRate
  std::int32_t spectrumField84 = 2;  // never 0
  std::int32_t spectrumField88 = 2;  // never 0
  std::int32_t bandTableCount = 4;   // rows of bandTable in use
  std::int32_t spectrumField92 = 0;
  std::int32_t spectrumField96 = 0;
  float spectrumField100 = 2000;
  std::int32_t displayField80 = 0;

  // Counts and flags.
  std::int32_t artifactLabelCount = 10;  // at most 20
  std::int32_t eventLabelCount = 0;      // at most 20
  std::int32_t mainField7996 = 0;
  std::int32_t mainField8000 = 5;
  std::int32_t mainField8004 = 100;
  std::int32_t acceptedSweeps = 0;  // rows of the per-sweep arrays of an averaged file
  std::int32_t rejectedSweeps = 0;
  std::int32_t averagedSweeps = 0;  // sweeps behind an averaged file, epochs of an epoched one
  std::int32_t summaryB = 0;
  float summaryA = 0;
  float summaryD = 0;
  float summaryC = 0;
  std::int32_t hasVariance = 0;  // not 0: variance arrays exist
  std::int32_t mainField8012 = 1;
  std::int32_t mainField8016 = 255;
  std::int32_t detailKind = 0;     // detail classification of the header, 1 to 7
  std::int32_t fromRecording = 0;  // 1: of a recording; actualRate then leads over sampleRate
  float timeStart = -0.1F;         // seconds, first sample
  float timeEnd = 0.5F;            // seconds, end of the time axis
  float actualRate = 1000;         // samples per second
  std::int32_t flagA = 0;          // 0 or 1
  float valueA = 10;               // 0 to 100
  std::int32_t indexA = 0;         // 0 to 515
  std::int32_t flagB = 0;          // 0 or 1
  float windowSeconds = 0.4F;
  std::int32_t valueB = 20;       // 0 to 100000
  std::int32_t hasImaginary = 0;  // not 0: the imaginary array exists
  std::int32_t mainField8036 = 1;
  std::int32_t mainField8040 = 1;
  std::int32_t adcCounts = 0;  // converter steps over its full range; 0 means 65536
  float adcRangeVolts = 0;     // 0 means 5.5

  // Tables.
  DisplayTable displayOrder = DefaultDisplayOrder();          // the channel shown at each place
  DisplayTable displayMark{};                                 // a mark for each place
  std::int32_t recordTableCount = 0;                          // records of recordTable in the file
  std::array<std::uint8_t, kRecordTableBytes> recordTable{};  // an entry every 32 bytes
  std::int32_t hasPositions = 0;                              // 1 when the electrodes have real positions
  std::array<std::uint8_t, 10> rawBlock540{};  // these three as the header of a recording has them
  std::array<std::uint8_t, 10> recordDateRaw{};
  std::array<std::uint8_t, 12> recordTimeRaw{};
  std::array<std::int32_t, 16> mainField8088{};
  BandTable bandTable = DefaultBandTable();  // spectral bands; in no section
  std::int32_t writerVersionMajor = 0;       // of the software that wrote a loaded setup
  std::int32_t writerVersionMinor = 0;
  float mainField8164 = 0;  // noise level of the recording, 0 when unknown
  float mainField8168 = 0;  // best signal ratio of the recording, 0 when unknown
  std::int32_t mainField8180 = 0;
  std::int32_t mainField8184 = 0;
  std::int32_t mainField8188 = 0;
  std::int32_t mainField8192 = 1;
  std::int32_t mainField8196 = 0;
};
static_assert(std::is_trivially_copyable_v<SetupFields>);

}  // namespace wavelock

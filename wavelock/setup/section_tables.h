// Every section of a setup, field by field: what stands where, in which form and since which version.
//
//   the whole setup         MainSection, TimeAxisSection, TriggerSection, FilterSection, SpectrumSection,
//                           FlagASection, DisplayOrderSection, SpareSection, SourceNameSection
//   parameter blocks        ParamsASection, ParamsBSection, ParamsCSection
//   waveforms               WaveformSourcesSection, WaveformSlotsSection, WaveformNamesSection
//   channels                ChannelSection, DerivedChannelSection
//   labels, subject, tables LabelSection, SubjectSection, RecordTableSection, AuxInputSection
//
// Loading (load.cpp) and writing (write.cpp) walk these tables; what is impossible in a stored value is
// repaired there, behind the walk.
#pragma once

#include <cstdint>
#include <span>

#include "wavelock/setup/section_rows.h"
#include "wavelock/setup/section_tags.h"
#include "wavelock/setup/setup.h"

namespace wavelock {

// ----- Structures inside of sections

struct FilterSpecLayout {
  using Model = FilterSpec;
  static constexpr const char* kTitle = "filter description";
  static constexpr std::uint32_t kSize = 48;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, value0),  WAVELOCK_ROW(4, F32, value1),   WAVELOCK_ROW(8, F32, value2),
      WAVELOCK_ROW(12, I32, value3), WAVELOCK_ROW(16, I32, value4),  WAVELOCK_ROW(20, F32, value5),
      WAVELOCK_ROW(24, F32, value6), WAVELOCK_ROW(28, I32, value7),  WAVELOCK_ROW(32, I32, value8),
      WAVELOCK_ROW(36, I32, value9), WAVELOCK_ROW(40, I32, value10), WAVELOCK_ROW(44, I32, value11),
  };
};

struct LongFilterSpecLayout {
  using Model = LongFilterSpec;
  static constexpr const char* kTitle = "long filter description";
  static constexpr std::uint32_t kSize = 68;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Image<FilterSpecLayout>, description),
      WAVELOCK_ROW(48, I32, values12To16),
  };
};

struct BandLayout {
  using Model = SetupBand;
  static constexpr const char* kTitle = "band";
  static constexpr std::uint32_t kSize = 1092;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, bandField0),
      WAVELOCK_ROW(4, I32, bandField4),
      WAVELOCK_ROW(8, I32, bandField8),
      WAVELOCK_ROW(12, F32, bandScale),
      WAVELOCK_ROW(16, F32, bandLow),
      WAVELOCK_ROW(20, F32, bandHigh),
      WAVELOCK_ROW(24, Chars<20>, bandName),
      WAVELOCK_ROW(44, Chars<512>, mapFile),
      WAVELOCK_ROW(556, Chars<512>, mappingLdrFile),
      WAVELOCK_ROW(1068, I32, bandField1068),
      WAVELOCK_ROW(1072, I32, bandField1072),
      WAVELOCK_ROW(1076, F32, bandField1076),
      WAVELOCK_ROW(1080, F32, bandField1080),
      WAVELOCK_ROW(1084, F32, bandField1084),
      WAVELOCK_ROW(1088, F32, bandField1088),
  };
};

inline constexpr std::int32_t kRetiredTriggerMode = 1;  // becomes the usual one on reading and on writing
inline constexpr std::int32_t kUsualTriggerMode = 2;

// ----- What the writer works out

constexpr std::int32_t WriterVersionMajor(CSetup&) {
  return 4;
}
constexpr std::int32_t WriterVersionMinor(CSetup&) {
  return 2;
}
inline std::int32_t ZeroPointOf(CSetup& setup) {
  return setup.ZeroPoint();
}
inline float AxisEndOf(CSetup& setup) {
  return static_cast<float>(setup.AxisEnd());
}

// ----- The whole setup

struct MainSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "main section";
  static constexpr std::uint32_t kTag = tag::kMain;
  static constexpr std::uint32_t kSize = 12080;
  static constexpr std::uint16_t kVersion = 2;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, dataKind),
      WAVELOCK_ROW(4, I32, sampleRate),
      WAVELOCK_ROW(8, I32, channelCount),
      WAVELOCK_ROW(12, I32, mainsFrequency),
      WAVELOCK_ROW(16, I32, frequencyDomain),
      WAVELOCK_ROW(916, I32, headerByteA),
      WAVELOCK_ROW(920, I32, headerByteB),
      WAVELOCK_ROW(924, I32, flagC),
      WAVELOCK_ROW(928, I32, mainField928),
      WAVELOCK_ROW(932, I32, mainField932),
      WAVELOCK_ROW(936, I32, mainField936),
      WAVELOCK_ROW(940, I32, mainField940),
      WAVELOCK_ROW(944, I32, mainField944),
      WAVELOCK_ROW(948, I32, mainField948),
      WAVELOCK_ROW(952, I32, ldrEnabled),
      WAVELOCK_ROW(964, Chars<512>, ldrFile),
      WAVELOCK_ROW(2500, I32, mainField2500),
      WAVELOCK_ROW(2504, I32, mainField2504),
      WAVELOCK_ROW(2508, I32, mainField2508),
      WAVELOCK_ROW(2512, I32, mainField2512),
      WAVELOCK_ROW(2516, I32, mainField2516),
      WAVELOCK_ROW(2520, I32, mainField2520),
      WAVELOCK_ROW(2524, Image<BandLayout>, bands),
      WAVELOCK_ROW(7984, I32, eventLabelCount),
      WAVELOCK_ROW(7988, I32, artifactLabelCount),
      WAVELOCK_ROW(7992, I32, autoScale),
      WAVELOCK_ROW(7996, I32, mainField7996),
      WAVELOCK_ROW(8000, I32, mainField8000),
      WAVELOCK_ROW(8004, I32, mainField8004),
      WAVELOCK_ROW(8008, I32, hasVariance).Since(1),
      WAVELOCK_ROW(8012, I32, mainField8012).Since(1),
      WAVELOCK_ROW(8016, I32, mainField8016).Since(1),
      WAVELOCK_ROW(8020, I32, detailKind).Since(1),
      WAVELOCK_ROW(8024, I32, fromRecording).Since(1),
      WAVELOCK_ROW(8028, F32, actualRate).Since(1),
      WAVELOCK_ROW(8032, I32, hasImaginary).Since(1),
      WAVELOCK_ROW(8036, I32, mainField8036).Since(1),
      WAVELOCK_ROW(8040, I32, mainField8040).Since(1),
      WAVELOCK_ROW(8044, I32, adcCounts),
      WAVELOCK_ROW(8048, F32, adcRangeVolts),
      WAVELOCK_ROW(8052, I32, recordTableCount),
      WAVELOCK_ROW(8056, Bytes<10>, rawBlock540).Since(1),
      WAVELOCK_ROW(8066, Bytes<10>, recordDateRaw).Since(1),
      WAVELOCK_ROW(8076, Bytes<12>, recordTimeRaw).Since(1),
      WAVELOCK_ROW(8088, I32, mainField8088).Since(1),
      WAVELOCK_ROW(8152, I32, hasPositions).Since(1),
      ComputedRow<Model, I32, WriterVersionMajor>(8156, "4",
                                                  "the version of this writer, not the one that was read"),
      WAVELOCK_ROW(8156, I32, writerVersionMajor).ReadOnly("tells who wrote a section that was read"),
      ComputedRow<Model, I32, WriterVersionMinor>(8160, "2",
                                                  "the version of this writer, not the one that was read"),
      WAVELOCK_ROW(8160, I32, writerVersionMinor).ReadOnly("tells who wrote a section that was read"),
      WAVELOCK_ROW(8164, F32, mainField8164),
      WAVELOCK_ROW(8168, F32, mainField8168),
      WAVELOCK_ROW(8172, I32, mainField8172),
      WAVELOCK_ROW(8176, I32, mainField8176),
      WAVELOCK_ROW(8180, I32, mainField8180),
      WAVELOCK_ROW(8184, I32, mainField8184),
      WAVELOCK_ROW(8188, I32, mainField8188),
      WAVELOCK_ROW(8192, I32, mainField8192).Since(2),
      WAVELOCK_ROW(8196, I32, mainField8196).Since(2),
  };
};

struct TimeAxisSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "time axis, display and sweep counts";
  static constexpr std::uint32_t kTag = tag::kTimeAxis;
  static constexpr std::uint32_t kSize = 1396;
  static constexpr std::uint16_t kVersion = 2;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, pointCount),
      ComputedRow<Model, I32, ZeroPointOf>(4, "ZeroPoint()", "every reader works it out anew"),
      WAVELOCK_ROW(8, I32, baselineFlag),
      WAVELOCK_ROW(12, F32, windowAStart),
      WAVELOCK_ROW(16, F32, windowAEnd),
      WAVELOCK_ROW(20, I32, rejectFlag),
      WAVELOCK_ROW(24, F32, windowBStart),
      WAVELOCK_ROW(28, F32, windowBEnd),
      WAVELOCK_ROW(32, F32, rejectMin),
      WAVELOCK_ROW(36, F32, rejectMax),
      WAVELOCK_ROW(40, I32, sweepCount),
      WAVELOCK_ROW(44, I32, countC),
      WAVELOCK_ROW(48, F32, displayStart),
      WAVELOCK_ROW(52, F32, displayEnd),
      WAVELOCK_ROW(56, F32, displayMin),
      WAVELOCK_ROW(60, F32, displayMax),
      WAVELOCK_ROW(64, F32, displayField64),
      WAVELOCK_ROW(68, F32, displayField68),
      WAVELOCK_ROW(72, I32, displayField72),
      WAVELOCK_ROW(76, I32, displayField76),
      WAVELOCK_ROW(80, I32, displayField80),
      WAVELOCK_ROW(84, Chars<512>, displayFile),
      WAVELOCK_ROW(596, I32, acceptedSweeps).Since(1),
      WAVELOCK_ROW(600, I32, rejectedSweeps).Since(1),
      WAVELOCK_ROW(604, I32, averagedSweeps).Since(1),
      WAVELOCK_ROW(608, I32, summaryB).Since(1),
      WAVELOCK_ROW(612, F32, summaryA).Since(1),
      WAVELOCK_ROW(616, F32, summaryD).Since(1),
      WAVELOCK_ROW(620, F32, summaryC).Since(1),
      WAVELOCK_ROW(624, F32, timeStart).Since(1),
      WAVELOCK_ROW(628, F32, timeEnd).Since(1).ReadOnly("stored is the end of the axis as it was then"),
      ComputedRow<Model, F32, AxisEndOf>(628, "AxisEnd()", "read as timeEnd"),
      WAVELOCK_ROW(636, I32, displayField636).Since(2),
  };
};

struct TriggerSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "trigger";
  static constexpr std::uint32_t kTag = tag::kTrigger;
  static constexpr std::uint32_t kSize = 832;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, triggerMode),    WAVELOCK_ROW(4, F32, triggerValue),
      WAVELOCK_ROW(8, I32, triggerFlagA),   WAVELOCK_ROW(12, I32, triggerChannel),
      WAVELOCK_ROW(16, I32, triggerCommon), WAVELOCK_ROW(20, I32, triggerCount),
      WAVELOCK_ROW(24, I32, triggerFlagB),  WAVELOCK_ROW(28, F32, triggerX),
  };
};

struct FilterSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "filter";
  static constexpr std::uint32_t kTag = tag::kFilter;
  static constexpr std::uint32_t kSize = 848;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, filterMode),    WAVELOCK_ROW(4, I32, filterFlag),
      WAVELOCK_ROW(8, F32, filterValueA),  WAVELOCK_ROW(12, F32, filterValueB),
      WAVELOCK_ROW(16, I32, filterValueC), WAVELOCK_ROW(20, F32, filterValueD),
      WAVELOCK_ROW(24, F32, filterValueE), WAVELOCK_ROW(28, F32, filterValueG),
      WAVELOCK_ROW(32, F32, filterValueF), WAVELOCK_ROW(36, I32, filterValueH),
      WAVELOCK_ROW(40, F32, filterValueI), WAVELOCK_ROW(44, F32, filterValueJ),
  };
};

struct SpectrumSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "spectrum";
  static constexpr std::uint32_t kTag = tag::kSpectrum;
  static constexpr std::uint32_t kSize = 872;
  static constexpr std::uint16_t kVersion = 3;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, spectrumField0),
      WAVELOCK_ROW(4, I32, spectrumScale),
      WAVELOCK_ROW(8, I32, spectrumField8),
      WAVELOCK_ROW(12, I32, spectrumField12),
      WAVELOCK_ROW(16, I32, spectrumField16),
      WAVELOCK_ROW(20, I32, spectrumField20),
      WAVELOCK_ROW(24, I32, spectrumField24),
      WAVELOCK_ROW(28, I32, spectrumPoints),
      WAVELOCK_ROW(32, F32, spectrumField32),
      WAVELOCK_ROW(36, I32, spectrumField36),
      WAVELOCK_ROW(40, F32, spectrumDisplayStart),
      WAVELOCK_ROW(44, F32, spectrumDisplayEnd),
      WAVELOCK_ROW(48, F32, spectrumDisplayMin),
      WAVELOCK_ROW(52, F32, spectrumDisplayMax),
      WAVELOCK_ROW(56, F32, spectrumField56),
      WAVELOCK_ROW(60, F32, spectrumField60),
      WAVELOCK_ROW(64, I32, spectrumField64),
      WAVELOCK_ROW(68, I32, spectrumField68),
      WAVELOCK_ROW(72, F32, binWidth).Since(1),
      WAVELOCK_ROW(76, F32, spectrumStart).Since(1),
      WAVELOCK_ROW(80, F32, spectrumEnd).Since(1),
      WAVELOCK_ROW(84, I32, spectrumField84).Since(2).ReadOnly("written as zero"),
      WAVELOCK_ROW(88, I32, spectrumField88).Since(2).ReadOnly("written as zero"),
      WAVELOCK_ROW(92, I32, spectrumField92).Since(3),
      WAVELOCK_ROW(96, I32, spectrumField96).Since(3),
      WAVELOCK_ROW(100, F32, spectrumField100).Since(3),
  };
};

struct FlagASection {
  using Model = CSetup;
  static constexpr const char* kTitle = "flagA group";
  static constexpr std::uint32_t kTag = tag::kFlagA;
  static constexpr std::uint32_t kSize = 824;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, flagA),  WAVELOCK_ROW(4, F32, valueA),         WAVELOCK_ROW(8, I32, indexA),
      WAVELOCK_ROW(12, I32, flagB), WAVELOCK_ROW(16, F32, windowSeconds), WAVELOCK_ROW(20, I32, valueB),
  };
};

struct DisplayOrderSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "display order";
  static constexpr std::uint32_t kTag = tag::kDisplayOrder;
  static constexpr std::uint32_t kSize = 81920;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, displayOrder),
      WAVELOCK_ROW(40960, I32, displayMark),
  };
};

struct SpareSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "six spare numbers";
  static constexpr std::uint32_t kTag = tag::kSpare;
  static constexpr std::uint32_t kSize = 24;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, block1010),
  };
};

struct SourceNameSection {
  using Model = CSetup;
  static constexpr const char* kTitle = "source name";
  static constexpr std::uint32_t kTag = tag::kSourceName;
  static constexpr std::uint32_t kSize = 20;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Chars<20>, sourceName),
  };
};

// ----- Parameter blocks

struct ParamsASection {
  using Model = ParamsA;
  static constexpr const char* kTitle = "parameter block A";
  static constexpr std::uint32_t kTag = tag::kParamsA;
  static constexpr std::uint32_t kSize = 168;
  static constexpr std::uint16_t kVersion = 1;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, aMode),
      WAVELOCK_ROW(4, I32, aCount),
      WAVELOCK_ROW(8, F32, aRangeLow),
      WAVELOCK_ROW(12, F32, aRangeHigh),
      WAVELOCK_ROW(16, F32, aWindowStart),
      WAVELOCK_ROW(20, F32, aWindowEnd),
      WAVELOCK_ROW(24, F32, aLevel),
      WAVELOCK_ROW(28, I32, aField28),
      WAVELOCK_ROW(32, I32, aChannel),
      WAVELOCK_ROW(48, I32, aField48),
      WAVELOCK_ROW(52, I32, aField52),
      WAVELOCK_ROW(56, I32, aField56),
      WAVELOCK_ROW(60, I32, aField60),
      WAVELOCK_ROW(64, I32, aField64),
      WAVELOCK_ROW(68, I32, aField68),
      WAVELOCK_ROW(72, I32, aField72),
      WAVELOCK_ROW(76, F32, aField76),
      WAVELOCK_ROW(80, I32, aField80),
      WAVELOCK_ROW(84, I32, aField84),
      WAVELOCK_ROW(88, I32, aField88),
      WAVELOCK_ROW(92, I32, aField92),
      WAVELOCK_ROW(96, I32, aChannel2),
      WAVELOCK_ROW(100, Image<LongFilterSpecLayout>, aFilter),
  };
};

struct ParamsBSection {
  using Model = ParamsB;
  static constexpr const char* kTitle = "parameter block B";
  static constexpr std::uint32_t kTag = tag::kParamsB;
  static constexpr std::uint32_t kSize = 140;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, bMode),
      WAVELOCK_ROW(4, I32, bCount),
      WAVELOCK_ROW(8, F32, bWindowStart),
      WAVELOCK_ROW(12, F32, bWindowEnd),
      WAVELOCK_ROW(16, I32, bField16),
      WAVELOCK_ROW(20, I32, bField20),
      WAVELOCK_ROW(24, I32, bField24),
      WAVELOCK_ROW(28, I32, bField28),
      WAVELOCK_ROW(32, F32, bLevel),
      WAVELOCK_ROW(36, I32, bField36),
      WAVELOCK_ROW(40, I32, bField40),
      WAVELOCK_ROW(44, I32, bField44),
      WAVELOCK_ROW(48, F32, bField48),
      WAVELOCK_ROW(52, I32, bField52),
      WAVELOCK_ROW(56, I32, bField56).WriteOnly("never taken from a file"),
      WAVELOCK_ROW(60, I32, bField60),
      WAVELOCK_ROW(64, I32, bField64),
      WAVELOCK_ROW(68, I32, bField68),
      WAVELOCK_ROW(72, Image<LongFilterSpecLayout>, bFilter),
  };
};

struct ParamsCSection {
  using Model = ParamsC;
  static constexpr const char* kTitle = "parameter block C";
  static constexpr std::uint32_t kTag = tag::kParamsC;
  static constexpr std::uint32_t kSize = 64;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, cCount),    WAVELOCK_ROW(4, F32, cWindowStart), WAVELOCK_ROW(8, F32, cWindowEnd),
      WAVELOCK_ROW(12, F32, cLevel),   WAVELOCK_ROW(16, I32, cField16),    WAVELOCK_ROW(20, I32, cField20),
      WAVELOCK_ROW(24, I32, cField24), WAVELOCK_ROW(28, F32, cRangeLow),   WAVELOCK_ROW(32, F32, cRangeHigh),
      WAVELOCK_ROW(40, I32, cField40), WAVELOCK_ROW(44, I32, cField44),    WAVELOCK_ROW(48, I32, cField48),
      WAVELOCK_ROW(52, I32, cField52), WAVELOCK_ROW(56, I32, cField56),    WAVELOCK_ROW(60, F32, cField60),
  };
};

// ----- Waveforms

// The word behind the file is the handle of a running program, zero in every file.
struct WaveformSourceLayout {
  using Model = WaveformSource;
  static constexpr const char* kTitle = "file reference";
  static constexpr std::uint32_t kSize = 524;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, value0),
      WAVELOCK_ROW(4, I32, value1),
      WAVELOCK_ROW(8, Chars<512>, file),
  };
};

struct WaveformSourcesLayout {
  using Model = WaveformSources;
  static constexpr const char* kTitle = "waveform sources";
  static constexpr std::uint32_t kSize = 2084;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Image<WaveformSourceLayout>, sourceA),
      WAVELOCK_ROW(524, Image<WaveformSourceLayout>, sourceB),
      WAVELOCK_ROW(1048, Image<WaveformSourceLayout>, sourceC),
      WAVELOCK_ROW(1572, Chars<512>, sourceNote),
  };
};

struct WaveformSlotLayout {
  using Model = WaveformSlot;
  static constexpr const char* kTitle = "waveform slot";
  static constexpr std::uint32_t kSize = 584;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, slotFlag),         WAVELOCK_ROW(4, F32, slotStart),
      WAVELOCK_ROW(8, F32, slotEnd),          WAVELOCK_ROW(12, I32, slotPoints),
      WAVELOCK_ROW(16, I32, slotField16),     WAVELOCK_ROW(20, I32, slotField20),
      WAVELOCK_ROW(24, F32, slotField24),     WAVELOCK_ROW(28, F32, slotField28),
      WAVELOCK_ROW(32, I32, slotField32),     WAVELOCK_ROW(36, F32, slotField36),
      WAVELOCK_ROW(40, F32, slotField40),     WAVELOCK_ROW(44, F32, slotField44),
      WAVELOCK_ROW(48, F32, slotField48),     WAVELOCK_ROW(52, F32, slotField52),
      WAVELOCK_ROW(56, F32, slotField56),     WAVELOCK_ROW(60, F32, slotField60),
      WAVELOCK_ROW(64, F32, slotField64),     WAVELOCK_ROW(68, I32, slotField68),
      WAVELOCK_ROW(72, Chars<512>, slotFile),
  };
};

struct WaveformSourcesSection {
  using Model = WaveformSet;
  static constexpr const char* kTitle = "waveform slots: where they come from";
  static constexpr std::uint32_t kTag = tag::kWaveformSources;
  static constexpr std::uint32_t kSize = 20840;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Image<WaveformSourcesLayout>, sources),
  };
};

struct WaveformSlotsSection {
  using Model = WaveformSet;
  static constexpr const char* kTitle = "waveform slots: what they show";
  static constexpr std::uint32_t kTag = tag::kWaveformSlots;
  static constexpr std::uint32_t kSize = 5840;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Image<WaveformSlotLayout>, slots),
  };
};

struct WaveformNamesSection {
  using Model = WaveformNames;
  static constexpr const char* kTitle = "waveform slots: their names";
  static constexpr std::uint32_t kTag = tag::kWaveformNames;
  static constexpr std::uint32_t kSize = 5640;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Chars<512>, waveNames),
      WAVELOCK_ROW(5120, I32, waveField0),
      WAVELOCK_ROW(5124, I32, waveField1),
      WAVELOCK_ROW(5128, Chars<512>, waveFile),
  };
};

// ----- Channels

struct ChannelLinkLayout {
  using Model = ChannelLink;
  static constexpr const char* kTitle = "channel link";
  static constexpr std::uint32_t kSize = 8;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, linkA),
      WAVELOCK_ROW(4, I32, linkIndex),
  };
};

struct ChannelLinkEndLayout {
  using Model = ChannelLink;
  static constexpr const char* kTitle = "end of a channel link";
  static constexpr std::uint32_t kSize = 4;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, linkC),
  };
};

// What channels and derived channels both hold.
struct ChannelRows {
  using Model = SetupChannel;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Chars<20>, label),      WAVELOCK_ROW(24, I32, channelType),
      WAVELOCK_ROW(28, I32, channelFlagA),    WAVELOCK_ROW(32, I32, channelFlagB),
      WAVELOCK_ROW(36, I32, channelFlagC),    WAVELOCK_ROW(40, I32, disabled),
      WAVELOCK_ROW(44, I32, channelValueC),   WAVELOCK_ROW(48, I32, channelValueD),
      WAVELOCK_ROW(52, Chars<10>, textA),     WAVELOCK_ROW(62, Chars<10>, textB),
      WAVELOCK_ROW(72, F32, layoutScale),     WAVELOCK_ROW(152, I32, layoutSelected),
      WAVELOCK_ROW(232, F32, boxLeft),        WAVELOCK_ROW(312, F32, boxRight),
      WAVELOCK_ROW(392, F32, boxTop),         WAVELOCK_ROW(472, F32, boxBottom),
      WAVELOCK_ROW(552, F32, zoomLeft),       WAVELOCK_ROW(632, F32, zoomRight),
      WAVELOCK_ROW(712, F32, zoomTop),        WAVELOCK_ROW(792, F32, zoomBottom),
      WAVELOCK_ROW(884, F32, channelScale),   WAVELOCK_ROW(888, I32, physicalChannel),
      WAVELOCK_ROW(892, F32, countScale),     WAVELOCK_ROW(896, I32, filterField),
      WAVELOCK_ROW(900, F32, lowpassHz),      WAVELOCK_ROW(904, I32, lowpassField),
      WAVELOCK_ROW(908, F32, highpassHz),     WAVELOCK_ROW(912, I32, highpassField),
      WAVELOCK_ROW(916, F32, gain),           WAVELOCK_ROW(1716, Image<FilterSpecLayout>, filterSpec),
      WAVELOCK_ROW(1784, F32, position),      WAVELOCK_ROW(1816, I32, channelValueE),
      WAVELOCK_ROW(1820, I32, channelValueF), WAVELOCK_ROW(1824, I32, channelValueG),
      WAVELOCK_ROW(1912, I32, channelValueA), WAVELOCK_ROW(1916, I32, channelValueB),
      WAVELOCK_ROW(1924, I32, sweeps),        WAVELOCK_ROW(1928, I32, channelValueH),
      WAVELOCK_ROW(1948, I32, channelFlagD),
  };
};

struct ChannelSection {
  using Model = SetupChannel;
  static constexpr const char* kTitle = "channel";
  static constexpr std::uint32_t kTag = tag::kFirstChannel;
  static constexpr std::uint32_t kSize = 2648;
  static constexpr std::uint16_t kVersion = 1;
  static constexpr Row<Model> kOwnRows[] = {
      WAVELOCK_ROW(1848, Image<ChannelLinkLayout>, links),
      WAVELOCK_ROW(1920, F32, signalRatio),
      WAVELOCK_ROW(1932, I32, colorA).Since(1),
      WAVELOCK_ROW(1936, I32, colorB).Since(1),
      WAVELOCK_ROW(1940, I32, colorC).Since(1),
      WAVELOCK_ROW(1944, I32, colorD).Since(1),
      WAVELOCK_ROW(1952, Image<ChannelLinkEndLayout>, links),
      WAVELOCK_ROW(1984, F32, position2),
  };
  static constexpr auto kRows = Merged(ChannelRows::kRows, kOwnRows);
};

struct DerivedChannelSection {
  using Model = SetupChannel;
  static constexpr const char* kTitle = "derived channel";
  static constexpr std::uint32_t kTag = tag::kFirstDerivedChannel[0];
  static constexpr std::uint32_t kSize = ChannelSection::kSize;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kOwnRows[] = {
      WAVELOCK_ROW(1932, I32, colorA).Since(1).ReadOnly("this writer stores version 0, which has none"),
      WAVELOCK_ROW(1936, I32, colorB).Since(1).ReadOnly("this writer stores version 0, which has none"),
      WAVELOCK_ROW(1940, I32, colorC).Since(1).ReadOnly("this writer stores version 0, which has none"),
      WAVELOCK_ROW(1944, I32, colorD).Since(1).ReadOnly("this writer stores version 0, which has none"),
  };
  static constexpr auto kRows = Merged(ChannelRows::kRows, kOwnRows);
};

// ----- Labels, subject, tables

struct LabelSection {
  using Model = SetupLabel;
  static constexpr const char* kTitle = "event or artifact label";
  static constexpr std::uint32_t kTag = tag::kFirstEventLabel;
  static constexpr std::uint32_t kSize = 280;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, code),
      WAVELOCK_ROW(4, Chars<256>, text),
  };
};

// The fields stand without alignment.
struct SubjectSection {
  using Model = SubjectFields;
  static constexpr const char* kTitle = "subject and institution";
  static constexpr std::uint32_t kTag = tag::kSubject;
  static constexpr std::uint32_t kSize = 1328;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, I32, age),
      WAVELOCK_ROW(4, Chars<21>, recordDate),
      WAVELOCK_ROW(25, Chars<21>, department),
      WAVELOCK_ROW(46, Chars<21>, subjectTextH),
      WAVELOCK_ROW(68, I32, subjectValueA),
      WAVELOCK_ROW(72, Chars<21>, subjectTextA),
      WAVELOCK_ROW(93, Chars<21>, instituteName),
      WAVELOCK_ROW(114, Chars<256>, subjectTextD),
      WAVELOCK_ROW(370, Chars<21>, subjectTextC),
      WAVELOCK_ROW(391, Chars<21>, operatorName),
      WAVELOCK_ROW(412, Chars<21>, subjectTextB),
      WAVELOCK_ROW(433, Chars<21>, researcherName),
      WAVELOCK_ROW(456, I32, subjectValueB),
      WAVELOCK_ROW(460, Chars<21>, recordTime),
      WAVELOCK_ROW(481, Chars<21>, unitName),
      WAVELOCK_ROW(502, Chars<256>, subjectTextF),
      WAVELOCK_ROW(760, I32, subjectValueC),
      WAVELOCK_ROW(764, Chars<256>, subjectTextE),
      WAVELOCK_ROW(1020, Chars<21>, subjectTextI),
      WAVELOCK_ROW(1041, Chars<21>, subjectTextJ),
      WAVELOCK_ROW(1062, Chars<256>, subjectTextG),
      WAVELOCK_ROW(1320, I32, sex),
      WAVELOCK_ROW(1324, I32, hand),
  };
};

// The image of the record table from one entry on; entries lie closer together than their records are long,
// so that a record repeats what the next one holds.
struct RecordTableEntry {
  static constexpr std::size_t kStep = 32;
  static constexpr std::size_t kSize = 132;
  static constexpr std::int32_t kMostEntries = (kRecordTableBytes - kSize) / kStep + 1;

  using Table = std::array<std::uint8_t, kRecordTableBytes>;
  RecordTableEntry(Table& table, std::uint32_t index)
      : bytes(std::span(table).subspan(kStep * index).first<kSize>()) {}

  std::span<std::uint8_t, kSize> bytes;
};

struct RecordTableSection {
  using Model = RecordTableEntry;
  static constexpr const char* kTitle = "record table entry";
  static constexpr std::uint32_t kTag = tag::kFirstRecordTableEntry;
  static constexpr std::uint32_t kSize = 132;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW(0, Bytes<132>, bytes),
  };
};

// One of the inputs, and the ends of its range in physical units, which are stored in place of slope and
// offset.
struct AuxInput {
  AuxInputs& inputs;
  std::size_t index;
  float lowEnd = 0;
  float highEnd = 0;
};

template <class Field>
Field& FieldOf(AuxInput& input, AuxInputs::PerInput<Field> AuxInputs::*member) {
  return (input.inputs.*member)[input.index];
}

struct AuxInputSection {
  using Model = AuxInput;
  static constexpr const char* kTitle = "auxiliary input";
  static constexpr std::uint32_t kTag = tag::kFirstAuxInput;
  static constexpr std::uint32_t kSize = 74;
  static constexpr std::uint16_t kVersion = 0;
  static constexpr Row<Model> kRows[] = {
      WAVELOCK_ROW_OF(AuxInputs, 0, F32, auxRawLow),
      WAVELOCK_ROW_OF(AuxInputs, 4, F32, auxRawHigh),
      WAVELOCK_ROW(8, F32, lowEnd),
      WAVELOCK_ROW(12, F32, highEnd),
      WAVELOCK_ROW_OF(AuxInputs, 16, F32, auxField16),
      WAVELOCK_ROW_OF(AuxInputs, 20, F32, auxField20),
      WAVELOCK_ROW_OF(AuxInputs, 24, I32, auxField24),
      WAVELOCK_ROW_OF(AuxInputs, 28, F32, auxField28),
      WAVELOCK_ROW_OF(AuxInputs, 32, Chars<20>, auxUnit),
      WAVELOCK_ROW_OF(AuxInputs, 52, I32, auxField52),
      WAVELOCK_ROW_OF(AuxInputs, 56, Chars<10>, auxLabel),
      WAVELOCK_ROW_OF(AuxInputs, 66, F32, auxField66),
      WAVELOCK_ROW_OF(AuxInputs, 70, F32, auxField70),
  };
};

}  // namespace wavelock

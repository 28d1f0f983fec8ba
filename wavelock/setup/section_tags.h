// The tags of all records that a container can hold. A run of numbered records has one tag for each, counting
// up from the one given here.
#pragma once

#include <cstdint>

namespace wavelock::tag {

// The setup.
inline constexpr std::uint32_t kMain = 1000;
inline constexpr std::uint32_t kTimeAxis = 1001;
inline constexpr std::uint32_t kTrigger = 1002;
inline constexpr std::uint32_t kFilter = 1003;
inline constexpr std::uint32_t kSpectrum = 1005;
inline constexpr std::uint32_t kFlagA = 1006;
inline constexpr std::uint32_t kDisplayOrder = 1007;
inline constexpr std::uint32_t kParamsA = 1008;
inline constexpr std::uint32_t kParamsC = 1009;
inline constexpr std::uint32_t kSpare = 1010;
inline constexpr std::uint32_t kParamsB = 1011;
inline constexpr std::uint32_t kWaveformSources = 1500;
inline constexpr std::uint32_t kWaveformSlots = 1510;
inline constexpr std::uint32_t kWaveformNames = 1520;
inline constexpr std::uint32_t kFirstChannel = 5000;
inline constexpr std::uint32_t kSourceName = 12000;
inline constexpr std::uint32_t kFirstDerivedChannel[] = {15000, 20000, 25000};  // of each group
inline constexpr std::uint32_t kFirstEventLabel = 30001;
inline constexpr std::uint32_t kFirstArtifactLabel = 31000;
inline constexpr std::uint32_t kSubject = 40000;
inline constexpr std::uint32_t kFirstRecordTableEntry = 80000;
inline constexpr std::uint32_t kFirstAuxInput = 110000;

// What stands beside the samples.
inline constexpr std::uint32_t kLabel = 30000;
inline constexpr std::uint32_t kMarker = 50000;
inline constexpr std::uint32_t kOverlayParameters = 60000;
inline constexpr std::uint32_t kOverlayRow = 60001;
inline constexpr std::uint32_t kOverlaySegment = 60002;
inline constexpr std::uint32_t kOverlayCoefficient = 60003;

// Closes the tail of a recording with the revision of its form.
inline constexpr std::uint32_t kTailRevision = 70000;

// Whether a tag is one of these, or of a run's, whose first tags are followed by as many as the run may have.
constexpr bool IsKnown(std::uint32_t tag) {
  struct Run {
    std::uint32_t first;
    std::uint32_t count;
  };
  constexpr Run kRuns[] = {
      {kMain, 4},
      {kSpectrum, 7},
      {kWaveformSources, 1},
      {kWaveformSlots, 1},
      {kWaveformNames, 1},
      {kFirstChannel, 7000},
      {kSourceName, 1},
      {kFirstDerivedChannel[0], 15000},
      {kLabel, 21},
      {kFirstArtifactLabel, 20},
      {kSubject, 1},
      {kMarker, 1},
      {kOverlayParameters, 4},
      {kTailRevision, 1},
      {kFirstRecordTableEntry, 321},
      {kFirstAuxInput, 16},
  };
  for (const Run& run : kRuns) {
    if (tag - run.first < run.count) return true;
  }
  return false;
}
static_assert(IsKnown(kMain + 3) && !IsKnown(kMain + 4) && IsKnown(kParamsB) && !IsKnown(kParamsB + 1));

}  // namespace wavelock::tag

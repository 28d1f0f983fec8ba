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

}  // namespace wavelock::tag

// Markers, labels and corrections as they lie in their records. Rows and parameters of the corrections are in
// correction_overlay.h: they are kept as they lie.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wavelock/numerics/stored.h"

namespace wavelock {

// ----- Markers

// The form that is written.
struct MarkerRecord {
  Stored<std::uint32_t> colour;
  StoredText<50> name;
  StoredBytes<2> reserved54;
  Stored<std::int32_t> attributeB;
  Stored<std::int32_t> attributeC;
  Stored<std::int32_t> attributeD;
  Stored<std::int32_t> sampleIndex;
  Stored<double> secondValue;
  Stored<std::int32_t> channel;
  Stored<std::int32_t> epoch;
  Stored<std::int32_t> locked;
  StoredText<50> text;
  StoredBytes<2> reserved142;
  Stored<std::int32_t> attributeA;
  Stored<std::int32_t> labelMode;
};
static_assert(sizeof(MarkerRecord) == 152 && alignof(MarkerRecord) == 1);
static_assert(offsetof(MarkerRecord, attributeB) == 56 && offsetof(MarkerRecord, attributeA) == 144);

// The form before it, with a time in place of a point on the axis.
struct TimedMarkerRecord {
  Stored<std::uint32_t> colour;
  StoredText<36> name;
  Stored<std::int32_t> attributeD;
  StoredBytes<4> reserved44;
  Stored<double> timeMs;
  Stored<double> secondValue;
  Stored<std::int32_t> channel;
  Stored<std::int32_t> epoch;
  Stored<std::int32_t> locked;
  StoredText<20> text;
  Stored<std::int32_t> attributeA;
  StoredBytes<4> reserved100;
};
static_assert(sizeof(TimedMarkerRecord) == 104 && alignof(TimedMarkerRecord) == 1);
static_assert(offsetof(TimedMarkerRecord, timeMs) == 48 && offsetof(TimedMarkerRecord, attributeA) == 96);

// ----- Labels

struct LabelRecord {
  StoredText<256> text;
  Stored<std::uint32_t> value;
};
static_assert(sizeof(LabelRecord) == 260 && alignof(LabelRecord) == 1);
static_assert(offsetof(LabelRecord, value) == 256);

// ----- Polynomials of the corrections

struct SegmentRecord {
  Stored<std::uint32_t> firstSample;
  Stored<std::uint32_t> endSample;
  Stored<std::uint32_t> id;
};
static_assert(sizeof(SegmentRecord) == 12);

struct CoefficientRecord {
  Stored<double> value;
  Stored<std::uint32_t> segmentId;
  StoredBytes<4> reserved12;
};
static_assert(sizeof(CoefficientRecord) == 16);

}  // namespace wavelock

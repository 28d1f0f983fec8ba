// Corrections that lie beside the samples of a continuous recording and are laid over them on each read.
//
// They are of two kinds, both with a value for each channel: rows of offsets, each of which holds from its
// sample up to the next row, and segments with polynomials, whose values are subtracted. Their unit is
// 204.8 / calibration counts, with the calibration of the channel in the recording's header.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "wavelock/annotations/first_fit_map.h"
#include "wavelock/annotations/typed_array.h"
#include "wavelock/numerics/poly_evaluator.h"
#include "wavelock/numerics/stored.h"
#include "wavelock/platform/host.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {

// The same bytes in memory and in a file.
struct OverlayRow {
  Stored<std::uint32_t> startSample;
  std::array<Stored<float>, 512> channelValue;  // zero for channels that the recording does not have
};
static_assert(sizeof(OverlayRow) == 2052 && alignof(OverlayRow) == 1);

class OverlayRowArray : public TypedArray<OverlayRow> {};
class CoefficientArray : public TypedArray<double> {};

struct OverlaySegment {
  bool Holds(std::uint32_t sample) const { return firstSample <= sample && sample < endSample; }

  std::uint32_t firstSample = 0;
  std::uint32_t endSample = 0;    // not in it
  std::uint32_t id = 0;           // by which its coefficients find it in a file
  CoefficientArray coefficients;  // power 0 of all channels, then power 1, and so on
};

// The same bytes in memory and in a file. What is only carried has no effect.
struct OverlayParameters {
  Stored<float> storedValue0{-1000.0F};
  Stored<std::uint32_t> storedWord1;
  Stored<float> storedValue2{500.0F};
  Stored<float> storedValue3{1500.0F};
  Stored<float> storedValue4{120.0F};
  Stored<std::int32_t> sampleShift;  // subtracted from a sample's position before its row is looked up
  std::array<Stored<std::uint32_t>, 5> storedWords6;
  Stored<float> storedValue11{-100.0F};
  Stored<float> storedValue12{600.0F};
  Stored<std::int32_t> polyOrder{3};  // highest power
  Stored<std::int32_t> polyChannels;  // polynomials in a segment
  Stored<std::int32_t> alwaysSave{1};
  std::array<Stored<std::uint32_t>, 2> storedWords16;
};
static_assert(sizeof(OverlayParameters) == 72 && alignof(OverlayParameters) == 1);
static_assert(offsetof(OverlayParameters, sampleShift) == 20 && offsetof(OverlayParameters, polyOrder) == 52);

class CCorrectionOverlay {
 public:
  explicit CCorrectionOverlay(Host& host = Host::Default()) : host_(host) {}
  virtual ~CCorrectionOverlay() = default;
  CCorrectionOverlay(const CCorrectionOverlay&) = delete;
  CCorrectionOverlay& operator=(const CCorrectionOverlay&) = delete;

  // Reads the corrections in place of those that are there. False without parameters in the container, which
  // then has no corrections; for a coefficient of no known segment, with all up to it taken; and when memory
  // ran out, with the rows, the segments or the coefficients from there on missing. Parameters that are not
  // in the container stay as they are.
  bool Load(CTffFile& container);

  // Appends the corrections. Segments are numbered anew from 0. False at the first record that cannot be
  // written.
  bool Save(CTffFile& container) const;

  // Whether Save writes the parameters, without which a reader finds no corrections.
  bool SavesParameters() const { return HasRows() || params.alwaysSave != 0; }

  bool HasRows() const { return !rows_.IsEmpty(); }
  bool HasSegments() const { return !segments_.empty(); }
  std::int32_t GetSampleShift() const { return params.sampleShift; }

  std::span<const OverlayRow> Rows() const { return rows_.Elements(); }
  std::span<const std::unique_ptr<OverlaySegment>> Segments() const { return segments_; }

  // Behind those that are there. False when memory ran out.
  bool AddRow(const OverlayRow& row);
  bool AddSegment(std::unique_ptr<OverlaySegment> segment);

  // The row that holds at a sample, counted from 1; 0 before the first. Rows are expected to rise: where they
  // do not, the first that reaches from its own start to its successor's over the sample wins.
  std::uint32_t FindRow(std::uint32_t sample) { return FindRowRun(sample).index; }

  // The same, with the sample up to which the answer holds.
  FirstFitMap::Run FindRowRun(std::uint32_t sample);

  // Of a row counted from 0; 0 for a row or a channel that there is not.
  float GetRowValue(std::int32_t rowIndex, std::uint32_t channel) const;

  // Makes the first segment that holds the sample the current one, unless the current one holds it. Null,
  // and the current one stays, when none does.
  const OverlaySegment* EnterSegment(std::uint32_t sample);

  // The polynomials of the current segment.
  const CPolyEvaluator& Evaluator() const { return evaluator_; }

  // The values of all `polyChannels` polynomials at a sample, in single precision. They are the overlay's
  // own, and the next call writes over them. Null when no segment holds the sample or memory ran out, which
  // the person is told.
  const float* EvaluateAt(std::uint32_t sample);

  // Looks ahead of the first use. False when memory ran out: all samples then are in no row and no segment.
  bool PrepareLookups();

  OverlayParameters params;

 private:
  void Clear();
  bool LoadRows(CTffFile& container);
  bool LoadSegments(CTffFile& container);
  bool LoadCoefficients(CTffFile& container);
  bool SaveSegment(CTffFile& container, const OverlaySegment& segment, std::uint32_t id) const;

  Host& host_;
  OverlayRowArray rows_;
  std::vector<std::unique_ptr<OverlaySegment>> segments_;  // none of them null
  bool isPrepared_ = false;
  FirstFitMap rowsBySample_;  // by numbers of rows, counted from 1
  FirstFitMap segmentsBySample_;

  const OverlaySegment* currentSegment_ = nullptr;  // which evaluator_ is set up for
  CPolyEvaluator evaluator_;
  std::vector<float> channelValues_;
};

}  // namespace wavelock

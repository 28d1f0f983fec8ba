#include "wavelock/annotations/correction_overlay.h"

#include <algorithm>
#include <limits>
#include <map>
#include <new>
#include <utility>

#include "wavelock/annotations/stored_records.h"
#include "wavelock/prompts/notices.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {
namespace {

// Beyond this number of polynomials there is no memory for their values.
constexpr std::int32_t kMostPolynomials = 1 << 20;

// What stands behind the bytes of a record that is short.
enum class Rest { kZero, kOfRecordBefore };

// Calls take(record) for each record of a tag, in the order of the file, until it gives false.
template <class Record, class Take>
bool ForEachRecord(CTffFile& container, std::uint32_t tag, Rest rest, Take take) {
  Record record{};
  std::uint64_t length = sizeof record;
  container.ReadSection(tag, length, &record);
  while (length != 0) {
    if (!take(record)) return false;
    if (rest == Rest::kZero) record = {};
    length = sizeof record;
    container.ReadNextSection(tag, length, &record);
  }
  return true;
}

// Doubles the room when it is used up, whatever the array's own rule: a file may hold any number of records.
template <class Array, class Element>
bool AppendToMany(Array& array, const Element& element) {
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  const std::int32_t size = array.Size();
  if (size == kMost) return false;
  if (size == array.Capacity() && !array.Reserve(size < kMost / 2 ? std::max(16, 2 * size) : kMost))
    return false;
  return array.Append(element);
}

// Row i, counted from 1, reaches from its start to that of the next one. What lies before the first is
// nobody's, whatever the others say, and stands in front of all as row 0.
FirstFitMap MapOfRows(std::span<const OverlayRow> rows) {
  std::vector<FirstFitMap::Interval> intervals;
  intervals.reserve(rows.size() + 1);
  std::uint64_t first = 0;
  for (const OverlayRow& row : rows) {
    intervals.push_back({first, row.startSample});
    first = row.startSample;
  }
  intervals.push_back({first, FirstFitMap::kPositionsEnd});
  return FirstFitMap(intervals);
}

FirstFitMap MapOfSegments(std::span<const std::unique_ptr<OverlaySegment>> segments) {
  std::vector<FirstFitMap::Interval> intervals;
  intervals.reserve(segments.size());
  for (const auto& segment : segments) intervals.push_back({segment->firstSample, segment->endSample});
  return FirstFitMap(intervals);
}

}  // namespace

void CCorrectionOverlay::Clear() {
  rows_.SetSize(0);
  segments_.clear();
  currentSegment_ = nullptr;
  isPrepared_ = false;
}

bool CCorrectionOverlay::Load(CTffFile& container) {
  Clear();
  std::uint64_t length = sizeof params;
  if (container.ReadSection(tag::kOverlayParameters, length, &params) == 0) return false;
  if (!LoadRows(container)) {
    rows_.SetSize(0);
    return false;
  }
  if (!LoadSegments(container)) {
    segments_.clear();
    return false;
  }
  return LoadCoefficients(container);
}

bool CCorrectionOverlay::LoadRows(CTffFile& container) {
  return ForEachRecord<OverlayRow>(container, tag::kOverlayRow, Rest::kOfRecordBefore,
                                   [this](const OverlayRow& row) { return AppendToMany(rows_, row); });
}

bool CCorrectionOverlay::LoadSegments(CTffFile& container) {
  const auto take = [this](const SegmentRecord& record) {
    auto segment = std::make_unique<OverlaySegment>();
    segment->firstSample = record.firstSample;
    segment->endSample = record.endSample;
    segment->id = record.id;
    segments_.push_back(std::move(segment));
    return true;
  };
  try {
    return ForEachRecord<SegmentRecord>(container, tag::kOverlaySegment, Rest::kZero, take);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool CCorrectionOverlay::LoadCoefficients(CTffFile& container) {
  std::map<std::uint32_t, OverlaySegment*> byId;
  const auto take = [&byId](const CoefficientRecord& record) {
    const auto segment = byId.find(record.segmentId);
    return segment != byId.end() && AppendToMany(segment->second->coefficients, double{record.value});
  };
  try {
    for (const auto& segment : segments_)
      byId.emplace(segment->id, segment.get());  // the first of an id stays
    return ForEachRecord<CoefficientRecord>(container, tag::kOverlayCoefficient, Rest::kZero, take);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool CCorrectionOverlay::Save(CTffFile& container) const {
  std::uint32_t id = 0;
  for (const auto& segment : segments_) {
    if (!SaveSegment(container, *segment, id++)) return false;
  }
  if (!SavesParameters()) return true;
  if (!container.WriteSection(tag::kOverlayParameters, sizeof params, &params, 0)) return false;
  return std::all_of(Rows().begin(), Rows().end(), [&container](const OverlayRow& row) {
    return container.WriteSection(tag::kOverlayRow, sizeof row, &row, 0);
  });
}

bool CCorrectionOverlay::SaveSegment(CTffFile& container, const OverlaySegment& segment,
                                     std::uint32_t id) const {
  SegmentRecord record{};
  record.firstSample = segment.firstSample;
  record.endSample = segment.endSample;
  record.id = id;
  if (!container.WriteSection(tag::kOverlaySegment, sizeof record, &record, 0)) return false;
  CoefficientRecord coefficient{};
  coefficient.segmentId = id;
  for (const double value : segment.coefficients.Elements()) {
    coefficient.value = value;
    if (!container.WriteSection(tag::kOverlayCoefficient, sizeof coefficient, &coefficient, 0)) return false;
  }
  return true;
}

bool CCorrectionOverlay::AddRow(const OverlayRow& row) {
  isPrepared_ = false;
  return AppendToMany(rows_, row);
}

bool CCorrectionOverlay::AddSegment(std::unique_ptr<OverlaySegment> segment) {
  isPrepared_ = false;
  try {
    if (segment) segments_.push_back(std::move(segment));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool CCorrectionOverlay::PrepareLookups() {
  if (isPrepared_) return true;
  try {
    rowsBySample_ = MapOfRows(Rows());
    segmentsBySample_ = MapOfSegments(Segments());
    isPrepared_ = true;
  } catch (const std::bad_alloc&) {
    rowsBySample_ = {};
    segmentsBySample_ = {};
  }
  return isPrepared_;
}

FirstFitMap::Run CCorrectionOverlay::FindRowRun(std::uint32_t sample) {
  PrepareLookups();
  FirstFitMap::Run run = rowsBySample_.At(sample);
  if (run.index == FirstFitMap::kNone) run.index = 0;
  return run;
}

float CCorrectionOverlay::GetRowValue(std::int32_t rowIndex, std::uint32_t channel) const {
  if (rowIndex < 0 || rowIndex >= rows_.Size()) return 0;
  const auto& values = Rows()[static_cast<std::size_t>(rowIndex)].channelValue;
  return channel < values.size() ? values[channel] : 0.0F;
}

const OverlaySegment* CCorrectionOverlay::EnterSegment(std::uint32_t sample) {
  if (currentSegment_ != nullptr && currentSegment_->Holds(sample)) return currentSegment_;
  const auto find = [&] {
    PrepareLookups();
    return segmentsBySample_.At(sample).index;
  };
  std::uint32_t index = find();
  if (index != FirstFitMap::kNone && !segments_[index]->Holds(sample)) {
    isPrepared_ = false;  // somebody has changed a segment
    index = find();
  }
  if (index == FirstFitMap::kNone) return nullptr;
  currentSegment_ = segments_[index].get();
  evaluator_.Setup(params.polyOrder, params.polyChannels, currentSegment_->firstSample,
                   currentSegment_->endSample);
  evaluator_.SetCoefficients(currentSegment_->coefficients.Elements());
  return currentSegment_;
}

const float* CCorrectionOverlay::EvaluateAt(std::uint32_t sample) {
  if (EnterSegment(sample) == nullptr) return nullptr;
  const std::int32_t count = std::max(evaluator_.OutputCount(), 1);
  const bool isZero = evaluator_.Coefficients().empty();
  try {
    if (count > kMostPolynomials) throw std::bad_alloc();
    channelValues_.assign(static_cast<std::size_t>(count), 0.0F);
  } catch (const std::bad_alloc&) {
    ShowNotice(host_, "Cannot allocate memory");
    return nullptr;
  }
  const double* values = isZero ? nullptr : evaluator_.Evaluate(sample);
  for (std::size_t k = 0; values != nullptr && k < channelValues_.size(); ++k) {
    channelValues_[k] = static_cast<float>(values[k]);
  }
  return channelValues_.data();
}

}  // namespace wavelock

#include "wavelock/annotations/marker_list.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "wavelock/annotations/stored_records.h"
#include "wavelock/numerics/conversions.h"
#include "wavelock/numerics/stored.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {
namespace {

// What both forms have.
template <class Record>
CMarker CommonFields(const Record& record) {
  CMarker marker;
  marker.colour = record.colour;
  marker.name = record.name.View();
  marker.attributeA = record.attributeA;
  marker.attributeD = record.attributeD;
  marker.secondValue = record.secondValue;
  marker.channel = record.channel;
  marker.epoch = record.epoch;
  marker.locked = record.locked;
  marker.text = record.text.View();
  return marker;
}

CMarker MarkerFrom(const MarkerRecord& record) {
  CMarker marker = CommonFields(record);
  marker.attributeB = record.attributeB;
  marker.attributeC = record.attributeC;
  marker.sampleIndex = record.sampleIndex;
  marker.labelMode = record.labelMode;
  return marker;
}

CMarker MarkerFrom(const TimedMarkerRecord& record) {
  CMarker marker = CommonFields(record);
  marker.timeMs = record.timeMs;
  return marker;
}

MarkerRecord RecordOf(const CMarker& marker) {
  MarkerRecord record{};
  record.colour = marker.colour;
  record.name.Assign(marker.name);
  record.attributeB = marker.attributeB;
  record.attributeC = marker.attributeC;
  record.attributeD = marker.attributeD;
  record.sampleIndex = marker.sampleIndex;
  record.secondValue = marker.secondValue;
  record.channel = marker.channel;
  record.epoch = marker.epoch;
  record.locked = marker.locked;
  record.text.Assign(marker.text);
  record.attributeA = marker.attributeA;
  record.labelMode = marker.labelMode;
  return record;
}

// The bytes that a reading delivered; how many they are tells the form.
using RecordBytes = std::array<std::byte, sizeof(MarkerRecord)>;

std::optional<CMarker> MarkerFrom(const RecordBytes& bytes, std::uint64_t length) {
  if (length == sizeof(MarkerRecord)) {
    MarkerRecord record;
    std::copy_n(bytes.begin(), sizeof record, BytesOf(record).begin());
    return MarkerFrom(record);
  }
  if (length == sizeof(TimedMarkerRecord)) {
    TimedMarkerRecord record;
    std::copy_n(bytes.begin(), sizeof record, BytesOf(record).begin());
    return MarkerFrom(record);
  }
  return std::nullopt;
}

// Those of one name behind the first that are locked and lie on its channel.
std::vector<CMarker*> StackedOn(const CMarker& first, std::span<CMarker* const> others) {
  std::vector<CMarker*> stacked;
  std::copy_if(others.begin(), others.end(), std::back_inserter(stacked), [&first](const CMarker* other) {
    return other->locked != 0 && other->channel == first.channel;
  });
  return stacked;
}

void Spread(CMarker& first, std::span<CMarker* const> stacked) {
  std::int32_t channel = 0;
  first.channel = channel;
  for (CMarker* marker : stacked) marker->channel = ++channel;
}

// The typing error is an old acquaintance of its readers, and other programs look for these words.
constexpr char kQuestion[] =
    "Multiple instatnces of a locked marker were detected on a single channel\n"
    "Do you want to redistribute these across all channels";

// Turns times into points of an axis, in milliseconds.
class PointScale {
 public:
  explicit PointScale(CSetup& setup)
      : firstMs_(static_cast<float>(setup.timeStart * 1000.0)),
        last_(WrapToInt32(std::int64_t{setup.pointCount} - 1)),
        stepMs_((setup.AxisEndMs() - firstMs_) / last_) {}

  // An axis of no points has none but -1; on one of a single point the step is no number, and all is point 0.
  std::int32_t PointAt(double timeMs) const {
    const std::int32_t point = TruncateToInt32((timeMs - firstMs_) / stepMs_ + 0.5);
    return std::min(std::max(point, 0), last_);
  }

 private:
  float firstMs_;
  std::int32_t last_;
  double stepMs_;
};

}  // namespace

CMarker* CMarkerList::GetAt(std::int32_t index) const {
  return index >= 0 && index < GetCount() ? markers_[static_cast<std::size_t>(index)].get() : nullptr;
}

bool CMarkerList::Add(std::unique_ptr<CMarker> marker) {
  if (!marker) return false;
  try {
    markers_.push_back(std::move(marker));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool CMarkerList::Assign(const CMarkerList& source) {
  if (this == &source) return true;
  RemoveAll();
  try {
    for (const auto& marker : source.markers_) markers_.push_back(std::make_unique<CMarker>(*marker));
    return true;
  } catch (const std::bad_alloc&) {
    RemoveAll();
    return false;
  }
}

bool CMarkerList::Load(CTffFile& container, std::int32_t channelCount) {
  RemoveAll();
  try {
    if (LoadRecords(container)) {
      Redistribute(channelCount);
      return true;
    }
  } catch (const std::bad_alloc&) {
  }
  RemoveAll();
  return false;
}

bool CMarkerList::LoadRecords(CTffFile& container) {
  RecordBytes bytes;
  std::uint64_t length = bytes.size();
  container.ReadSection(tag::kMarker, length, bytes.data());
  while (length != 0) {
    std::optional<CMarker> marker = MarkerFrom(bytes, length);
    if (!marker) return false;
    markers_.push_back(std::make_unique<CMarker>(std::move(*marker)));
    length = bytes.size();
    container.ReadNextSection(tag::kMarker, length, bytes.data());
  }
  return true;
}

// Every name is looked at once, by its first marker. Since one answer holds for all names, their order does
// not matter, and sorting brings the markers of each together.
void CMarkerList::Redistribute(std::int32_t channelCount) {
  std::vector<CMarker*> byName;
  byName.reserve(markers_.size());
  for (const auto& marker : markers_) byName.push_back(marker.get());
  std::stable_sort(byName.begin(), byName.end(),
                   [](const CMarker* a, const CMarker* b) { return a->name < b->name; });
  bool hasAsked = false;
  for (auto first = byName.begin(); first != byName.end();) {
    const auto end = std::find_if(first, byName.end(),
                                  [first](const CMarker* marker) { return marker->name != (*first)->name; });
    CMarker& leader = **first;
    const std::vector<CMarker*> stacked = StackedOn(leader, std::span(first + 1, end));
    first = end;
    if (static_cast<std::int64_t>(stacked.size()) != std::int64_t{channelCount} - 1) continue;
    if (!hasAsked && !host_.modal.AskYesNo({.text = kQuestion})) return;
    hasAsked = true;
    Spread(leader, stacked);
  }
}

bool CMarkerList::Save(CTffFile& container) const {
  const auto version = static_cast<std::uint16_t>(host_.process.OsVersionWord());
  bool isWritten = true;
  for (const auto& marker : markers_) {
    if (marker->transient != 0) continue;
    const MarkerRecord record = RecordOf(*marker);
    isWritten &= container.WriteSection(tag::kMarker, sizeof record, &record, version);
  }
  return isWritten;
}

void CMarkerList::TimesToSamples(CSetup& setup) {
  std::optional<PointScale> scale;  // made when needed: asking a setup for its axis may set fields of it
  for (const auto& marker : markers_) {
    if (marker->sampleIndex != -1) continue;
    if (!scale) scale.emplace(setup);
    marker->sampleIndex = scale->PointAt(marker->timeMs);
  }
}

}  // namespace wavelock

#include "wavelock/recording/statistics.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "wavelock/numerics/conversions.h"

namespace wavelock {
namespace {

using Sums = CSignalStats::Sums;

// Shell's sort (D. L. Shell, A high-speed sorting procedure, 1959). It stands here, and not a faster one, for
// what it makes of values that are no numbers: those stay where its steps leave them.
void Sort(std::span<float> values) {
  const auto size = static_cast<std::ptrdiff_t>(values.size());
  float* const at = values.data();
  for (std::ptrdiff_t gap = size / 2; gap > 0; gap /= 2) {
    for (std::ptrdiff_t i = gap; i < size; ++i) {
      for (std::ptrdiff_t j = i - gap; j >= 0 && at[j] > at[j + gap]; j -= gap) std::swap(at[j], at[j + gap]);
    }
  }
}

// A sorted copy; empty when there is no memory for it.
OwnedVector<float> Sorted(std::span<const float> values) {
  OwnedVector<float> sorted;
  if (!sorted.Make(values.size())) return sorted;
  std::copy(values.begin(), values.end(), sorted.All().begin());
  Sort(sorted.All());
  return sorted;
}

// As many points go through the sums side by side as keep a processor busy: the sum of one point waits for
// each addition.
constexpr std::size_t kPointsAtOnce = 8;

// Subtracts from each of `kRows` rows its mean and gives the spread of what is left. Sums run upward by
// column, in double precision.
template <std::size_t kRows>
void Centre(float* rows, std::size_t columns, float* spreads) {
  const auto count = static_cast<double>(columns);
  double sums[kRows] = {};
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t r = 0; r < kRows; ++r) sums[r] += static_cast<double>(rows[r * columns + c]);
  }
  for (std::size_t r = 0; r < kRows; ++r) {
    const double mean = sums[r] / count;
    for (std::size_t c = 0; c < columns; ++c) {
      float& value = rows[r * columns + c];
      value = static_cast<float>(value - mean);
    }
  }
  Sums centred[kRows];
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t r = 0; r < kRows; ++r) centred[r].Add(static_cast<double>(rows[r * columns + c]));
  }
  for (std::size_t r = 0; r < kRows; ++r) {
    spreads[r] = columns > 1 ? static_cast<float>(std::sqrt(centred[r].Deviation(count) / count)) : 0;
  }
}

}  // namespace

void CSignalStats::Free() {
  ready = channelCount = pointCount = selectedCount = 0;
  selected.Free();
  pointSpread.Free();
  centred.Free();
  ratios.Free();
  for (Span& span : spans_) span = {};
  nextSpan_ = 0;
  isExpecting_ = false;
}

bool CSignalStats::Prepare(std::int32_t channels, std::int32_t points, const int* flags) {
  Free();
  if (flags == nullptr || channels < 0 || points < 0) return false;
  channelCount = channels;
  pointCount = points;
  if (!selected.Make(static_cast<std::size_t>(channels))) return false;
  std::copy_n(flags, channels, selected.All().begin());
  selectedCount =
      static_cast<std::int32_t>(std::count_if(flags, flags + channels, [](int flag) { return flag != 0; }));
  const auto columns = static_cast<std::size_t>(selectedCount);
  const auto rows = static_cast<std::size_t>(points);
  for (Span& span : spans_) {
    if (!span.sums.Make(columns) || !span.spreads.Make(columns)) return false;
  }
  return columns > 0 && pointSpread.Make(rows) && ratios.Make(columns) &&
         centred.MakeForOverwrite(rows, columns);
}

void CSignalStats::Expect(std::int32_t from, std::int32_t to) {
  NextSpan(from, to);
  isExpecting_ = true;
}

void CSignalStats::Load(std::span<const float> data) {
  if (!centred) return;
  for (Span& span : spans_) {
    span.isKnown = false;
    std::fill(span.sums.All().begin(), span.sums.All().end(), Sums{});
  }
  const std::size_t columns = centred.Columns();
  for (std::size_t point = 0; point < centred.Rows();) {
    const std::size_t count = centred.Rows() - point < kPointsAtOnce ? 1 : kPointsAtOnce;
    for (std::size_t i = 0; i < count; ++i) TakeSelected(data, point + i);
    float* const spreads = pointSpread.All().data() + point;
    if (count == kPointsAtOnce) {
      Centre<kPointsAtOnce>(RowOf(point), columns, spreads);
    } else {
      Centre<1>(RowOf(point), columns, spreads);
    }
    if (isExpecting_) {
      for (Span& span : spans_) AddRows(span, point, count);
    }
    point += count;
  }
  if (isExpecting_) {
    for (Span& span : spans_) Finish(span);
  }
  ready = 1;
}

// Where nothing but sums is wanted, the first rows are taken again and again and stay in the cache.
float* CSignalStats::RowOf(std::size_t point) {
  return centred[isExpecting_ ? point % kPointsAtOnce : point];
}

void CSignalStats::TakeSelected(std::span<const float> data, std::size_t point) {
  const auto channels = static_cast<std::size_t>(channelCount);
  const std::size_t first = std::min(data.size(), point * channels);
  const std::span<const float> values = data.subspan(first, std::min(channels, data.size() - first));
  const std::span<float> row(RowOf(point), centred.Columns());
  auto at = row.begin();
  if (row.size() == channels) {
    at = std::copy(values.begin(), values.end(), at);
  } else {
    for (std::size_t channel = 0; channel < values.size(); ++channel) {
      if (selected[channel] != 0) *at++ = values[channel];
    }
  }
  std::fill(at, row.end(), 0.0F);
}

CSignalStats::Span& CSignalStats::NextSpan(std::int32_t from, std::int32_t to) {
  Span& span = spans_[nextSpan_];
  nextSpan_ = (nextSpan_ + 1) % spans_.size();
  span.from = from;
  span.to = to;
  std::fill(span.sums.All().begin(), span.sums.All().end(), Sums{});
  return span;
}

// The rows of `count` points, as far as they lie in the span.
void CSignalStats::AddRows(Span& span, std::size_t point, std::size_t count) {
  const std::size_t first = std::max(point, static_cast<std::size_t>(std::max(span.from, 0)));
  const std::size_t end = std::min(point + count, static_cast<std::size_t>(std::max(span.to, 0)));
  const std::span<Sums> sums = span.sums.All();
  for (std::size_t p = first; p < end; ++p) {
    const float* const row = RowOf(p);
    for (std::size_t c = 0; c < sums.size(); ++c) sums[c].Add(row[c]);
  }
}

void CSignalStats::Finish(Span& span) const {
  span.isKnown = true;
  const std::int32_t first = std::max(span.from, 0);
  const std::int32_t end = std::clamp(span.to, 0, pointCount);
  const std::span<const Sums> sums = span.sums.All();
  const auto count = static_cast<double>(end - first);
  std::transform(sums.begin(), sums.end(), span.spreads.All().begin(), [count](const Sums& sum) {
    return count < 2 ? 0.0 : std::sqrt(sum.Deviation(count) / (count - 1));
  });
}

std::span<const double> CSignalStats::ColumnSpreads(std::int32_t from, std::int32_t to) {
  for (const Span& span : spans_) {
    if (span.isKnown && span.from == from && span.to == to) return span.spreads.All();
  }
  Span& span = NextSpan(from, to);
  if (!isExpecting_) AddRows(span, 0, centred.Rows());
  Finish(span);
  return span.spreads.All();
}

double CSignalStats::GetNoise(std::int32_t from, std::int32_t to, int mode) {
  constexpr std::int64_t kFewestPoints = 2;
  if (!HasData() || std::int64_t{to} - from < kFewestPoints) return -1;
  if (mode == 1) return static_cast<double>(GetLowSpread());
  double sum = 0;
  for (const double spread : ColumnSpreads(from, to)) sum += spread;
  return sum / selectedCount;
}

double CSignalStats::GetChannelRatio(std::int32_t selectedIndex, std::int32_t from, std::int32_t to,
                                     std::int32_t from2, std::int32_t to2, int mode) {
  const auto column = static_cast<std::size_t>(selectedIndex);
  if (!HasData() || column >= ratios.Size()) return -1;
  const double noise = mode == 1 ? static_cast<double>(GetLowSpread()) : ColumnSpreads(from, to)[column];
  const double signal = ColumnSpreads(from2, to2)[column];
  const double ratio = noise == 0 ? 0 : signal / noise;
  ratios[column] = static_cast<float>(ratio);
  return ratio;
}

float CSignalStats::GetLowSpread() const {
  constexpr double kFifth = -0.2F;
  const OwnedVector<float> sorted = Sorted(pointSpread.All());
  const auto count = static_cast<std::int32_t>(sorted.Size());
  if (count == 0) return 0;
  std::int32_t place = -1 - TruncateToInt32(count * kFifth);
  if (place == count) --place;
  place = std::max(place, 0);
  return sorted[static_cast<std::size_t>(count % 2 != 0 ? place : place + 1)];
}

float CSignalStats::GetBestRatio() const {
  const OwnedVector<float> sorted = Sorted(ratios.All());
  return sorted.Size() == 0 ? 0 : sorted[sorted.Size() - 1];
}

namespace {

// The best of the channels' ratios, as the setup has them.
float BestRatioOf(const CSetup& setup, const CSignalStats& stats) {
  const std::span<const SetupChannel> channels = setup.Channels();
  if (channels.empty() || channels[0].signalRatio == 0) return stats.GetBestRatio();
  float best = -1;
  for (const SetupChannel& channel : channels) {
    if (channel.signalRatio > best) best = channel.signalRatio;
  }
  return best;
}

}  // namespace

bool FillSignalFigures(std::span<const float> data, CSetup& setup) try {
  const std::span<SetupChannel> channels = setup.Channels();
  std::vector<int> flags(channels.size());
  std::transform(channels.begin(), channels.end(), flags.begin(),
                 [](const SetupChannel& channel) { return TakesPartInStatistics(channel) ? 1 : 0; });
  CSignalStats stats;
  if (!stats.Prepare(static_cast<std::int32_t>(flags.size()), setup.pointCount, flags.data())) return false;

  // From the first point of the axis to just before time zero lies the noise, behind it the signal.
  const std::int32_t first = setup.PointOfTime(setup.timeStart);
  const std::int32_t last = std::max(setup.PointOfTime(0) - 2, 0);
  stats.Expect(first, last);
  stats.Expect(last, setup.pointCount);
  stats.Load(data);
  const double noise = stats.GetNoise(first, last, setup.timeStart >= 0 ? 1 : 0);
  if (setup.mainField8164 == 0) setup.mainField8164 = static_cast<float>(noise);
  std::int32_t selectedIndex = 0;
  for (SetupChannel& channel : channels) {
    if (!TakesPartInStatistics(channel)) {
      channel.signalRatio = 0;
      continue;
    }
    const double ratio = stats.GetChannelRatio(selectedIndex++, first, last, last, setup.pointCount, 0);
    if (channel.signalRatio == 0) channel.signalRatio = static_cast<float>(ratio);
  }
  if (setup.mainField8168 == 0) setup.mainField8168 = BestRatioOf(setup, stats);
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace wavelock

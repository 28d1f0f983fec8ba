// How noisy an average is, and how far its channels stand out of the noise.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "wavelock/numerics/matrices.h"
#include "wavelock/setup/setup.h"

namespace wavelock {

// Works on the channels that take part, centred at each point on their mean there. A span of points runs up
// to, not including, its last one; points outside of the data count for nothing.
class CSignalStats {
 public:
  virtual ~CSignalStats() = default;

  // One flag for each channel, not 0 for those that take part. False without flags, for negative counts, when
  // no channel takes part, and when memory ran out: nothing can then be loaded or asked for.
  bool Prepare(std::int32_t channels, std::int32_t points, const int* flags);

  // Names, between Prepare and Load, one of at most two spans. The columns' deviations of these are worked
  // out on the way; those of any other span are then 0, and `centred`, which would be as large as the data,
  // is not filled.
  void Expect(std::int32_t from, std::int32_t to);

  // Sample-major data of all channels. What they fall short of the prepared size counts as 0.
  void Load(std::span<const float> data);

  // The mean of all channels' standard deviations in a span, or with `mode` 1 GetLowSpread(). -1 for a span
  // of fewer than two points, and without data.
  double GetNoise(std::int32_t from, std::int32_t to, int mode);

  // The standard deviation of one channel, counted among those that take part, in the second span over that
  // in the first or, with `mode` 1, over GetLowSpread(). 0 where the divisor is 0; -1 without data.
  double GetChannelRatio(std::int32_t selectedIndex, std::int32_t from, std::int32_t to, std::int32_t from2,
                         std::int32_t to2, int mode);

  // A low value among the spreads of all points, about a fifth of the way up.
  float GetLowSpread() const;

  // The greatest of the ratios that were asked for.
  float GetBestRatio() const;

  OwnedVector<float> pointSpread;  // across channels, for each point
  FloatMatrix centred;             // points x channels that take part
  OwnedVector<float> ratios;       // the last one of each channel that takes part
  int ready = 0;                   // 1 once data are loaded
  std::int32_t channelCount = 0;
  std::int32_t pointCount = 0;
  std::int32_t selectedCount = 0;
  OwnedVector<int> selected;

  // Sum and sum of squares, on the way to a spread.
  struct Sums {
    double values = 0;
    double squares = 0;

    void Add(double value) {
      values += value;
      squares += value * value;
    }

    // Of the squared distances from the mean. Rounding can bring it below 0 where there are none.
    double Deviation(double count) const {
      const double deviation = squares - values * values / count;
      return deviation < 0 ? 0 : deviation;
    }
  };

 private:
  struct Span {
    std::int32_t from = 0;
    std::int32_t to = 0;
    bool isKnown = false;
    OwnedVector<Sums> sums{};  // of all columns
    OwnedVector<double> spreads{};
  };

  bool HasData() const { return centred && ready == 1 && selectedCount >= 1; }
  void Free();
  float* RowOf(std::size_t point);
  void TakeSelected(std::span<const float> data, std::size_t point);
  Span& NextSpan(std::int32_t from, std::int32_t to);
  void AddRows(Span& span, std::size_t point, std::size_t count);
  void Finish(Span& span) const;
  std::span<const double> ColumnSpreads(std::int32_t from, std::int32_t to);

  // The spans that were asked for last: one call of GetChannelRatio needs two, and the next one the same two.
  std::array<Span, 2> spans_;
  std::size_t nextSpan_ = 0;
  bool isExpecting_ = false;
};

// Gives the setup of an average the figures that it lacks: noise level, ratio of each channel, best ratio.
// `data` are sample-major. False when they cannot be worked out.
bool FillSignalFigures(std::span<const float> data, CSetup& setup);

}  // namespace wavelock

#include "wavelock/recording/overlay_pass.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <vector>

#include "wavelock/numerics/conversions.h"
#include "wavelock/numerics/long_vectors.h"

namespace wavelock {
namespace {

// Counts of one unit at calibration 1. The number is a single, as where a header is written and unlike where
// one is read, and all else is worked out in doubles: each gives the bits that it always gave.
constexpr double kCountsPerUnit = 204.8F;

// Bytes that are corrected at a time, little enough to stay in the cache between rows and polynomials.
constexpr std::size_t kBytesAtOnce = 64 * 1024;

std::vector<double> CalibrationsOf(std::span<const ChannelRecord> channels) {
  std::vector<double> calibrations;
  calibrations.reserve(channels.size());
  for (const ChannelRecord& channel : channels) calibrations.push_back(double{channel.calibration});
  return calibrations;
}

constexpr double kFirstBeyondInt32 = 2147483648.0;

// ---- Rows

// Sums wrap.
template <class Sample, class Count>
inline void AddEach(Sample* __restrict samples, const Count* __restrict counts, std::size_t values) {
  for (std::size_t i = 0; i < values; ++i) {
    samples[i] = static_cast<Sample>(static_cast<Count>(static_cast<Count>(samples[i]) + counts[i]));
  }
}

WAVELOCK_LONG_VECTORS
void Add(std::int16_t* samples, const std::uint16_t* counts, std::size_t values) {
  AddEach(samples, counts, values);
}

WAVELOCK_LONG_VECTORS
void Add(std::int32_t* samples, const std::uint32_t* counts, std::size_t values) {
  AddEach(samples, counts, values);
}

// What a row adds to the samples of all channels, repeated until the loop over it is worth vectorising.
template <class Sample>
class RowTerms {
 public:
  explicit RowTerms(std::span<const ChannelRecord> channels)
      : calibrations_(CalibrationsOf(channels)),
        quotients_(channels.size()),
        counts_(channels.size() * std::max<std::size_t>(1, kWantedLength / channels.size())) {}

  void Take(const OverlayRow& row) {
    const std::size_t channels = calibrations_.size();
    for (std::size_t c = 0; c < channels; ++c) {
      quotients_[c] = row.channelValue[c] * kCountsPerUnit / calibrations_[c];
    }
    unsigned beyond = 0;
    for (std::size_t c = 0; c < channels; ++c) {
      beyond |= std::fabs(quotients_[c]) < kFirstBeyondInt32 ? 0u : 1u;  // so is NaN
    }
    if (beyond == 0) {
      for (std::size_t c = 0; c < channels; ++c) {
        counts_[c] = static_cast<Count>(static_cast<std::int32_t>(quotients_[c]));
      }
    } else {
      for (std::size_t c = 0; c < channels; ++c) {
        counts_[c] = static_cast<Count>(TruncateAndWrap(quotients_[c]));
      }
    }
    for (std::size_t filled = channels; filled < counts_.size();) {
      const std::size_t more = std::min(filled, counts_.size() - filled);
      std::copy_n(counts_.data(), more, counts_.data() + filled);
      filled += more;
    }
  }

  void AddTo(Sample* samples, std::size_t values) const {
    for (; values > 0;) {
      const std::size_t part = std::min(values, counts_.size());
      Add(samples, counts_.data(), part);
      samples += part;
      values -= part;
    }
  }

 private:
  using Count = std::make_unsigned_t<Sample>;
  static constexpr std::size_t kWantedLength = 256;

  std::vector<double> calibrations_;
  std::vector<double> quotients_;
  std::vector<Count> counts_;
};

// ---- Polynomials

// Channels whose sums are kept in registers while all powers are added up; fewer where there are few.
constexpr std::size_t kManyLanes = 8;
constexpr std::size_t kFewLanes = 2;

std::size_t LanesFor(std::size_t channels) {
  return channels < kManyLanes ? kFewLanes : kManyLanes;
}

std::size_t WholeLanes(std::size_t channels) {
  const std::size_t lanes = LanesFor(channels);
  return (channels + lanes - 1) / lanes * lanes;
}

// The polynomials of one segment, with the channels filled up to whole groups of lanes.
class PolynomialTerms {
 public:
  explicit PolynomialTerms(std::span<const ChannelRecord> channels)
      : channels_(channels.size()),
        stride_(WholeLanes(channels.size())),
        calibrations_(CalibrationsOf(channels)),
        counts_(stride_) {
    calibrations_.resize(stride_, 1.0);
  }

  void Take(const CPolyEvaluator& evaluator) {
    const std::span<const double> from = evaluator.Coefficients();
    const auto outputs = static_cast<std::size_t>(std::max(evaluator.OutputCount(), 1));
    powers_.assign(from.size() / outputs, 0.0);
    coefficients_.assign(powers_.size() * stride_, 0.0);
    for (std::size_t c = 0; c < powers_.size(); ++c) {
      std::copy_n(from.data() + c * outputs, std::min(outputs, channels_),
                  coefficients_.data() + c * stride_);
    }
    fitsInt32_ = FitsInt32();
  }

  bool AreZero() const { return powers_.empty(); }

  // Subtracts the polynomials from one sample of all channels, at `t` of their axis.
  template <class Sample>
  void SubtractFrom(Sample* sample, double t) {
    double power = 1.0;
    for (double& kept : powers_) {
      kept = power;
      power *= t;
    }
    if (fitsInt32_) {
      WorkOut([](double quotient) { return static_cast<std::int32_t>(quotient); });
    } else {
      WorkOut([](double quotient) { return static_cast<std::int32_t>(TruncateAndWrap(quotient)); });
    }
    AddCounts(sample, counts_.data(), channels_);
  }

 private:
  // True when no value of any channel, nor the single that it is rounded to, leaves the range of a plain
  // conversion anywhere on the axis, whose ends are at 100.
  bool FitsInt32() const {
    constexpr double kBeyondAxis = 101.0;
    constexpr double kMostCounts = 2147483000.0;
    constexpr double kMostSingle = std::numeric_limits<float>::max() / 2;
    for (std::size_t k = 0; k < stride_; ++k) {
      double most = 0;
      double power = 1.0;
      for (std::size_t c = 0; c < powers_.size(); ++c) {
        most += power * std::fabs(coefficients_[c * stride_ + k]);
        power *= kBeyondAxis;
      }
      const double counts = most * kCountsPerUnit / std::fabs(calibrations_[k]);
      if (!(most < kMostSingle && counts < kMostCounts)) return false;
    }
    return true;
  }

  // Sums run from the lowest power to the highest, which decides how they are rounded.
  template <class ToCount>
  void WorkOut(ToCount toCount) {
    if (LanesFor(channels_) == kFewLanes) {
      WorkOutBy<kFewLanes>(toCount);
    } else {
      WorkOutBy<kManyLanes>(toCount);
    }
  }

  template <std::size_t kLanes, class ToCount>
  void WorkOutBy(ToCount toCount) {
    const double* const coefficients = coefficients_.data();
    const double* const calibrations = calibrations_.data();
    std::int32_t* const counts = counts_.data();
    for (std::size_t first = 0; first < stride_; first += kLanes) {
      double sums[kLanes] = {};
      const double* row = coefficients + first;
      for (const double power : powers_) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) sums[lane] += power * row[lane];
        row += stride_;
      }
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const double value = static_cast<float>(sums[lane]);
        counts[first + lane] = toCount(value * -kCountsPerUnit / calibrations[first + lane]);
      }
    }
  }

  template <class Sample>
  static void AddCounts(Sample* __restrict sample, const std::int32_t* __restrict counts,
                        std::size_t channels) {
    using Count = std::make_unsigned_t<Sample>;
    for (std::size_t c = 0; c < channels; ++c) {
      sample[c] = static_cast<Sample>(
          static_cast<Count>(static_cast<Count>(sample[c]) + static_cast<Count>(counts[c])));
    }
  }

  std::size_t channels_;
  std::size_t stride_;
  std::vector<double> calibrations_;
  std::vector<double> coefficients_;  // by power, then by channel
  std::vector<double> powers_;
  std::vector<std::int32_t> counts_;
  bool fitsInt32_ = false;
};

// ---- The walk

template <class Sample>
class OverlayWalk : public OverlayPass {
 public:
  OverlayWalk(CCorrectionOverlay& overlay, std::span<const ChannelRecord> channels, std::uint64_t start,
              OverlaySwitches switches)
      : overlay_(overlay),
        channels_(channels.size()),
        position_(static_cast<std::uint32_t>(start)),
        hasRows_(switches.rows && overlay.HasRows()),
        hasPolynomials_(switches.polynomials && overlay.HasSegments()),
        rowTerms_(channels),
        polynomialTerms_(channels) {}

  bool Apply(std::span<std::byte> bytes) override {
    std::byte* at = bytes.data();
    const std::size_t sampleBytes = channels_ * sizeof(Sample);
    const std::size_t most = std::max<std::size_t>(1, kBytesAtOnce / sampleBytes);
    for (std::size_t left = bytes.size() / sampleBytes; left > 0;) {
      std::uint64_t run = std::min(left, most);
      try {
        if (hasPolynomials_ && !EnterSegment(run)) return false;
        if (hasRows_) EnterRow(run);
        CorrectAnywhere({at, static_cast<std::size_t>(run) * sampleBytes});
      } catch (const std::bad_alloc&) {
        return false;
      }
      at += run * sampleBytes;
      left -= static_cast<std::size_t>(run);
      position_ += static_cast<std::uint32_t>(run);
    }
    return true;
  }

 private:
  // Both cut `run` to the samples that share what is entered.
  bool EnterSegment(std::uint64_t& run) {
    const OverlaySegment* const segment = overlay_.EnterSegment(position_);
    if (segment == nullptr) return false;
    if (segment != segment_) polynomialTerms_.Take(overlay_.Evaluator());
    segment_ = segment;
    run = std::min<std::uint64_t>(run, segment->endSample - position_);
    return true;
  }

  // A sample before all rows goes on with the row of the sample before it.
  void EnterRow(std::uint64_t& run) {
    const std::uint32_t shifted = position_ - static_cast<std::uint32_t>(overlay_.GetSampleShift());
    const FirstFitMap::Run found = overlay_.FindRowRun(shifted);
    if (found.index != 0 && found.index != row_) {
      row_ = found.index;
      rowTerms_.Take(overlay_.Rows()[row_ - 1]);
    }
    run = std::min(run, found.end - shifted);
  }

  // A caller's block of wide samples may lie at an address that is no Sample's.
  void CorrectAnywhere(std::span<std::byte> bytes) {
    const std::size_t count = bytes.size() / sizeof(Sample) / channels_;
    if (reinterpret_cast<std::uintptr_t>(bytes.data()) % alignof(Sample) == 0)
      return Correct(reinterpret_cast<Sample*>(bytes.data()), count);
    aligned_.resize(count * channels_);
    std::memcpy(aligned_.data(), bytes.data(), bytes.size());
    Correct(aligned_.data(), count);
    std::memcpy(bytes.data(), aligned_.data(), bytes.size());
  }

  void Correct(Sample* samples, std::size_t count) {
    if (row_ != 0) rowTerms_.AddTo(samples, count * channels_);
    if (!hasPolynomials_ || polynomialTerms_.AreZero()) return;
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t position = position_ + static_cast<std::uint32_t>(i);
      polynomialTerms_.SubtractFrom(samples + i * channels_, overlay_.Evaluator().Normalised(position));
    }
  }

  CCorrectionOverlay& overlay_;
  const std::size_t channels_;
  std::uint32_t position_;  // of the next sample; wraps, as all positions in an overlay do
  const bool hasRows_;
  const bool hasPolynomials_;
  std::uint32_t row_ = 0;                    // that holds, counted from 1; 0 for none
  const OverlaySegment* segment_ = nullptr;  // whose terms are at hand
  RowTerms<Sample> rowTerms_;
  PolynomialTerms polynomialTerms_;
  std::vector<Sample> aligned_;
};

}  // namespace

std::unique_ptr<OverlayPass> StartOverlayPass(CCorrectionOverlay& overlay,
                                              std::span<const ChannelRecord> channels, int sampleWidth,
                                              std::uint64_t start, OverlaySwitches switches) {
  if (channels.empty() || !overlay.PrepareLookups()) return nullptr;
  try {
    if (sampleWidth == 2)
      return std::make_unique<OverlayWalk<std::int16_t>>(overlay, channels, start, switches);
    return std::make_unique<OverlayWalk<std::int32_t>>(overlay, channels, start, switches);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace wavelock

#include "wavelock/recording/sample_conversion.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <span>

#include "wavelock/numerics/long_vectors.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// One factor of each channel, repeated until the row is long enough for the loop over it to be worth
// vectorising.
template <class Factor>
class FactorRow {
 public:
  // What `factorOf` gives for a channel is rounded to a Factor.
  template <class FactorOf>
  FactorRow(std::span<const SetupChannel> channels, FactorOf&& factorOf)
      : length_(channels.size() * std::max<std::size_t>(1, kWantedLength / channels.size())),
        factors_(new Factor[length_]) {
    std::transform(channels.begin(), channels.end(), factors_.get(),
                   [&](const SetupChannel& channel) { return static_cast<Factor>(factorOf(channel)); });
    for (std::size_t i = channels.size(); i < length_; ++i) factors_[i] = factors_[i - channels.size()];
  }

  const Factor* data() const { return factors_.get(); }
  std::size_t length() const { return length_; }

 private:
  static constexpr std::size_t kWantedLength = 512;
  std::size_t length_;
  std::unique_ptr<Factor[]> factors_;
};

// Exact: each of the two has 24 bits.
double ExactFactor(const SetupChannel& channel) {
  return static_cast<double>(channel.countScale) * channel.channelScale;
}

bool HasSingleFactor(const SetupChannel& channel) {
  return static_cast<float>(ExactFactor(channel)) == ExactFactor(channel);
}

// The product of 16 bits and a single's 24 is exact in a double, so one rounding to single is what is asked
// for, and the single-precision product has just that.
WAVELOCK_LONG_VECTORS
void Multiply(const std::int16_t* __restrict raw, const float* __restrict factors, float* __restrict out,
              std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<float>(raw[i]) * factors[i];
}

WAVELOCK_LONG_VECTORS
void Multiply(const std::int32_t* __restrict raw, const float* __restrict factors, float* __restrict out,
              std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = static_cast<float>(static_cast<double>(raw[i]) * static_cast<double>(factors[i]));
  }
}

WAVELOCK_LONG_VECTORS
void Multiply(const std::int16_t* __restrict raw, const double* __restrict factors, float* __restrict out,
              std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<float>(raw[i] * factors[i]);
}

template <class Raw>
void RawToFloat(const Raw* raw, float* out, std::uint32_t sampleCount, const CSetup& setup) {
  const ChannelArray& table = setup.channelsSnapshot ? setup.channelsSnapshot : setup.channels;
  const std::span<const SetupChannel> channels = table.First(setup.channelCount);
  if (channels.empty()) return;
  const FactorRow<float> factors(channels, ExactFactor);
  const std::size_t values = channels.size() * sampleCount;
  for (std::size_t i = 0; i < values; i += factors.length()) {
    Multiply(raw + i, factors.data(), out + i, std::min(factors.length(), values - i));
  }
}

// An epoch's factors for values of 16 bits. Those times the 24 bits of `countScale` are exact in a double, so
// the two factors may be multiplied first.
template <class Factor>
class EpochFactors16 {
 public:
  explicit EpochFactors16(std::span<const SetupChannel> channels) : factors_(channels, ExactFactor) {}

  std::size_t length() const { return factors_.length(); }

  void MultiplyRun(const std::int16_t* raw, float* out, std::size_t count) const {
    Multiply(raw, factors_.data(), out, count);
  }

 private:
  FactorRow<Factor> factors_;
};

class EpochFactors32 {
 public:
  explicit EpochFactors32(std::span<const SetupChannel> channels)
      : countScales_(channels, [](const SetupChannel& channel) { return channel.countScale; }),
        channelScales_(channels, [](const SetupChannel& channel) { return channel.channelScale; }) {}

  std::size_t length() const { return countScales_.length(); }

  void MultiplyRun(const std::int32_t* __restrict raw, float* __restrict out, std::size_t count) const {
    const double* const countScales = countScales_.data();
    const double* const channelScales = channelScales_.data();
    for (std::size_t i = 0; i < count; ++i) {
      out[i] = static_cast<float>(raw[i] * countScales[i] * channelScales[i]);
    }
  }

 private:
  FactorRow<double> countScales_;
  FactorRow<double> channelScales_;
};

// `channels` has at most the channels of `shape`.
template <class Factors, class Raw>
void EpochToFloat(const Raw* raw, float* out, const EpochShape& shape,
                  std::span<const SetupChannel> channels) {
  if (channels.empty()) return;
  const Factors factors(channels);
  const std::size_t values = shape.points * shape.channels;
  // Only where every value of a point is converted, a run of them can reach over points.
  const bool allConverted = channels.size() == shape.channels;
  const std::size_t step = allConverted ? factors.length() : shape.channels;
  const std::size_t run = allConverted ? factors.length() : channels.size();
  for (std::size_t i = 0; i < values; i += step)
    factors.MultiplyRun(raw + i, out + i, std::min(run, values - i));
}

std::span<const SetupChannel> ChannelsOf(const CSetup& setup, const EpochShape& shape) {
  const std::span<const SetupChannel> channels = setup.Channels();
  return channels.first(std::min(channels.size(), shape.channels));
}

// The precision in which a count is guessed: its 24 or 53 bits tell nearly every count from its neighbours.
template <class Raw>
struct Guess;
template <>
struct Guess<std::int16_t> {
  using Work = float;
  using Bits = std::uint32_t;
  static constexpr Work kToWhole = 0x1.8p23F;  // a sum with it ends in the bits of the nearest whole number
  static constexpr Work kError = 0x1p-22F;  // of a product with a rounded reciprocal, in parts of the product
};
template <>
struct Guess<std::int32_t> {
  using Work = double;
  using Bits = std::uint64_t;
  static constexpr Work kToWhole = 0x1.8p52;
  static constexpr Work kError = 0x1p-50;
};

// Multiplies by the reciprocals. False when a product is so near the border between two counts, or so large,
// that the divisions may give another one: then nothing of what was written counts.
template <class Raw, class Work>
inline bool MultiplyToCounts(const float* __restrict in, const Work* __restrict reciprocals,
                             Raw* __restrict raw, std::size_t count) {
  constexpr Work kMost = std::numeric_limits<Raw>::max() - 1;
  std::int32_t doubtful = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Work product = static_cast<Work>(in[i]) * reciprocals[i];
    const Work sum = product + Guess<Raw>::kToWhole;
    const Work toBorder =
        std::fabs(product - (sum - Guess<Raw>::kToWhole)) + std::fabs(product) * Guess<Raw>::kError;
    doubtful |= (toBorder < Work{0.5} ? 0 : 1) | (std::fabs(product) < kMost ? 0 : 1);
    typename Guess<Raw>::Bits bits;
    std::memcpy(&bits, &sum, sizeof bits);
    raw[i] = static_cast<Raw>(bits);
  }
  return doubtful == 0;
}

WAVELOCK_LONG_VECTORS
bool GuessCounts(const float* in, const float* reciprocals, std::int16_t* raw, std::size_t count) {
  return MultiplyToCounts(in, reciprocals, raw, count);
}

WAVELOCK_LONG_VECTORS
bool GuessCounts(const float* in, const double* reciprocals, std::int32_t* raw, std::size_t count) {
  return MultiplyToCounts(in, reciprocals, raw, count);
}

// Microvolts to counts: two divisions, half away from zero, held within +- the largest Raw. What is no
// number, which a factor of zero makes as well, becomes 0.
template <class Raw>
class ToCounts {
 public:
  explicit ToCounts(std::span<const SetupChannel> channels)
      : countScales_(channels, [](const SetupChannel& channel) { return channel.countScale; }),
        channelScales_(channels, [](const SetupChannel& channel) { return channel.channelScale; }),
        reciprocals_(channels, ReciprocalOf) {}

  std::size_t length() const { return countScales_.length(); }

  // A run that begins with the first channel. True when some value was beyond the range.
  bool Convert(const float* in, Raw* raw, std::size_t count) const {
    bool anyBeyond = false;
    for (std::size_t first = 0; first < count; first += kPiece) {
      const std::size_t piece = std::min(kPiece, count - first);
      if (!GuessCounts(in + first, reciprocals_.data() + first, raw + first, piece)) {
        anyBeyond |= DividePiece(in + first, first, raw + first, piece);
      }
    }
    return anyBeyond;
  }

 private:
  using Work = typename Guess<Raw>::Work;
  static constexpr double kLimit = std::numeric_limits<Raw>::max();
  static constexpr std::size_t kPiece = 32;  // few enough that one doubtful value costs little

  // No number where it has lost digits: its products are always in doubt.
  static Work ReciprocalOf(const SetupChannel& channel) {
    const auto reciprocal = static_cast<Work>(1.0 / ExactFactor(channel));
    return std::isnormal(reciprocal) ? reciprocal : std::numeric_limits<Work>::quiet_NaN();
  }

  bool DividePiece(const float* __restrict in, std::size_t first, Raw* __restrict raw,
                   std::size_t count) const {
    const double* const countScales = countScales_.data() + first;
    const double* const channelScales = channelScales_.data() + first;
    std::size_t inside = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const double value = static_cast<double>(in[i]) / countScales[i] / channelScales[i];
      const double rounded = value + std::copysign(0.5, value);
      raw[i] = static_cast<Raw>(Held(rounded));
      inside += std::fabs(rounded) < kLimit + 1 ? 1 : 0;
    }
    return inside != count;
  }

  static double Held(double value) {
    const double below = value > kLimit ? kLimit : value;
    const double inside = below < -kLimit ? -kLimit : below;
    return inside == inside ? inside : 0.0;
  }

  FactorRow<double> countScales_;
  FactorRow<double> channelScales_;
  FactorRow<Work> reciprocals_;
};

template <class Raw>
bool FloatToRaw(std::span<const float> in, Raw* raw, const CSetup& setup) {
  const std::span<const SetupChannel> channels = setup.Channels();
  if (channels.empty()) return false;
  const ToCounts<Raw> toCounts(channels);
  bool anyBeyond = false;
  for (std::size_t i = 0; i < in.size(); i += toCounts.length()) {
    anyBeyond |= toCounts.Convert(in.data() + i, raw + i, std::min(toCounts.length(), in.size() - i));
  }
  return anyBeyond;
}

// The same for a caller who is told of no failure.
template <class Raw>
bool FloatToRawOrZero(std::span<const float> in, Raw* raw, const CSetup& setup) try {
  return FloatToRaw(in, raw, setup);
} catch (const std::bad_alloc&) {
  std::fill_n(raw, in.size(), Raw{0});
  return true;
}

}  // namespace

void RawToFloat16(const std::int16_t* raw, float* out, std::uint32_t sampleCount, const CSetup& setup) {
  RawToFloat(raw, out, sampleCount, setup);
}

void RawToFloat32(const std::int32_t* raw, float* out, std::uint32_t sampleCount, const CSetup& setup) {
  RawToFloat(raw, out, sampleCount, setup);
}

void EpochToFloat16(const std::int16_t* raw, float* out, const EpochShape& shape, const CSetup& setup) {
  const std::span<const SetupChannel> channels = ChannelsOf(setup, shape);
  // With a scale of 1, which most recordings have, singles hold the products and give the same values faster.
  if (std::all_of(channels.begin(), channels.end(), HasSingleFactor)) {
    EpochToFloat<EpochFactors16<float>>(raw, out, shape, channels);
  } else {
    EpochToFloat<EpochFactors16<double>>(raw, out, shape, channels);
  }
}

void EpochToFloat32(const std::int32_t* raw, float* out, const EpochShape& shape, const CSetup& setup) {
  EpochToFloat<EpochFactors32>(raw, out, shape, ChannelsOf(setup, shape));
}

bool FloatsToRaw(std::span<const float> in, std::span<std::byte> raw, int width, const CSetup& setup) {
  if (width == 2) return FloatToRaw(in, reinterpret_cast<std::int16_t*>(raw.data()), setup);
  return FloatToRaw(in, reinterpret_cast<std::int32_t*>(raw.data()), setup);
}

void CRecordingFile::FloatToRaw16(std::int16_t* raw, const float* in, std::uint32_t sampleCount,
                                  const CSetup& from) {
  if (FloatToRawOrZero({in, sampleCount * from.Channels().size()}, raw, from)) pendingConversionNotice = 1;
}

void CRecordingFile::FloatToRaw32(std::int32_t* raw, const float* in, std::uint32_t sampleCount,
                                  const CSetup& from) {
  if (FloatToRawOrZero({in, sampleCount * from.Channels().size()}, raw, from)) pendingConversionNotice = 1;
}

}  // namespace wavelock

#include "wavelock/recording/sample_conversion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <span>

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
void Multiply(const std::int16_t* __restrict raw, const float* __restrict factors, float* __restrict out,
              std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<float>(raw[i]) * factors[i];
}

void Multiply(const std::int32_t* __restrict raw, const float* __restrict factors, float* __restrict out,
              std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = static_cast<float>(static_cast<double>(raw[i]) * static_cast<double>(factors[i]));
  }
}

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

// Microvolts to counts: two divisions, half away from zero, held within +- the largest Raw. What is no
// number, which a factor of zero makes as well, becomes 0.
template <class Raw>
class ToCounts {
 public:
  explicit ToCounts(std::span<const SetupChannel> channels)
      : countScales_(channels, [](const SetupChannel& channel) { return channel.countScale; }),
        channelScales_(channels, [](const SetupChannel& channel) { return channel.channelScale; }),
        reciprocals_(channels, [](const SetupChannel& channel) { return 1.0 / ExactFactor(channel); }) {}

  std::size_t length() const { return countScales_.length(); }

  // A run that begins with the first channel. True when some value was beyond the range.
  bool Convert(const float* in, Raw* raw, std::size_t count) const {
    return !ConvertFast(in, raw, count) && ConvertExactly(in, raw, count);
  }

 private:
  static constexpr double kLimit = std::numeric_limits<Raw>::max();
  static constexpr std::size_t kPiece = 512;

  static double Held(double value) {
    const double below = value > kLimit ? kLimit : value;
    const double inside = below < -kLimit ? -kLimit : below;
    return inside == inside ? inside : 0.0;
  }

  // A product with the reciprocal is off by some 1e-15 of itself, which changes a count only next to the
  // border between two. False when a value is that close, or beyond the range: then nothing of this counts.
  // Three loops, since compilers vectorise them one by one and not as a whole.
  bool ConvertFast(const float* in, Raw* raw, std::size_t count) const {
    double held[kPiece];
    std::int32_t whole[kPiece];
    std::int32_t unsure = 0;
    for (std::size_t first = 0; first < count && unsure == 0; first += kPiece) {
      const std::size_t piece = std::min(kPiece, count - first);
      HoldProducts(in + first, reciprocals_.data() + first, held, piece);
      for (std::size_t i = 0; i < piece; ++i) whole[i] = static_cast<std::int32_t>(held[i]);
      for (std::size_t i = 0; i < piece; ++i) unsure |= IsNearBorder(held[i], whole[i]);
      for (std::size_t i = 0; i < piece; ++i) raw[first + i] = static_cast<Raw>(whole[i]);
    }
    return unsure == 0;
  }

  static void HoldProducts(const float* __restrict in, const double* __restrict reciprocals,
                           double* __restrict held, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const double value = static_cast<double>(in[i]) * reciprocals[i];
      held[i] = Held(value + std::copysign(0.5, value));
    }
  }

  // 1 or 0, without a branch: how far the value is from the middle between two whole numbers, in units of
  // what is allowed.
  static std::int32_t IsNearBorder(double held, std::int32_t whole) {
    constexpr double kAllowed = 0.5 - kLimit * 1e-14;
    const double fromMiddle = std::fabs(std::fabs(held - static_cast<double>(whole)) - 0.5);
    return static_cast<std::int32_t>(fromMiddle * (1.0 / kAllowed));
  }

  bool ConvertExactly(const float* __restrict in, Raw* __restrict raw, std::size_t count) const {
    std::size_t inside = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const double value = static_cast<double>(in[i]) / countScales_.data()[i] / channelScales_.data()[i];
      const double rounded = value + std::copysign(0.5, value);
      raw[i] = static_cast<Raw>(Held(rounded));
      inside += std::fabs(rounded) < kLimit + 1 ? 1 : 0;
    }
    return inside != count;
  }

  FactorRow<double> countScales_;
  FactorRow<double> channelScales_;
  FactorRow<double> reciprocals_;
};

// True when some value was limited.
template <class Raw>
bool FloatToRaw(Raw* raw, const float* in, std::uint32_t sampleCount, const CSetup& setup) {
  const std::span<const SetupChannel> channels = setup.Channels();
  if (channels.empty()) return false;
  const ToCounts<Raw> toCounts(channels);
  const std::size_t values = channels.size() * sampleCount;
  bool anyBeyond = false;
  for (std::size_t i = 0; i < values; i += toCounts.length()) {
    anyBeyond |= toCounts.Convert(in + i, raw + i, std::min(toCounts.length(), values - i));
  }
  return anyBeyond;
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

void CRecordingFile::FloatToRaw16(std::int16_t* raw, const float* in, std::uint32_t sampleCount,
                                  const CSetup& from) {
  if (FloatToRaw(raw, in, sampleCount, from)) pendingConversionNotice = 1;
}

void CRecordingFile::FloatToRaw32(std::int32_t* raw, const float* in, std::uint32_t sampleCount,
                                  const CSetup& from) {
  if (FloatToRaw(raw, in, sampleCount, from)) pendingConversionNotice = 1;
}

}  // namespace wavelock

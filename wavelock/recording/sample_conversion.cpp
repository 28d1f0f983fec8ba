#include "wavelock/recording/sample_conversion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <span>

#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// The factors of all channels, repeated until the row is long enough for the loop over it to be worth
// vectorising.
class FactorRow {
 public:
  explicit FactorRow(std::span<const SetupChannel> channels)
      : length_(channels.size() * std::max<std::size_t>(1, kWantedLength / channels.size())),
        factors_(new float[length_]) {
    std::transform(channels.begin(), channels.end(), factors_.get(), [](const SetupChannel& channel) {
      return static_cast<float>(static_cast<double>(channel.countScale) * channel.channelScale);
    });
    for (std::size_t i = channels.size(); i < length_; ++i) factors_[i] = factors_[i - channels.size()];
  }

  const float* data() const { return factors_.get(); }
  std::size_t length() const { return length_; }

 private:
  static constexpr std::size_t kWantedLength = 512;
  std::size_t length_;
  std::unique_ptr<float[]> factors_;
};

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

template <class Raw>
void RawToFloat(const Raw* raw, float* out, std::uint32_t sampleCount, const CSetup& setup) {
  const ChannelArray& table = setup.channelsSnapshot ? setup.channelsSnapshot : setup.channels;
  const std::span<const SetupChannel> channels = table.First(setup.channelCount);
  if (channels.empty()) return;
  const FactorRow factors(channels);
  const std::size_t values = channels.size() * sampleCount;
  for (std::size_t i = 0; i < values; i += factors.length()) {
    Multiply(raw + i, factors.data(), out + i, std::min(factors.length(), values - i));
  }
}

struct Limited {
  double value;
  bool wasBeyond;
};

// Half away from zero, then held within +-`limit`. NaN, which a factor of zero makes as well, counts as
// beyond.
Limited RoundAndLimit(double value, double limit) {
  if (value != value) return {0.0, true};
  const double rounded = std::trunc(value < 0 ? value - 0.5 : value + 0.5);
  if (rounded > limit) return {limit, true};
  if (rounded < -limit) return {-limit, true};
  return {rounded, false};
}

// True when some value was limited.
template <class Raw>
bool FloatToRaw(Raw* raw, const float* in, std::uint32_t sampleCount, const CSetup& setup) {
  constexpr double kLimit = std::numeric_limits<Raw>::max();
  bool anyBeyond = false;
  for (std::uint32_t sample = 0; sample < sampleCount; ++sample) {
    for (const SetupChannel& channel : setup.Channels()) {
      const Limited count =
          RoundAndLimit(static_cast<double>(*in++) / channel.countScale / channel.channelScale, kLimit);
      anyBeyond |= count.wasBeyond;
      *raw++ = static_cast<Raw>(count.value);
    }
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

void CRecordingFile::FloatToRaw16(std::int16_t* raw, const float* in, std::uint32_t sampleCount,
                                  const CSetup& from) {
  if (FloatToRaw(raw, in, sampleCount, from)) pendingConversionNotice = 1;
}

void CRecordingFile::FloatToRaw32(std::int32_t* raw, const float* in, std::uint32_t sampleCount,
                                  const CSetup& from) {
  if (FloatToRaw(raw, in, sampleCount, from)) pendingConversionNotice = 1;
}

}  // namespace wavelock

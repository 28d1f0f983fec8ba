// A made-up session that looks like an EEG: a person with closed eyes hears a row of tones, some of them
// rare, which are answered with a key. Alpha waves come and go at the back of the head, blinks show at the
// front, and every tone evokes a response.
//
// The same seed gives the same numbers on every machine: they come from a generator of its own, and nothing
// but sums, products, quotients and square roots is done with them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wavelock::command {

// A place on the head seen from above: to the right and to the front, each from -1 to 1.
struct Electrode {
  const char* label;
  double right;
  double front;
};

inline constexpr std::size_t kDemoElectrodeCount = 32;
extern const std::array<Electrode, kDemoElectrodeCount> kDemoElectrodes;

inline constexpr int kDemoRate = 256;

enum class ToneKind : std::uint16_t { kFrequent = 1, kRare = 2 };

struct Tone {
  std::uint32_t sample;
  ToneKind kind;
  std::uint32_t answer;  // samples after the tone; 0 for none
  bool isDisturbed;      // by a blink
};

struct DemoPlan {
  std::uint64_t seed = 1;
  std::uint32_t seconds = 60;                  // at least 5, in which there are at least 2 tones
  std::size_t channels = kDemoElectrodeCount;  // the first ones of the electrodes, at least 2
};

struct DemoSession {
  std::size_t channels;
  std::uint32_t samples;
  std::vector<Tone> tones{};
  std::vector<float> microvolts{};  // samples x channels
};

DemoSession RecordSession(const DemoPlan& plan);

// ---- what is worked out from a session

inline constexpr int kPointsBeforeTone = kDemoRate / 4;
inline constexpr int kEpochPoints = kDemoRate;
inline constexpr int kEpochBins = kEpochPoints / 2;

// The samples around a tone: points x channels, a part of `microvolts`.
std::span<const float> EpochOf(std::span<const float> microvolts, std::size_t channels, const Tone& tone);

struct DemoAverage {
  std::vector<float> mean{};      // points x channels
  std::vector<float> variance{};  // of the mean's sweeps, likewise
  // As the sweeps came in, sweeps x channels: the power of the average so far, and of the noise left in it.
  std::vector<float> power{};
  std::vector<float> noise{};
};

DemoAverage AverageOf(std::span<const std::span<const float>> epochs, std::size_t channels);

// Amplitudes up to half of the rate: channels x bins.
struct DemoSpectrum {
  std::vector<float> real{};
  std::vector<float> imaginary{};
};

DemoSpectrum SpectrumOf(std::span<const float> epoch, std::size_t channels);

// How two channels go together at each frequency over all epochs: 1 for waves that always keep step.
struct Coherency {
  std::array<float, kEpochBins> real;
  std::array<float, kEpochBins> imaginary;
};

Coherency CoherencyOf(std::span<const DemoSpectrum> spectra, std::size_t first, std::size_t second);

}  // namespace wavelock::command

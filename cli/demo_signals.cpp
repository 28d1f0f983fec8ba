#include "cli/demo_signals.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace wavelock::command {
namespace {

// ---- chance

// A generator of 64 bits with a state of 64 bits.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : state_(seed) {}

  // From 0 up to 1, in the 53 bits that a double holds.
  double Uniform() { return static_cast<double>(Next() >> 11) * 0x1p-53; }
  double Between(double low, double high) { return low + (high - low) * Uniform(); }

  // Close to a normal distribution of deviation 1.
  double Normal() {
    double sum = 0;
    for (int i = 0; i < 12; ++i) sum += Uniform();
    return sum - 6;
  }

 private:
  std::uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15;
    std::uint64_t bits = state_;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EB;
    return bits ^ (bits >> 31);
  }

  std::uint64_t state_;
};

// Noise whose power falls with the frequency: a sum of values, each renewed half as often as the one before.
class PinkNoise {
 public:
  double Next(Chance& chance) {
    ++step_;
    for (std::size_t i = 0; i < kOctaves; ++i) {
      if (step_ % (1u << i) == 0) sum_ += Renew(values_[i], chance.Normal());
    }
    return sum_ / 3.5;  // the square root of about kOctaves: a deviation of 1
  }

 private:
  static constexpr std::size_t kOctaves = 12;

  static double Renew(double& value, double renewed) {
    const double change = renewed - value;
    value = renewed;
    return change;
  }

  std::array<double, kOctaves> values_{};
  std::uint32_t step_ = 0;
  double sum_ = 0;
};

// ---- shapes

constexpr double kPi = 3.14159265358979323846;

// Of an angle in turns, not below 0. The library's cosine differs from machine to machine in the last bit.
double Cosine(double turns) {
  const double phase = turns - std::floor(turns + 0.5);
  const double angle = 2 * kPi * phase;
  double term = 1;
  double sum = 1;
  for (int k = 2; k <= 30; k += 2) {
    term *= -angle * angle / (k * (k - 1));
    sum += term;
  }
  return sum;
}

double Sine(double turns) {
  return Cosine(turns + 0.75);
}

// A hump of height 1 at `centre` that is 0 from `halfWidth` on.
double Hump(double at, double centre, double halfWidth) {
  const double x = (at - centre) / halfWidth;
  return x > -1 && x < 1 ? (1 - x * x) * (1 - x * x) : 0;
}

// ---- what happens in a session, in seconds

struct Moment {
  double time;
  double strength;  // microvolts where it is seen best
};

struct Course {
  std::vector<Tone> tones{};
  std::vector<Moment> blinks{};
  std::vector<Moment> alphaBursts{};
};

// From `first` up to `end`, each between `least` and `most` behind the one before.
std::vector<double> Times(Chance& chance, double first, double end, double least, double most) {
  std::vector<double> times;
  double time = first;
  while (time < end) {
    times.push_back(time);
    time += chance.Between(least, most);
  }
  return times;
}

std::vector<Moment> Moments(Chance& chance, const std::vector<double>& times, double least, double most) {
  std::vector<Moment> moments;
  moments.reserve(times.size());
  for (const double time : times) moments.push_back({time, chance.Between(least, most)});
  return moments;
}

std::uint32_t SampleAt(double time) {
  return static_cast<std::uint32_t>(time * kDemoRate);
}

double TimeOf(std::uint32_t sample) {
  return static_cast<double>(sample) / kDemoRate;
}

Tone ToneAt(double time, Chance& chance, const std::vector<Moment>& blinks) {
  const bool isRare = chance.Uniform() < 0.3;
  const bool isDisturbed = std::any_of(blinks.begin(), blinks.end(), [time](const Moment& blink) {
    return blink.time > time - 0.3 && blink.time < time + 0.9;
  });
  const std::uint32_t answer = isRare ? SampleAt(chance.Between(0.32, 0.55)) : 0;
  return {SampleAt(time), isRare ? ToneKind::kRare : ToneKind::kFrequent, answer, isDisturbed};
}

Course MakeCourse(Chance& chance, double seconds) {
  Course course;
  course.blinks = Moments(chance, Times(chance, 2.2, seconds - 1, 3, 7), 90, 160);
  course.alphaBursts = Moments(chance, Times(chance, 0.8, seconds, 1.5, 3), 12, 30);
  for (const double time : Times(chance, 1.5, seconds - 1, 0.9, 1.3)) {
    course.tones.push_back(ToneAt(time, chance, course.blinks));
  }
  return course;
}

// ---- sources, each as strong as it is where it is seen best

double Sum(const std::vector<Moment>& moments, double time, double halfWidth) {
  double sum = 0;
  for (const Moment& moment : moments) sum += moment.strength * Hump(time, moment.time, halfWidth);
  return sum;
}

struct Sources {
  double blinks;
  double alpha;
  double early;  // what every tone evokes
  double late;   // the wave that follows the rare ones
};

Sources SourcesAt(const Course& course, double time) {
  Sources sources{Sum(course.blinks, time, 0.16), Sum(course.alphaBursts, time, 0.9) * Sine(10.2 * time), 0,
                  0};
  for (const Tone& tone : course.tones) {
    const double since = time - TimeOf(tone.sample);
    sources.early += 7 * Hump(since, 0.18, 0.05) - 6 * Hump(since, 0.1, 0.04);
    if (tone.kind == ToneKind::kRare) sources.late += 16 * Hump(since, 0.35, 0.17);
  }
  return sources;
}

// How much of each source an electrode sees.
struct Weights {
  double front;
  double back;
  double top;
  double parietal;
};

Weights WeightsOf(const Electrode& e) {
  const double beyond = std::max(e.front - 0.2, 0.0);
  return {2 * beyond * beyond, e.front < 0.3 ? (0.3 - e.front) / 1.2 : 0.05,
          Hump(e.right, 0, 1.3) * Hump(e.front, 0.1, 1.4), Hump(e.right, 0, 1.3) * Hump(e.front, -0.4, 1.2)};
}

}  // namespace

// The first 19 are the classical ones.
const std::array<Electrode, kDemoElectrodeCount> kDemoElectrodes = {{
    {"Fp1", -0.3, 0.9},  {"Fp2", 0.3, 0.9},   {"F7", -0.8, 0.6},   {"F3", -0.4, 0.5},   {"Fz", 0.0, 0.5},
    {"F4", 0.4, 0.5},    {"F8", 0.8, 0.6},    {"T7", -1.0, 0.0},   {"C3", -0.5, 0.0},   {"Cz", 0.0, 0.0},
    {"C4", 0.5, 0.0},    {"T8", 1.0, 0.0},    {"P7", -0.8, -0.6},  {"P3", -0.4, -0.5},  {"Pz", 0.0, -0.5},
    {"P4", 0.4, -0.5},   {"P8", 0.8, -0.6},   {"O1", -0.3, -0.9},  {"O2", 0.3, -0.9},   {"AFz", 0.0, 0.7},
    {"FC5", -0.7, 0.3},  {"FC1", -0.2, 0.25}, {"FCz", 0.0, 0.25},  {"FC2", 0.2, 0.25},  {"FC6", 0.7, 0.3},
    {"CP5", -0.7, -0.3}, {"CP1", -0.2, -0.2}, {"CPz", 0.0, -0.25}, {"CP2", 0.2, -0.25}, {"CP6", 0.7, -0.3},
    {"POz", 0.0, -0.7},  {"Oz", 0.0, -0.95},
}};

DemoSession RecordSession(const DemoPlan& plan) {
  Chance chance(plan.seed);
  const Course course = MakeCourse(chance, plan.seconds);
  DemoSession session{plan.channels, plan.seconds * kDemoRate, course.tones, {}};
  session.microvolts.reserve(session.samples * session.channels);
  PinkNoise shared;
  std::vector<PinkNoise> own(session.channels);
  for (std::uint32_t sample = 0; sample < session.samples; ++sample) {
    const Sources sources = SourcesAt(course, TimeOf(sample));
    const double background = 6 * shared.Next(chance);
    for (std::size_t c = 0; c < session.channels; ++c) {
      const Weights weights = WeightsOf(kDemoElectrodes[c]);
      session.microvolts.push_back(static_cast<float>(
          background + 7 * own[c].Next(chance) + weights.front * sources.blinks +
          weights.back * sources.alpha + weights.top * sources.early + weights.parietal * sources.late));
    }
  }
  return session;
}

std::span<const float> EpochOf(std::span<const float> microvolts, std::size_t channels, const Tone& tone) {
  return microvolts.subspan((tone.sample - kPointsBeforeTone) * channels, kEpochPoints * channels);
}

// ---- averages

namespace {

// Sums over the sweeps of an average as they come in.
struct RunningSums {
  explicit RunningSums(std::size_t channels) : values(kEpochPoints * channels), squares(values) {}

  void Add(std::span<const float> epoch) {
    for (std::size_t i = 0; i < epoch.size(); ++i) {
      values[i] += epoch[i];
      squares[i] += static_cast<double>(epoch[i]) * epoch[i];
    }
  }

  std::vector<double> values;
  std::vector<double> squares;
};

double VarianceOf(double sum, double squares, double count) {
  return count > 1 ? std::max((squares - sum * sum / count) / (count - 1), 0.0) : 0;
}

// Over the points of the average, and what its sweeps differ by at time zero.
void NoteProgress(const RunningSums& sums, std::size_t channels, double sweeps, DemoAverage& average) {
  for (std::size_t c = 0; c < channels; ++c) {
    double sum = 0;
    double squares = 0;
    for (std::size_t p = 0; p < kEpochPoints; ++p) {
      const double mean = sums.values[p * channels + c] / sweeps;
      sum += mean;
      squares += mean * mean;
    }
    const std::size_t zero = kPointsBeforeTone * channels + c;
    average.power.push_back(static_cast<float>(VarianceOf(sum, squares, kEpochPoints)));
    average.noise.push_back(
        static_cast<float>(VarianceOf(sums.values[zero], sums.squares[zero], sweeps) / sweeps));
  }
}

}  // namespace

DemoAverage AverageOf(std::span<const std::span<const float>> epochs, std::size_t channels) {
  DemoAverage average;
  RunningSums sums(channels);
  double sweeps = 0;
  for (const std::span<const float> epoch : epochs) {
    sums.Add(epoch);
    NoteProgress(sums, channels, ++sweeps, average);
  }
  for (std::size_t i = 0; i < sums.values.size(); ++i) {
    average.mean.push_back(static_cast<float>(sums.values[i] / sweeps));
    average.variance.push_back(static_cast<float>(VarianceOf(sums.values[i], sums.squares[i], sweeps)));
  }
  return average;
}

// ---- spectra

DemoSpectrum SpectrumOf(std::span<const float> epoch, std::size_t channels) {
  static const auto kCosines = [] {
    std::array<double, kEpochPoints> cosines{};
    for (std::size_t i = 0; i < cosines.size(); ++i)
      cosines[i] = Cosine(static_cast<double>(i) / kEpochPoints);
    return cosines;
  }();
  constexpr std::size_t kThreeQuarters = kEpochPoints - kEpochPoints / 4;
  DemoSpectrum spectrum;
  for (std::size_t c = 0; c < channels; ++c) {
    for (std::size_t bin = 0; bin < kEpochBins; ++bin) {
      double real = 0;
      double imaginary = 0;
      for (std::size_t p = 0; p < kEpochPoints; ++p) {
        const std::size_t angle = bin * p % kEpochPoints;
        real += kCosines[angle] * epoch[p * channels + c];
        imaginary -= kCosines[(angle + kThreeQuarters) % kEpochPoints] * epoch[p * channels + c];
      }
      const double scale = bin == 0 ? 1.0 / kEpochPoints : 2.0 / kEpochPoints;
      spectrum.real.push_back(static_cast<float>(real * scale));
      spectrum.imaginary.push_back(static_cast<float>(imaginary * scale));
    }
  }
  return spectrum;
}

Coherency CoherencyOf(std::span<const DemoSpectrum> spectra, std::size_t first, std::size_t second) {
  Coherency coherency;
  for (std::size_t bin = 0; bin < kEpochBins; ++bin) {
    const std::size_t a = first * kEpochBins + bin;
    const std::size_t b = second * kEpochBins + bin;
    double real = 0;
    double imaginary = 0;
    double powerOfFirst = 0;
    double powerOfSecond = 0;
    for (const DemoSpectrum& s : spectra) {
      const double ar = s.real[a], ai = s.imaginary[a], br = s.real[b], bi = s.imaginary[b];
      real += ar * br + ai * bi;
      imaginary += ai * br - ar * bi;
      powerOfFirst += ar * ar + ai * ai;
      powerOfSecond += br * br + bi * bi;
    }
    const double scale = std::sqrt(powerOfFirst * powerOfSecond);
    coherency.real[bin] = scale > 0 ? static_cast<float>(real / scale) : 0;
    coherency.imaginary[bin] = scale > 0 ? static_cast<float>(imaginary / scale) : 0;
  }
  return coherency;
}

}  // namespace wavelock::command

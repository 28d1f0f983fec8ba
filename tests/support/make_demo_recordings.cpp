// Writes a handful of recordings with signals that look like an EEG, one for each of the main forms of the
// format:
//
//   wavelock_demo_recordings DIR
//
// A person sits with closed and open eyes, blinks, and hears a row of tones, some of them rare, which are
// answered with a key. The files are the same on every machine: numbers come from a generator with a fixed
// seed, and nothing but sums, products and quotients is done with them.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/recording_builder.h"

namespace wavelock {
namespace {

using Event = RecordingBuilder::Event;
using Epoch = RecordingBuilder::Epoch;

constexpr double kSeconds = 30;
constexpr std::uint16_t kFrequentTone = 1;
constexpr std::uint16_t kRareTone = 2;
constexpr std::uint8_t kAnswerKey = 1;

// 5.5 V over 65536 steps at a gain of 500, in microvolts; the file holds it times 204.8.
constexpr float kCalibration = 34.375f;
constexpr double kMicrovoltsPerStep = 34.375 / 204.8;

// A place on the head seen from above: to the right and to the front, each from -1 to 1.
struct Electrode {
  const char* label;
  double right;
  double front;
};

// The first 19 are the classical ones.
constexpr std::array<Electrode, 32> kElectrodes = {{
    {"Fp1", -0.3, 0.9},  {"Fp2", 0.3, 0.9},   {"F7", -0.8, 0.6},   {"F3", -0.4, 0.5},   {"Fz", 0.0, 0.5},
    {"F4", 0.4, 0.5},    {"F8", 0.8, 0.6},    {"T7", -1.0, 0.0},   {"C3", -0.5, 0.0},   {"Cz", 0.0, 0.0},
    {"C4", 0.5, 0.0},    {"T8", 1.0, 0.0},    {"P7", -0.8, -0.6},  {"P3", -0.4, -0.5},  {"Pz", 0.0, -0.5},
    {"P4", 0.4, -0.5},   {"P8", 0.8, -0.6},   {"O1", -0.3, -0.9},  {"O2", 0.3, -0.9},   {"AFz", 0.0, 0.7},
    {"FC5", -0.7, 0.3},  {"FC1", -0.2, 0.25}, {"FCz", 0.0, 0.25},  {"FC2", 0.2, 0.25},  {"FC6", 0.7, 0.3},
    {"CP5", -0.7, -0.3}, {"CP1", -0.2, -0.2}, {"CPz", 0.0, -0.25}, {"CP2", 0.2, -0.25}, {"CP6", 0.7, -0.3},
    {"POz", 0.0, -0.7},  {"Oz", 0.0, -0.95},
}};

class Chance {
 public:
  explicit Chance(std::uint64_t seed) : generator_(seed) {}

  // From 0 up to 1, in the 53 bits that a double holds.
  double Uniform() { return static_cast<double>(generator_() >> 11) * 0x1p-53; }
  double Between(double low, double high) { return low + (high - low) * Uniform(); }

  // Close to a normal distribution of deviation 1.
  double Normal() {
    double sum = 0;
    for (int i = 0; i < 12; ++i) sum += Uniform();
    return sum - 6;
  }

 private:
  std::mt19937_64 generator_;
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

  std::array<double, kOctaves> values_ = {};
  std::uint32_t step_ = 0;
  double sum_ = 0;
};

// A hump of height 1 at `centre` that is 0 from `halfWidth` on.
double Hump(double at, double centre, double halfWidth) {
  const double x = (at - centre) / halfWidth;
  return x > -1 && x < 1 ? (1 - x * x) * (1 - x * x) : 0;
}

// A wave of period 1, near enough to a sine.
double Wave(double turns) {
  const double phase = turns - static_cast<double>(static_cast<std::int64_t>(turns));
  const double half = phase < 0.5 ? phase : phase - 0.5;
  return (phase < 0.5 ? 16 : -16) * half * (0.5 - half);
}

struct Moment {
  double time;      // seconds
  double strength;  // microvolts where it is seen best
};

struct Tone {
  double time;
  std::uint16_t kind;
  double answer;  // seconds after the tone; 0 for none
};

struct Session {
  std::vector<Tone> tones;
  std::vector<Moment> blinks;
  std::vector<Moment> alphaBursts;
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

Tone ToneAt(double time, Chance& chance) {
  if (chance.Uniform() > 0.25) return {time, kFrequentTone, 0};
  return {time, kRareTone, chance.Between(0.32, 0.55)};
}

Session PlanSession(Chance& chance) {
  Session session;
  for (const double time : Times(chance, 1.5, kSeconds - 1, 0.9, 1.3)) {
    session.tones.push_back(ToneAt(time, chance));
  }
  for (const double time : Times(chance, 2.2, kSeconds - 1, 2.5, 6)) {
    session.blinks.push_back({time, chance.Between(90, 160)});
  }
  for (const double time : Times(chance, 0.8, kSeconds, 1.5, 3)) {
    session.alphaBursts.push_back({time, chance.Between(12, 30)});
  }
  return session;
}

double Blinks(const Session& session, double time) {
  double sum = 0;
  for (const Moment& blink : session.blinks) sum += blink.strength * Hump(time, blink.time, 0.16);
  return sum;
}

double Alpha(const Session& session, double time) {
  double strength = 0;
  for (const Moment& burst : session.alphaBursts) strength += burst.strength * Hump(time, burst.time, 0.9);
  return strength * Wave(10.2 * time);
}

// What every tone evokes, and the late wave of the rare ones.
double EarlyResponse(const Session& session, double time) {
  double sum = 0;
  for (const Tone& tone : session.tones) {
    sum += 7 * Hump(time - tone.time, 0.18, 0.05) - 6 * Hump(time - tone.time, 0.1, 0.04);
  }
  return sum;
}

double LateResponse(const Session& session, double time) {
  double sum = 0;
  for (const Tone& tone : session.tones) {
    if (tone.kind == kRareTone) sum += 16 * Hump(time - tone.time, 0.35, 0.17);
  }
  return sum;
}

// How much of each source an electrode sees.
double FrontWeight(const Electrode& e) {
  return e.front > 0.2 ? (e.front - 0.2) * (e.front - 0.2) * 2 : 0;
}
double BackWeight(const Electrode& e) {
  return e.front < 0.3 ? (0.3 - e.front) / 1.2 : 0.05;
}
double TopWeight(const Electrode& e) {
  return Hump(e.right, 0, 1.3) * Hump(e.front, 0.1, 1.4);
}
double ParietalWeight(const Electrode& e) {
  return Hump(e.right, 0, 1.3) * Hump(e.front, -0.4, 1.2);
}

// A session as it was recorded, not yet in the form of any file.
struct Recording {
  std::size_t channels;
  int rate;
  Session session;
  std::vector<std::int32_t> samples;  // samples x channels, as they are stored
};

std::vector<std::int32_t> Sample(const Session& session, std::size_t channels, int rate, Chance& chance) {
  PinkNoise shared;
  std::vector<PinkNoise> own(channels);
  std::vector<std::int32_t> samples;
  for (int i = 0; i < static_cast<int>(kSeconds) * rate; ++i) {
    const double time = static_cast<double>(i) / rate;
    const double background = 6 * shared.Next(chance);
    const double blinks = Blinks(session, time);
    const double alpha = Alpha(session, time);
    const double early = EarlyResponse(session, time);
    const double late = LateResponse(session, time);
    for (std::size_t c = 0; c < channels; ++c) {
      const Electrode& e = kElectrodes[c];
      const double microvolts = background + 7 * own[c].Next(chance) + FrontWeight(e) * blinks +
                                BackWeight(e) * alpha + TopWeight(e) * early + ParietalWeight(e) * late;
      samples.push_back(static_cast<std::int32_t>(microvolts / kMicrovoltsPerStep));
    }
  }
  return samples;
}

Recording Record(std::uint64_t seed, std::size_t channels, int rate) {
  Chance chance(seed);
  const Session session = PlanSession(chance);
  return {channels, rate, session, Sample(session, channels, rate, chance)};
}

std::uint32_t SampleAt(double time, int rate) {
  return static_cast<std::uint32_t>(time * rate);
}

std::vector<Event> EventsOf(const Recording& recording) {
  std::vector<Event> events;
  for (const Tone& tone : recording.session.tones) {
    const double answerTime = tone.time + tone.answer;
    events.push_back({.stimType = tone.kind, .sample = SampleAt(tone.time, recording.rate)});
    if (tone.answer == 0) continue;
    events.push_back({.keypad = kAnswerKey, .sample = SampleAt(answerTime, recording.rate)});
  }
  return events;
}

bool HasBlink(const Session& session, double from, double to) {
  return std::any_of(session.blinks.begin(), session.blinks.end(),
                     [&](const Moment& blink) { return blink.time > from && blink.time < to; });
}

// From 0.2 s before each tone to 0.8 s behind it. One with a blink in it is not accepted.
Epoch CutEpoch(const Recording& recording, const Tone& tone) {
  const auto channels = static_cast<std::ptrdiff_t>(recording.channels);
  const auto first = recording.samples.begin() + SampleAt(tone.time - 0.2, recording.rate) * channels;
  Epoch epoch;
  epoch.accept = HasBlink(recording.session, tone.time - 0.3, tone.time + 0.9) ? 0 : 1;
  epoch.trialType = tone.kind;
  epoch.correct = 1;
  epoch.reactionTime = static_cast<float>(tone.answer);
  epoch.response = tone.answer != 0 ? kAnswerKey : 0;
  epoch.samples.assign(first, first + recording.rate * channels);
  return epoch;
}

RecordingBuilder Labelled(const Recording& recording) {
  std::vector<std::string> labels;
  for (std::size_t c = 0; c < recording.channels; ++c) labels.emplace_back(kElectrodes[c].label);
  RecordingBuilder builder;
  builder.Labels(labels).Rate(recording.rate).Calibration(kCalibration).Date("06/23/2005").Time("10:30:00");
  return builder;
}

RecordingBuilder Continuous(const Recording& recording) {
  return Labelled(recording).Continuous().Samples(recording.samples).Events(EventsOf(recording));
}

RecordingBuilder Epoched(const Recording& recording) {
  std::vector<Epoch> epochs;
  for (const Tone& tone : recording.session.tones) epochs.push_back(CutEpoch(recording, tone));
  return Labelled(recording).Epoched().Times(-0.2f, 0.8f).Epochs(epochs);
}

bool WriteAll(const std::filesystem::path& folder) {
  return Continuous(Record(1, 32, 500)).WriteTo(folder / "continuous.rec") &&
         Continuous(Record(2, 32, 500))
             .Layout(3)
             .BlockSamples(100)
             .WriteTo(folder / "continuous_blocks.rec") &&
         Continuous(Record(3, 19, 250)).Revision(6).WriteTo(folder / "continuous_revision_6.rec") &&
         Continuous(Record(4, 19, 200)).OldestLayout(0).WriteTo(folder / "continuous_oldest.rec") &&
         Epoched(Record(5, 32, 250)).WriteTo(folder / "epochs.rec");
}

}  // namespace
}  // namespace wavelock

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: wavelock_demo_recordings DIR\n");
    return 2;
  }
  std::error_code failed;
  std::filesystem::create_directories(argv[1], failed);
  if (wavelock::WriteAll(argv[1])) return 0;
  std::fprintf(stderr, "wavelock_demo_recordings: cannot write to %s\n", argv[1]);
  return 1;
}

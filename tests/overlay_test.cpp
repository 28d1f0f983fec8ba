// Corrections are restored from damaged records too, and laid over every read as one sample after the other
// would be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "tests/support/opened_recording.h"
#include "tests/support/stored_annotations.h"
#include "wavelock/numerics/poly_evaluator.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::byte>;

// With an overlay to read it into.
struct Container : ContainerInMemory {
  using ContainerInMemory::ContainerInMemory;
  CCorrectionOverlay overlay{test.host};
};

std::vector<StoredRecord> Joined(std::vector<StoredRecord> a, const std::vector<StoredRecord>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST(Overlay, WithoutParametersThereAreNoCorrectionsButOldParametersStay) {
  const std::vector<StoredRecord> rest =
      Joined({{tag::kOverlayRow, 0, RowBytes(0, {1})}}, SegmentSections({{0, 10, 1, {}}}));
  Container good(Joined({{tag::kOverlayParameters, 0, ParametersBytes(7)}}, rest));
  ASSERT_TRUE(good.overlay.Load(good.tff));
  EXPECT_TRUE(good.overlay.HasRows() && good.overlay.HasSegments());
  Container bad(rest);
  EXPECT_FALSE(good.overlay.Load(bad.tff));
  EXPECT_FALSE(good.overlay.HasRows() || good.overlay.HasSegments());
  EXPECT_EQ(good.overlay.GetSampleShift(), 7);
}

TEST(Overlay, ShortRecordsTakeWhatIsThere) {
  Bytes params = ParametersBytes(7);
  params.resize(24);
  Bytes shortRow = RowBytes(9, {5});
  shortRow.resize(8);
  Container container({{tag::kOverlayParameters, 0, params},
                       {tag::kOverlayRow, 0, RowBytes(0, {1, 2})},
                       {tag::kOverlayRow, 0, shortRow},
                       {tag::kOverlaySegment, 0, ByteWriter().U32(1).U32(2).U32(3)},
                       {tag::kOverlaySegment, 0, ByteWriter().U32(3)}});
  CCorrectionOverlay& overlay = container.overlay;
  ASSERT_TRUE(overlay.Load(container.tff));
  EXPECT_EQ(overlay.GetSampleShift(), 7);
  EXPECT_EQ(overlay.params.polyOrder, 3);
  EXPECT_EQ(overlay.params.storedValue12, 600.0f);
  EXPECT_EQ(overlay.Rows()[1].startSample, 9u);
  EXPECT_EQ(overlay.GetRowValue(1, 0), 5);
  EXPECT_EQ(overlay.GetRowValue(1, 1), 2) << "of the row before";
  EXPECT_EQ(overlay.GetRowValue(-1, 0), 0);
  EXPECT_EQ(overlay.Segments()[1]->firstSample, 3u);
  EXPECT_EQ(overlay.Segments()[1]->endSample, 0u);
}

TEST(Overlay, CoefficientOfNoSegmentEndsTheLoad) {
  const std::vector<StoredRecord> stray = {{tag::kOverlayCoefficient, 0, ByteWriter().F64(8).U32(2).U32(0)},
                                           {tag::kOverlayCoefficient, 0, ByteWriter().F64(9).U32(1).U32(0)}};
  Container container(Joined({{tag::kOverlayParameters, 0, ParametersBytes()}},
                             Joined(SegmentSections({{0, 5, 1, {7}}, {5, 9, 1, {}}}), stray)));
  EXPECT_FALSE(container.overlay.Load(container.tff));
  EXPECT_THAT(container.overlay.Segments()[0]->coefficients.Elements(), ElementsAre(7));
  EXPECT_THAT(container.overlay.Segments()[1]->coefficients.Elements(), IsEmpty());
}

OverlayRow RowAt(std::uint32_t start) {
  OverlayRow row;
  row.startSample = start;
  return row;
}

std::unique_ptr<OverlaySegment> MakeSegment(std::uint32_t first, std::uint32_t end,
                                            const std::vector<double>& coefficients) {
  auto segment = std::make_unique<OverlaySegment>();
  segment->firstSample = first;
  segment->endSample = end;
  for (const double value : coefficients) segment->coefficients.Append(value);
  return segment;
}

TEST(Overlay, MoreValuesThanThereIsMemoryForAreNone) {
  TestHost test;
  CCorrectionOverlay overlay(test.host);
  overlay.params.polyOrder = 0;
  overlay.params.polyChannels = std::numeric_limits<std::int32_t>::max();
  overlay.AddSegment(MakeSegment(40, 50, {}));
  EXPECT_EQ(overlay.EvaluateAt(40), nullptr);
  ASSERT_EQ(test.user.messages.size(), 1u);
  EXPECT_EQ(test.user.messages.front().text, "Cannot allocate memory");
}

TEST(Overlay, AnEmptySpanLeavesThePolynomialAsItWas) {
  CPolyEvaluator evaluator;
  EXPECT_EQ(evaluator.Evaluate(0), nullptr);
  ASSERT_TRUE(evaluator.Setup(1, 1, 0, 10));
  evaluator.SetCoefficients(std::vector<double>{4, 1});
  for (const double end : {10.0, 9.0, std::nan("")}) EXPECT_FALSE(evaluator.Setup(3, 5, 10, end));
  EXPECT_EQ(evaluator.OutputCount(), 1);
  EXPECT_EQ(*evaluator.Evaluate(10), 104) << "the ends are at 100";
}

// ---- laying over samples

// As the rule tells it.
std::uint32_t FindRowOneByOne(std::span<const OverlayRow> rows, std::uint32_t x) {
  const auto count = static_cast<std::uint32_t>(rows.size());
  for (std::uint32_t k = 0; k + 1 < count; ++k) {
    if (k == 0 && x < rows[0].startSample) return 0;
    if (rows[k].startSample <= x && x < rows[k + 1].startSample) return k + 1;
  }
  return count == 0 || x < rows[count - 1].startSample ? 0 : count;
}

class Chance {
 public:
  explicit Chance(unsigned seed) : random(seed) {}
  int UpTo(int most) { return static_cast<int>(random() % (static_cast<unsigned>(most) + 1)); }
  bool OneIn(int count) { return UpTo(count - 1) == 0; }
  float Value() { return OneIn(30) ? 1e20f : static_cast<float>(UpTo(20000) - 10000) / 7; }
  float Calibration() {
    constexpr float kOdd[] = {0.0f, -3.0f, 1e-30f, 1e30f, std::numeric_limits<float>::quiet_NaN()};
    const auto pick = random() % 24;
    return pick < std::size(kOdd) ? kOdd[pick] : 0.5f + static_cast<float>(random() % 1000) / 3;
  }
  std::mt19937 random;
};

// A recording with random samples and calibrations, and what corrections make of them: sample by sample and
// value by value, with nothing remembered but what the rules remember.
template <class Word>
class CorrectedSamples : public OpenedRecording {
 public:
  CorrectedSamples(Chance& chance, int channels, std::uint32_t samples)
      : OpenedRecording(Builder(chance, channels, samples)), overlay(recording.overlay) {
    for (int c = 0; c < channels; ++c)
      Channel(static_cast<std::size_t>(c)).calibration = chance.Calibration();
    recording.sampleWidth = sizeof(Word);
    stored_ = Raw<Word>(0, samples);
  }

  // None where a polynomial is missing.
  std::vector<Word> Expected(std::uint32_t start, std::uint32_t end, bool skipPolynomials, bool skipRows) {
    const std::uint32_t channels = Header().channelCount;
    std::vector<Word> samples;
    std::uint32_t row = 0;
    for (std::uint32_t x = start; x < end; ++x) {
      const bool isCurved = overlay.HasSegments() && !skipPolynomials;
      if (isCurved && !Evaluate(x)) return {};
      if (overlay.HasRows() && !skipRows) {
        const auto shift = static_cast<std::uint32_t>(overlay.GetSampleShift());
        if (const auto found = FindRowOneByOne(overlay.Rows(), x - shift); found != 0) row = found;
      }
      for (std::uint32_t c = 0; c < channels; ++c) {
        Word& sample = samples.emplace_back(stored_[x * channels + c]);
        const float calibration = Channel(c).calibration;
        if (row != 0) Add(sample, double{overlay.Rows()[row - 1].channelValue[c]} * 204.8f / calibration);
        if (isCurved && c < values_.size()) Add(sample, double{values_[c]} * -204.8f / calibration);
      }
    }
    return samples;
  }

  // Reads a block, to an address that suits no wide sample.
  void Check(std::uint32_t start, std::uint32_t end, bool skipPolynomials, bool skipRows) {
    const std::vector<Word> expected = Expected(start, end, skipPolynomials, skipRows);
    const std::size_t bytes = (end - start) * Header().channelCount * sizeof(Word);
    std::vector<std::int16_t> memory(1 + bytes / sizeof(std::int16_t));
    ASSERT_EQ(recording.ReadContinuousRaw(start, end, &memory[1], static_cast<std::int32_t>(bytes),
                                          skipPolynomials ? 1 : 0, skipRows ? 1 : 0),
              !expected.empty());
    if (expected.empty()) return;
    ASSERT_EQ(std::memcmp(&memory[1], expected.data(), bytes), 0) << start << " to " << end;
  }

  CCorrectionOverlay& overlay;

 private:
  static RecordingBuilder Builder(Chance& chance, int channels, std::uint32_t samples) {
    std::vector<std::int32_t> values(samples * static_cast<std::size_t>(channels));
    for (std::int32_t& value : values) value = static_cast<std::int32_t>(chance.random());
    return RecordingBuilder().Channels(channels).Width(sizeof(Word)).Samples(values);
  }

  static void Add(Word& sample, double amount) {
    if (!std::isfinite(amount)) return;
    const double whole = std::fmod(std::trunc(amount), 4294967296.0);
    const auto sum = static_cast<std::int64_t>(sample) + static_cast<std::int64_t>(whole);
    sample = static_cast<Word>(static_cast<std::uint64_t>(sum));
  }

  bool Evaluate(std::uint32_t x) {
    const auto holds = [x](const auto& s) { return s->firstSample <= x && x < s->endSample; };
    if (current_ == nullptr || !holds(current_)) {
      const auto segments = overlay.Segments();
      const auto found = std::find_if(segments.begin(), segments.end(), holds);
      if (found == segments.end()) return false;
      current_ = found->get();
    }
    const std::int64_t outputs = overlay.params.polyChannels;
    const std::int64_t powers = std::int64_t{overlay.params.polyOrder} + 1;
    const auto coefficients = current_->coefficients.Elements();
    values_.assign(static_cast<std::size_t>(std::max<std::int64_t>(outputs, 0)), 0.0f);
    if (static_cast<std::int64_t>(coefficients.size()) != outputs * powers) return true;
    const double first = current_->firstSample;
    const double end = current_->endSample;
    const double t = (x - (first + end) * 0.5) * (200.0 / (end - first));
    for (std::size_t k = 0; k < values_.size(); ++k) {
      double sum = 0;
      double power = 1;
      for (std::size_t c = 0; c < static_cast<std::size_t>(powers); ++c) {
        sum += power * coefficients[c * values_.size() + k];
        power *= t;
      }
      values_[k] = static_cast<float>(sum);
    }
    return true;
  }

  std::vector<Word> stored_;
  const OverlaySegment* current_ = nullptr;
  std::vector<float> values_;
};

void AddRows(CCorrectionOverlay& overlay, Chance& chance, int channels, int samples) {
  int start = chance.UpTo(samples / 4);
  for (int count = chance.UpTo(12); count > 0; --count) {
    OverlayRow row = RowAt(static_cast<std::uint32_t>(start));
    for (int c = 0; c < channels; ++c) row.channelValue[static_cast<std::size_t>(c)] = chance.Value();
    overlay.AddRow(row);
    start = chance.OneIn(6) ? chance.UpTo(samples) : start + chance.UpTo(samples / 8);
  }
  if (chance.OneIn(3)) overlay.params.sampleShift = chance.UpTo(samples) - samples / 2;
}

void AddSegments(CCorrectionOverlay& overlay, Chance& chance, int channels, int samples) {
  const int order = chance.OneIn(10) ? 200 : chance.UpTo(4);
  overlay.params.polyOrder = order;
  overlay.params.polyChannels = chance.OneIn(8) ? channels + chance.UpTo(2) - 1 : channels;
  const int count = overlay.params.polyChannels * (order + 1) + (chance.OneIn(8) ? 1 : 0);
  for (int first = 0; first < samples;) {
    const int end = first + 1 + chance.UpTo(samples / 2);
    std::vector<double> coefficients(static_cast<std::size_t>(count));
    for (double& value : coefficients)
      value = chance.OneIn(3) ? 0 : chance.Value() * std::pow(0.05, chance.UpTo(6));
    const int overlap = chance.OneIn(4) ? chance.UpTo(first) : 0;
    overlay.AddSegment(MakeSegment(static_cast<std::uint32_t>(first - overlap),
                                   static_cast<std::uint32_t>(end), coefficients));
    first = chance.OneIn(12) ? end + 1 : end;
  }
}

template <class Word>
void CheckRandomOverlays(unsigned seed) {
  Chance chance(seed);
  for (int round = 0; round < 120; ++round) {
    SCOPED_TRACE(round);
    const int channels = 1 + chance.UpTo(chance.OneIn(3) ? 40 : 9);
    const int samples = 20 + chance.UpTo(300);
    CorrectedSamples<Word> opened(chance, channels, static_cast<std::uint32_t>(samples));
    if (!chance.OneIn(4)) AddRows(opened.overlay, chance, channels, samples);
    if (!chance.OneIn(4)) AddSegments(opened.overlay, chance, channels, samples);
    for (int block = 0; block < 6; ++block) {
      const int start = chance.UpTo(samples - 1);
      const int end = start + 1 + chance.UpTo(samples - 1 - start);
      opened.Check(static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(end), chance.OneIn(5),
                   chance.OneIn(5));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

TEST(Overlay, CorrectsAllSamplesAsOneAfterTheOther) {
  CheckRandomOverlays<std::int16_t>(1);
  CheckRandomOverlays<std::int32_t>(2);
}

// A row that holds through positions that wrap, over many pieces: only one walk gets it right.
TEST(Overlay, MicrovoltsComeFromOneWalkOverAllPieces) {
  Chance chance(3);
  constexpr std::uint32_t kSamples = 300'000;
  CorrectedSamples<std::int16_t> opened(chance, 1, kSamples);
  opened.overlay.params.sampleShift = 250'000;
  for (const std::uint32_t start : {20'000u, 40'000u}) {
    OverlayRow row = RowAt(start);
    row.channelValue[0] = static_cast<float>(start);
    opened.overlay.AddRow(row);
  }
  const std::vector<std::int16_t> raw = opened.Expected(0, kSamples, false, false);
  const std::vector<float> microvolts = opened.Microvolts(0, kSamples);
  ASSERT_EQ(microvolts.size(), raw.size());
  const SetupChannel& channel = opened.Setup().channels[0];
  const auto factor = static_cast<float>(double{channel.countScale} * channel.channelScale);
  for (std::size_t i = 0; i < raw.size(); ++i) ASSERT_EQ(microvolts[i], static_cast<float>(raw[i]) * factor);
}

TEST(Overlay, GapBetweenSegmentsFailsTheBlockThatTouchesIt) {
  OpenedRecording opened(RecordingBuilder().Samples(std::vector<std::int32_t>(100)));
  CCorrectionOverlay& overlay = opened.recording.overlay;
  overlay.params.polyOrder = 0;
  overlay.params.polyChannels = 1;
  overlay.AddSegment(MakeSegment(0, 30, {-1}));
  overlay.AddSegment(MakeSegment(40, 100, {-2}));
  EXPECT_THAT(opened.Microvolts(40, 41), ElementsAre(2));
  EXPECT_THAT(opened.Microvolts(39, 41), IsEmpty());
  overlay.Segments()[1]->firstSample = 50;
  EXPECT_THAT(opened.Microvolts(40, 41), IsEmpty()) << "segments may be changed";
  overlay.AddRow(RowAt(3));
  EXPECT_EQ(overlay.FindRowRun(5).index, 1u) << "and rows added";
  opened.recording.applyPolynomials = 0;
  EXPECT_THAT(opened.Raw<std::int16_t>(29, 31), ElementsAre(0, 0));
}

}  // namespace
}  // namespace wavelock

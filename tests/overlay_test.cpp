// Corrections are restored, saved, and laid over every read as one sample after the other would be.
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

// ---- loading and saving

TEST(Overlay, SavesWhatItLoadedWithSegmentsNumberedFromZero) {
  const std::vector<StoredSegment> segments = {{0, 10, 5, {1, 2}}, {10, 20, 9, {}}, {20, 30, 6, {3}}};
  const std::vector<StoredRecord> rest = {{tag::kOverlayParameters, 0, ParametersBytes(3, 2, 1)},
                                          {tag::kOverlayRow, 0, RowBytes(4, {1.5f})},
                                          {tag::kOverlayRow, 0, RowBytes(2, {2.5f, -1})}};
  Container source(Joined(SegmentSections(segments), rest));
  ASSERT_TRUE(source.overlay.Load(source.tff));
  Container saved;
  ASSERT_TRUE(source.overlay.Save(saved.tff));
  std::vector<StoredSegment> renumbered = segments;
  for (std::uint32_t id = 0; id < 3; ++id) renumbered[id].id = id;
  Container expected(Joined(SegmentSections(renumbered), rest));
  EXPECT_EQ(saved.test.memory.Contents("/c"), expected.test.memory.Contents("/c"));
}

TEST(Overlay, ParametersAreSavedWithoutRowsOnlyWhenTheySaySo) {
  Container saved;
  ASSERT_TRUE(saved.overlay.Save(saved.tff));
  EXPECT_EQ(saved.tff.Entries().size(), 1u);
  saved.overlay.params.alwaysSave = 0;
  ASSERT_TRUE(saved.overlay.Save(saved.tff));
  EXPECT_EQ(saved.tff.Entries().size(), 1u);
  ASSERT_TRUE(saved.overlay.AddRow({}));
  ASSERT_TRUE(saved.overlay.Save(saved.tff));
  EXPECT_EQ(saved.tff.Entries().size(), 3u);
}

TEST(Overlay, WithoutParametersThereAreNoCorrectionsButOldParametersStay) {
  Container good(
      Joined({{tag::kOverlayParameters, 0, ParametersBytes(7)}, {tag::kOverlayRow, 0, RowBytes(0, {1})}},
             SegmentSections({{0, 10, 1, {}}})));
  ASSERT_TRUE(good.overlay.Load(good.tff));
  Container bad(Joined({{tag::kOverlayRow, 0, RowBytes(0, {1})}}, SegmentSections({{0, 10, 1, {}}})));
  EXPECT_FALSE(good.overlay.Load(bad.tff));
  EXPECT_FALSE(good.overlay.HasRows());
  EXPECT_FALSE(good.overlay.HasSegments());
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
                       {tag::kOverlaySegment, 0, ByteWriter().U32(3)}});
  ASSERT_TRUE(container.overlay.Load(container.tff));
  EXPECT_EQ(container.overlay.GetSampleShift(), 7);
  EXPECT_EQ(container.overlay.params.polyOrder, 3);
  EXPECT_EQ(container.overlay.params.storedValue12, 600.0f);
  EXPECT_EQ(container.overlay.Rows()[1].startSample, 9u);
  EXPECT_EQ(container.overlay.GetRowValue(1, 0), 5);
  EXPECT_EQ(container.overlay.GetRowValue(1, 1), 2);  // of the row before
  EXPECT_EQ(container.overlay.GetRowValue(-1, 0), 0);
  EXPECT_EQ(container.overlay.Segments()[0]->firstSample, 3u);
  EXPECT_EQ(container.overlay.Segments()[0]->endSample, 0u);
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

// ---- looking up

OverlayRow RowAt(std::uint32_t start) {
  OverlayRow row;
  row.startSample = start;
  return row;
}

// As the rule tells it.
std::uint32_t FindRowOneByOne(std::span<const OverlayRow> rows, std::uint32_t x) {
  const auto count = static_cast<std::uint32_t>(rows.size());
  for (std::uint32_t k = 0; k + 1 < count; ++k) {
    if (k == 0 && x < rows[0].startSample) return 0;
    if (rows[k].startSample <= x && x < rows[k + 1].startSample) return k + 1;
  }
  return count == 0 || x < rows[count - 1].startSample ? 0 : count;
}

TEST(Overlay, RowsInAnyOrderAreFoundAsByVisitingAll) {
  std::mt19937 random(3);
  for (int round = 0; round < 500; ++round) {
    CCorrectionOverlay overlay;
    for (int look = 0; look < 60; ++look) {
      if (look % 8 == 1) overlay.AddRow(RowAt(static_cast<std::uint32_t>(random() % 24)));
      const auto x = static_cast<std::uint32_t>(random() % 26);
      ASSERT_EQ(overlay.FindRow(x), FindRowOneByOne(overlay.Rows(), x)) << round;
      const FirstFitMap::Run run = overlay.FindRowRun(x);
      for (std::uint32_t y = x; y < std::min<std::uint64_t>(run.end, 26); ++y)
        ASSERT_EQ(run.index, FindRowOneByOne(overlay.Rows(), y)) << round;
    }
  }
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

// ---- laying over samples

// Sample by sample and value by value, with nothing remembered but what the rule remembers.
template <class Word>
class PlainPass {
 public:
  PlainPass(CCorrectionOverlay& overlay, const HeaderImage& header) : overlay_(overlay), header_(header) {}

  bool Apply(std::vector<Word>& samples, std::uint32_t start, bool skipPolynomials, bool skipRows) {
    const std::uint32_t channels = header_.header.channelCount;
    std::uint32_t row = 0;
    for (std::uint32_t i = 0; i < samples.size() / channels; ++i) {
      const bool isCurved = overlay_.HasSegments() && !skipPolynomials;
      if (isCurved && !Evaluate(start + i)) return false;
      if (overlay_.HasRows() && !skipRows) {
        const auto shift = static_cast<std::uint32_t>(overlay_.GetSampleShift());
        if (const auto found = FindRowOneByOne(overlay_.Rows(), start + i - shift); found != 0) row = found;
      }
      for (std::uint32_t c = 0; c < channels; ++c) {
        Word& sample = samples[i * channels + c];
        const float calibration = header_.channels[c].calibration;
        if (row != 0) Add(sample, double{overlay_.Rows()[row - 1].channelValue[c]} * 204.8f / calibration);
        if (isCurved && c < values_.size()) Add(sample, double{values_[c]} * -204.8f / calibration);
      }
    }
    return true;
  }

 private:
  static void Add(Word& sample, double amount) {
    if (!std::isfinite(amount)) return;
    const double whole = std::fmod(std::trunc(amount), 4294967296.0);
    const auto sum = static_cast<std::int64_t>(sample) + static_cast<std::int64_t>(whole);
    sample = static_cast<Word>(static_cast<std::uint64_t>(sum));
  }

  bool Evaluate(std::uint32_t x) {
    const auto holds = [x](const auto& s) { return s->firstSample <= x && x < s->endSample; };
    if (current_ == nullptr || !holds(current_)) {
      const auto segments = overlay_.Segments();
      const auto found = std::find_if(segments.begin(), segments.end(), holds);
      if (found == segments.end()) return false;
      current_ = found->get();
    }
    const std::int64_t outputs = overlay_.params.polyChannels;
    const std::int64_t powers = std::int64_t{overlay_.params.polyOrder} + 1;
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

  CCorrectionOverlay& overlay_;
  const HeaderImage& header_;
  const OverlaySegment* current_ = nullptr;
  std::vector<float> values_;
};

// A recording with random samples, 64 per block, so that a float read comes in pieces.
template <class Word>
class CorrectedRecording {
 public:
  CorrectedRecording(std::mt19937& random, int channels, std::uint32_t samples)
      : samples_(samples),
        opened_(Builder(random, channels, samples)),
        pass_(Recording().overlay, Recording().rawHeader) {
    Recording().sampleWidth = sizeof(Word);
    for (int c = 0; c < channels; ++c)
      opened_.Channel(static_cast<std::size_t>(c)).calibration = Calibration(random);
    stored_ = opened_.Raw<Word>(0, samples);
  }

  CRecordingFile& Recording() { return opened_.recording; }
  std::uint32_t Samples() const { return samples_; }

  // Reads a block, to an address that suits no wide sample, and holds it to what the plain pass makes of the
  // same samples.
  void Check(std::uint32_t start, std::uint32_t end, int skipPolynomials, int skipRows) {
    const std::size_t channels = opened_.Header().channelCount;
    std::vector<Word> expected(stored_.begin() + static_cast<std::ptrdiff_t>(start * channels),
                               stored_.begin() + static_cast<std::ptrdiff_t>(end * channels));
    std::vector<Word> got(expected.size());
    const bool isWhole = pass_.Apply(expected, start, skipPolynomials != 0, skipRows != 0);
    const std::size_t bytes = got.size() * sizeof(Word);
    std::vector<std::int16_t> memory(1 + bytes / sizeof(std::int16_t));
    ASSERT_EQ(Recording().ReadContinuousRaw(start, end, &memory[1], static_cast<std::int32_t>(bytes),
                                            skipPolynomials, skipRows),
              isWhole);
    std::memcpy(got.data(), &memory[1], bytes);
    if (isWhole) {
      ASSERT_EQ(got, expected);
    }
  }

  // A float read gives what one raw read of the same range gives.
  void CheckMicrovolts() {
    const std::vector<Word> raw = opened_.Raw<Word>(0, samples_);
    const std::vector<float> microvolts = opened_.Microvolts(0, samples_);
    ASSERT_EQ(microvolts.size(), raw.size());
    const auto channels = opened_.Setup().Channels();
    for (std::size_t i = 0; i < raw.size(); ++i) {
      const SetupChannel& channel = channels[i % channels.size()];
      const auto factor = static_cast<float>(double{channel.countScale} * channel.channelScale);
      ASSERT_EQ(microvolts[i], static_cast<float>(static_cast<double>(raw[i]) * factor)) << i;
    }
  }

 private:
  static RecordingBuilder Builder(std::mt19937& random, int channels, std::uint32_t samples) {
    std::vector<std::int32_t> values(samples * static_cast<std::size_t>(channels));
    for (std::int32_t& value : values) value = static_cast<std::int32_t>(random());
    return RecordingBuilder().Channels(channels).Width(sizeof(Word)).Samples(values);
  }

  static float Calibration(std::mt19937& random) {
    constexpr float kOdd[] = {0.0f, -3.0f, 1e-30f, 1e30f, std::numeric_limits<float>::quiet_NaN()};
    const auto pick = random() % 24;
    return pick < std::size(kOdd) ? kOdd[pick] : 0.5f + static_cast<float>(random() % 1000) / 3;
  }

  const std::uint32_t samples_;
  OpenedRecording opened_;
  PlainPass<Word> pass_;
  std::vector<Word> stored_;
};

class Chance {
 public:
  explicit Chance(unsigned seed) : random(seed) {}
  int UpTo(int most) { return static_cast<int>(random() % (static_cast<unsigned>(most) + 1)); }
  bool OneIn(int count) { return UpTo(count - 1) == 0; }
  float Value() { return OneIn(30) ? 1e20f : static_cast<float>(UpTo(20000) - 10000) / 7; }
  std::mt19937 random;
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
    CorrectedRecording<Word> recording(chance.random, channels, static_cast<std::uint32_t>(samples));
    if (!chance.OneIn(4)) AddRows(recording.Recording().overlay, chance, channels, samples);
    if (!chance.OneIn(4)) AddSegments(recording.Recording().overlay, chance, channels, samples);
    for (int block = 0; block < 6; ++block) {
      const int start = chance.UpTo(samples - 1);
      const int end = start + 1 + chance.UpTo(samples - 1 - start);
      recording.Check(static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(end), chance.OneIn(5),
                      chance.OneIn(5));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

TEST(CorrectedSamples, AreThoseOfOneSampleAfterTheOther) {
  CheckRandomOverlays<std::int16_t>(1);
  CheckRandomOverlays<std::int32_t>(2);
}

TEST(CorrectedSamples, AnEmptySpanLeavesThePolynomialAsItWas) {
  CPolyEvaluator evaluator;
  EXPECT_EQ(evaluator.Evaluate(0), nullptr);
  ASSERT_TRUE(evaluator.Setup(0, 1, 0, 10));
  evaluator.SetCoefficients(std::vector<double>{4});
  for (const double end : {10.0, 9.0, std::nan("")}) EXPECT_FALSE(evaluator.Setup(3, 5, 10, end));
  EXPECT_EQ(evaluator.OutputCount(), 1);
  EXPECT_EQ(*evaluator.Evaluate(3), 4);
}

// A row that holds through positions that wrap, over many pieces: only one walk gets it right.
TEST(CorrectedSamples, MicrovoltsComeFromOneWalkOverAllPieces) {
  Chance chance(3);
  constexpr std::uint32_t kSamples = 300'000;
  CorrectedRecording<std::int16_t> recording(chance.random, 3, kSamples);
  CCorrectionOverlay& overlay = recording.Recording().overlay;
  overlay.params.sampleShift = 250'000;
  for (const std::uint32_t start : {20'000u, 40'000u}) {
    OverlayRow row = RowAt(start);
    row.channelValue[1] = Stored<float>(static_cast<float>(start));
    overlay.AddRow(row);
  }
  recording.CheckMicrovolts();
  recording.Check(0, kSamples, 0, 0);
}

TEST(CorrectedSamples, GapBetweenSegmentsFailsTheBlockThatTouchesIt) {
  OpenedRecording opened(RecordingBuilder().Samples(std::vector<std::int32_t>(100)));
  CCorrectionOverlay& overlay = opened.recording.overlay;
  overlay.params.polyOrder = 0;
  overlay.params.polyChannels = 1;
  overlay.AddSegment(MakeSegment(0, 30, {-1}));
  overlay.AddSegment(MakeSegment(40, 100, {-2}));
  EXPECT_THAT(opened.Microvolts(40, 41), ElementsAre(2));
  EXPECT_THAT(opened.Microvolts(39, 41), IsEmpty());
  opened.recording.applyPolynomials = 0;
  EXPECT_THAT(opened.Raw<std::int16_t>(29, 31), ElementsAre(0, 0));
}

}  // namespace
}  // namespace wavelock

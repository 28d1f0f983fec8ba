// Corrections are restored from damaged records too, and laid over samples wherever these lie.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

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

// The frozen cases hold what comes of rows and segments at random. Here a row holds through positions that
// wrap, over many pieces: only one walk gets it right.
TEST(Overlay, MicrovoltsComeFromOneWalkOverAllPieces) {
  constexpr std::size_t kSamples = 300'000;
  OpenedRecording opened(RecordingBuilder().Samples(std::vector<std::int32_t>(kSamples)));
  CCorrectionOverlay& overlay = opened.recording.overlay;
  overlay.params.sampleShift = 250'000;
  for (const std::uint32_t start : {20'000u, 40'000u}) {
    OverlayRow row = RowAt(start);
    row.channelValue[0] = static_cast<float>(start / 200);
    overlay.AddRow(row);
  }
  std::vector<float> expected(kSamples, 200);
  std::fill(expected.begin() + 270'000, expected.begin() + 290'000, 100.0F);
  EXPECT_TRUE(opened.Microvolts(0, kSamples) == expected);
}

TEST(Overlay, WideSamplesAreCorrectedAtAnyAddress) {
  OpenedRecording opened(RecordingBuilder().Width(4).Samples({1, 2, 3}));
  opened.recording.sampleWidth = 4;
  OverlayRow row = RowAt(1);
  row.channelValue[0] = 100;
  opened.recording.overlay.AddRow(row);
  std::vector<std::int16_t> memory(1 + 3 * 2);
  ASSERT_TRUE(opened.recording.ReadContinuousRaw(0, 3, &memory[1], 12, 0, 0));
  std::int32_t samples[3];
  std::memcpy(samples, &memory[1], sizeof samples);
  EXPECT_THAT(samples, ElementsAre(1, 102, 103));
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

// Data sets in memory know what they hold, turn between their two orders, are copied whole, and come out of
// recordings with their facts and markers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

// A setup with everything that a set can have.
std::unique_ptr<CSetup> FullSetup(std::int32_t channels, std::int32_t points) {
  TestHost test;
  auto setup = std::make_unique<CSetup>(0, test.host);
  setup->channelCount = setup->channelCapacity = channels;
  EXPECT_TRUE(setup->MakeChannels());
  setup->pointCount = points;
  setup->acceptedSweeps = 4;
  setup->hasImaginary = setup->hasVariance = 1;
  setup->dataKind = kAverageWithStatistics;
  return setup;
}

void Count(std::span<float> values, float first) {
  std::iota(values.begin(), values.end(), first);
}

std::vector<FloatMatrix*> MatricesOf(CTFDEpoch& data) {
  return {&data.main, &data.imaginary, &data.variance, &data.varianceImaginary};
}

CMarker MarkerOf(std::int32_t epoch, const char* name) {
  CMarker marker;
  marker.epoch = epoch;
  marker.name = name;
  return marker;
}

TEST(DataSets, TurnAndTurnBackGivesEveryElement) {
  // Sizes beside, at and beyond those of the tiles, in both proportions.
  for (const auto& [channels, points] :
       {std::pair(1, 1), {3, 5}, {16, 64}, {17, 65}, {65, 17}, {130, 131}, {2, 1000}}) {
    CTFDEpoch data(FullSetup(channels, points).get(), 0);
    ASSERT_EQ(data.valid, 1);
    float first = 0;
    for (FloatMatrix* matrix : MatricesOf(data)) Count(matrix->All(), first += 0.5f);
    ASSERT_TRUE(data.Multiplex());
    EXPECT_EQ(data.IsMultiplexed(), 1);
    first = 0;
    for (FloatMatrix* matrix : MatricesOf(data)) {
      first += 0.5f;
      ASSERT_EQ(matrix->Rows(), static_cast<std::size_t>(points));
      for (int c = 0; c < channels; ++c) {
        for (int p = 0; p < points; ++p) {
          ASSERT_EQ((*matrix)[static_cast<std::size_t>(p)][c], static_cast<float>(c * points + p) + first);
        }
      }
    }
    EXPECT_EQ(data.mainBlock, data.main[0]);
    EXPECT_EQ(data.varianceImaginaryBlock, data.varianceImaginary[0]);
    const float* const block = data.mainBlock;
    EXPECT_TRUE(data.Multiplex());
    EXPECT_EQ(data.mainBlock, block) << "it lies so already";
    ASSERT_TRUE(data.Demultiplex());
    std::vector<float> expected(data.main.All().size());
    Count(expected, 0.5f);
    EXPECT_THAT(data.main.All(), ::testing::ElementsAreArray(expected));
  }
}

TEST(DataSets, FlagsOfTheSetupFollowTheBlocks) {
  const auto setup = FullSetup(2, 3);
  setup->dataKind = kEpochs;
  setup->hasVariance = 7;
  CTFDEpoch data(setup.get(), 1);
  EXPECT_EQ(data.config->hasVariance, 1);
  EXPECT_TRUE(data.AllocFsp());
  EXPECT_EQ(data.fspBytes, 32u);
  data.FreeFsp();
  EXPECT_EQ(data.config->dataKind, 0) << "whatever it was before";
  data.FreeImaginary();
  EXPECT_TRUE(data.AllocVariance());
  EXPECT_FALSE(data.varianceImaginary) << "nothing imaginary, no variance of it";
  data.FreeAll();
  EXPECT_EQ(data.blockBytes, 0u);
  EXPECT_EQ(data.mainBlock, nullptr);
  EXPECT_FALSE(data.HasImaginary() || data.HasVariance());
  EXPECT_EQ(setup->hasVariance, 7) << "the setup that was copied is left alone";
}

TEST(DataSets, CopyIsWholeAndItsOwn) {
  auto source = std::make_unique<CTFDEpoch>(FullSetup(2, 3).get(), 1);
  for (FloatMatrix* matrix : MatricesOf(*source)) Count(matrix->All(), 1);
  Count(source->fspSecond.All(), 5);
  source->epochInfo.trialType = 12;
  source->wordB = 8;
  source->channelWords.Elements()[1] = 77;
  source->markers.Add(std::make_unique<CMarker>(MarkerOf(0, "one")));
  const CTFDEpoch copy(*source);
  source.reset();
  ASSERT_EQ(copy.valid, 1);
  EXPECT_THAT(copy.variance.All(), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(copy.fspSecond.All(), ElementsAre(5, 6, 7, 8, 9, 10, 11, 12));
  EXPECT_EQ(copy.IsMultiplexed(), 1);
  EXPECT_EQ(copy.epochInfo.trialType, 12);
  EXPECT_EQ(copy.wordB, 8u);
  EXPECT_EQ(copy.channelWords.Elements()[1], 77u);
  EXPECT_EQ(copy.markers.GetAt(0)->name, "one");
  EXPECT_EQ(copy.errorText, "");
  EXPECT_STREQ(copy.GetRuntimeClassName(), "CTFDEpoch");
}

TEST(DataSets, ImpossibleSetupGivesAnInvalidObject) {
  const auto expectInvalid = [](CTFDEpoch& data, const char* errorText) {
    EXPECT_EQ(data.valid, 0);
    EXPECT_EQ(data.errorText, errorText);
    EXPECT_FALSE(data.main || data.imaginary || data.fspFirst);
    EXPECT_FALSE(data.Multiplex() || data.Demultiplex());
    EXPECT_EQ(CTFDEpoch(data).valid, 0);
  };
  CTFDEpoch none(nullptr, 1);
  expectInvalid(none, "Unspecified error");
  EXPECT_FALSE(none.AllocMain() || none.AllocFsp() || none.AllocVariance() || none.AllocImaginary());
  none.FreeAll();
  const auto negative = FullSetup(2, -3);
  CTFDEpoch noMain(negative.get(), 0);
  expectInvalid(noMain, "Memory allocation failed (main)");
  const auto sweeps = FullSetup(2, 3);
  sweeps->acceptedSweeps = -1;
  CTFDEpoch noFsp(sweeps.get(), 0);
  expectInvalid(noFsp, "Memory allocation failed (Fsp)");
  EXPECT_EQ(CTFDPaired(sweeps.get(), 0).valid, 0);
  EXPECT_EQ(CTFDPaired(negative.get(), 1).valid, 0);
}

RecordingBuilder TwoEpochs() {
  return RecordingBuilder().Epoched().Channels(2).Points(2).Epochs(
      {{.accept = 0, .trialType = 5, .response = 9, .samples = {1, 2, 3, 4}}, {.samples = {5, 6, 7, 8}}});
}

TEST(DataObjects, EpochHasItsDataFactsAndMarkers) {
  OpenedRecording opened(TwoEpochs());
  for (const auto& [epoch, name] : {std::pair(1, "a"), {0, "b"}, {1, "c"}})
    opened.recording.markerList.Add(std::make_unique<CMarker>(MarkerOf(epoch, name)));
  const CTFDEpoch* data = opened.recording.LoadDataObject(0);
  ASSERT_NE(data, nullptr);
  EXPECT_THAT(data->main.All(), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(data->IsMultiplexed(), 1);
  EXPECT_EQ(data->epochInfo.trialType, 5);
  EXPECT_EQ(data->epochInfo.accept, 0);
  EXPECT_EQ(data->epochInfo.response, 9);
  EXPECT_EQ(data->markers.GetCount(), 1);
  data = opened.recording.LoadDataObject(1);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->epochInfo.tail, 1);
  ASSERT_EQ(data->markers.GetCount(), 2);
  EXPECT_EQ(data->markers.GetAt(1)->name, "c");
  EXPECT_EQ(opened.recording.LoadDataObject(2), nullptr);
  EXPECT_EQ(opened.recording.loadedData, nullptr) << "the last one went with the failure";
  EXPECT_NE(opened.recording.LoadDataObject(1), nullptr);
  opened.recording.CloseFile();
  EXPECT_EQ(opened.recording.loadedData, nullptr);
}

TEST(DataObjects, AverageServesEveryIndexWithThatIndexsMarkers) {
  ByteWriter bytes;
  bytes.Zeros(5).F32(3).F32(4);
  OpenedRecording opened(RecordingBuilder().Averaged().Points(2).Data(bytes));
  opened.recording.markerList.Add(std::make_unique<CMarker>(MarkerOf(5, "five")));
  ASSERT_TRUE(opened.recording.LoadDataObject(0)->Demultiplex());
  const CTFDEpoch* const data = opened.recording.LoadDataObject(5);
  EXPECT_EQ(data->IsMultiplexed(), 1);
  EXPECT_EQ(data->markers.GetCount(), 1);
  EXPECT_EQ(opened.recording.LoadDataObject(4), data);
  EXPECT_EQ(data->markers.GetCount(), 0);
}

TEST(DataObjects, RecordingsWithoutSetsSaySo) {
  OpenedRecording opened(RecordingBuilder().Samples({1, 2, 3}));
  EXPECT_EQ(opened.recording.LoadDataObject(0), nullptr);
  EXPECT_THAT(NumbersOf(opened.test.user.messages), ElementsAre(1779));
}

TEST(DataObjects, SetupThatNoFileCanFillGivesNone) {
  for (const auto& [channels, points] : {std::pair(2, -1), {2, 2'000'000'000}, {2'000'000'000, 0}, {-2, 2}}) {
    OpenedRecording opened(TwoEpochs());
    opened.Setup().channelCount = channels;
    opened.Setup().pointCount = points;
    EXPECT_EQ(opened.recording.LoadDataObject(0), nullptr) << channels << " x " << points;
  }
}

}  // namespace
}  // namespace wavelock

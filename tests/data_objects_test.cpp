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
  auto setup = std::make_unique<CSetup>(0);
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

std::unique_ptr<CMarker> MarkerOf(std::int32_t epoch) {
  auto marker = std::make_unique<CMarker>();
  marker->epoch = epoch;
  return marker;
}

TEST(DataSets, TurnAndTurnBackGivesEveryElement) {
  for (const auto& [channels, points] : {std::pair(1, 1), {3, 5}, {65, 17}}) {
    CTFDEpoch data(FullSetup(channels, points).get(), 0);
    float first = 0;
    for (FloatMatrix* matrix : MatricesOf(data)) Count(matrix->All(), first += 0.5f);
    const std::vector<float> stored(data.main.All().begin(), data.main.All().end());
    ASSERT_TRUE(data.Multiplex());
    EXPECT_EQ(data.IsMultiplexed(), 1);
    first = 0;
    for (FloatMatrix* matrix : MatricesOf(data)) {
      first += 0.5f;
      ASSERT_EQ(matrix->Rows(), static_cast<std::size_t>(points));
      for (int i = 0; i < points * channels; ++i) {
        const float value = static_cast<float>(i % channels * points + i / channels) + first;
        ASSERT_EQ(matrix->All()[static_cast<std::size_t>(i)], value) << channels << " x " << points;
      }
    }
    EXPECT_EQ(data.varianceImaginaryBlock, data.varianceImaginary[0]);
    const float* const block = data.mainBlock;
    EXPECT_EQ(block, data.main[0]);
    EXPECT_TRUE(data.Multiplex());
    EXPECT_EQ(data.mainBlock, block) << "it lies so already";
    ASSERT_TRUE(data.Demultiplex());
    EXPECT_THAT(data.main.All(), ::testing::ElementsAreArray(stored));
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
  source->markers.Add(MarkerOf(3));
  const CTFDEpoch copy(*source);
  source.reset();
  ASSERT_EQ(copy.valid, 1);
  EXPECT_THAT(copy.variance.All(), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(copy.fspSecond.All(), ElementsAre(5, 6, 7, 8, 9, 10, 11, 12));
  EXPECT_EQ(copy.IsMultiplexed(), 1);
  EXPECT_EQ(copy.epochInfo.trialType, 12);
  EXPECT_EQ(copy.wordB, 8u);
  EXPECT_EQ(copy.channelWords.Elements()[1], 77u);
  EXPECT_EQ(copy.markers.GetAt(0)->epoch, 3);
  EXPECT_EQ(copy.errorText, "");
}

TEST(DataSets, ImpossibleSetupGivesAnInvalidObject) {
  const auto negative = FullSetup(2, -3);
  const auto sweeps = FullSetup(2, 3);
  sweeps->acceptedSweeps = -1;
  const std::pair<const CSetup*, const char*> cases[] = {{nullptr, "Unspecified error"},
                                                         {negative.get(), "Memory allocation failed (main)"},
                                                         {sweeps.get(), "Memory allocation failed (Fsp)"}};
  for (const auto& [setup, errorText] : cases) {
    CTFDEpoch data(setup, 1);
    EXPECT_EQ(data.valid, 0);
    EXPECT_EQ(data.errorText, errorText);
    EXPECT_FALSE(data.main || data.imaginary || data.fspFirst);
    EXPECT_FALSE(data.Multiplex() || data.Demultiplex());
    EXPECT_EQ(CTFDEpoch(data).valid, 0);
    if (setup == nullptr) {
      EXPECT_FALSE(data.AllocMain() || data.AllocFsp() || data.AllocVariance() || data.AllocImaginary());
    }
    data.FreeAll();
  }
  EXPECT_EQ(CTFDPaired(sweeps.get(), 0).valid, 0);
  EXPECT_EQ(CTFDPaired(negative.get(), 1).valid, 0);
}

// ---- out of recordings

RecordingBuilder TwoEpochs() {
  return RecordingBuilder().Epoched().Channels(2).Points(2).Epochs(
      {{.samples = {1, 2, 3, 4}}, {.samples = {5, 6, 7, 8}}});
}

TEST(DataObjects, EpochGoesWithTheNextRequestAndWithTheFile) {
  OpenedRecording opened(TwoEpochs());
  CRecordingFile& recording = opened.recording;
  ASSERT_NE(recording.LoadDataObject(1), nullptr);
  EXPECT_EQ(recording.loadedData->epochInfo.tail, 1);
  EXPECT_EQ(recording.LoadDataObject(2), nullptr);
  EXPECT_EQ(recording.loadedData, nullptr);
  EXPECT_NE(recording.LoadDataObject(1), nullptr);
  recording.CloseFile();
  EXPECT_EQ(recording.loadedData, nullptr);
  OpenedRecording cut(TwoEpochs().FileSize(TwoEpochs().Build().size() - 1));
  EXPECT_EQ(cut.recording.LoadDataObject(1), nullptr);
  EXPECT_EQ(cut.recording.loadedData, nullptr) << "nor is half of one left";
}

TEST(DataObjects, AverageServesEveryIndexWithThatIndexsMarkers) {
  OpenedRecording opened(RecordingBuilder().Averaged().Points(2).Data(ByteWriter().Zeros(5).F32(3).F32(4)));
  opened.recording.markerList.Add(MarkerOf(5));
  ASSERT_TRUE(opened.recording.LoadDataObject(0)->Demultiplex());
  for (const int index : {5, 4}) {
    const CTFDEpoch* const data = opened.recording.LoadDataObject(static_cast<std::uint32_t>(index));
    EXPECT_EQ(data->IsMultiplexed(), 1);
    EXPECT_EQ(data->markers.GetCount(), index == 5 ? 1 : 0);
  }
}

TEST(DataObjects, RecordingsWithoutSetsAndSetupsThatNoFileCanFillGiveNone) {
  OpenedRecording continuous(RecordingBuilder().Samples({1, 2, 3}));
  EXPECT_EQ(continuous.recording.LoadDataObject(0), nullptr);
  EXPECT_THAT(NumbersOf(continuous.test.user.messages), ElementsAre(1779));
  for (const auto& [channels, points] : {std::pair(2, -1), {2, 2'000'000'000}, {2'000'000'000, 0}, {-2, 2}}) {
    OpenedRecording opened(TwoEpochs());
    opened.Setup().channelCount = channels;
    opened.Setup().pointCount = points;
    EXPECT_EQ(opened.recording.LoadDataObject(0), nullptr) << channels << " x " << points;
  }
}

}  // namespace
}  // namespace wavelock

// Channel pairs are found through the matrix of their places, wherever they lie.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t kStart = 900 + 3 * 75;
constexpr std::uint32_t kEntry = 8 + 2 * 8;

constexpr std::size_t kTailPosition = 12;

// Three channels of two points; pairs (0, 2) and (1, 2), the second one first in the file. The matrix ends
// with the file.
RecordingBuilder TwoPairs(std::uint32_t place02 = kStart + kEntry, std::uint32_t place12 = kStart) {
  ByteWriter data;
  data.U16(9).U16(9).U32(0).F32(1).F32(2).F32(3).F32(4);
  data.U16(9).U16(9).U32(0).F32(5).F32(6).F32(7).F32(8);
  const std::uint32_t matrix[3][3] = {{700, 0, place02}, {1, 0, place12}, {place02, place12, 0}};
  for (const auto& row : matrix) {
    for (const std::uint32_t place : row) data.U32(place);
  }
  return RecordingBuilder().Revision(13).TimeFrequency().Channels(3).Points(2).Data(data);
}

TEST(PairedData, PairsComeInTheOrderOfTheMatrix) {
  const std::uint32_t end = kStart + 2 * kEntry + 9 * 4;
  for (const RecordingBuilder& builder :
       {TwoPairs(), TwoPairs().Revision(15).PutU32(kTailPosition, end).Append(std::vector<std::byte>(100))}) {
    OpenedRecording opened(builder, "test.rec", 1);
    ASSERT_TRUE(opened.isOpen);
    CTFDPaired* const pairs = opened.recording.BuildPairedData();
    ASSERT_NE(pairs, nullptr);
    ASSERT_EQ(pairs->GetPairCount(), 2);
    EXPECT_THAT(pairs->pairIndex.All(), ElementsAre(0, 1, 2, 2));
    EXPECT_THAT(pairs->real.All(), ElementsAre(5, 6, 1, 2));
    EXPECT_THAT(pairs->imaginary.All(), ElementsAre(7, 8, 3, 4));
    EXPECT_EQ(pairs->config->dataKind, kTimeFrequency);
    EXPECT_EQ(opened.recording.BuildPairedData(), pairs);
    opened.recording.CloseFile();
    EXPECT_EQ(opened.recording.BuildPairedData(), nullptr);
  }
}

TEST(PairedData, PlacesThatCountAsNoneAreLeftOut) {
  for (const std::uint32_t none : {0u, 1u, 0x80000000u, 0xFFFFFFFFu}) {
    OpenedRecording one(TwoPairs(none));
    ASSERT_NE(one.recording.BuildPairedData(), nullptr);
    EXPECT_EQ(one.recording.BuildPairedData()->GetPairCount(), 1);
    OpenedRecording empty(TwoPairs(none, none));
    EXPECT_EQ(empty.recording.BuildPairedData(), nullptr);
  }
}

TEST(PairedData, PairBeyondTheFileLeavesWhatCameBefore) {
  OpenedRecording opened(TwoPairs(kStart, 0x7FFFFFFF));
  EXPECT_EQ(opened.recording.BuildPairedData(), nullptr);
  const CTFDPaired* const pairs = opened.recording.BuildPairedData();
  ASSERT_NE(pairs, nullptr);
  EXPECT_THAT(pairs->real.All(), ElementsAre(1, 2, 0, 0));
}

TEST(PairedData, MatrixThatIsNotThereIsTold) {
  for (const std::uint32_t tail : {0u, 0x80000000u, 0xFFFFFFF0u}) {
    OpenedRecording opened(TwoPairs().Revision(16).PutU32(kTailPosition, tail));
    EXPECT_THAT(NumbersOf(opened.test.user.messages), ElementsAre(1768)) << tail;
    EXPECT_FALSE(opened.recording.pairMatrix);
    EXPECT_EQ(opened.recording.BuildPairedData(), nullptr);
  }
}

}  // namespace
}  // namespace wavelock

// A recording that was opened is saved in the current form, and delivers what it delivered before.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/delivered.h"
#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

// Any integer, the same for a sample and a channel every time.
std::int32_t Mixed(std::uint64_t sample, int channel) {
  const std::uint64_t bits =
      (sample * 131 + static_cast<std::uint64_t>(channel) * 17 + 7) * 0x9E3779B97F4A7C15;
  return static_cast<std::int16_t>(bits >> 40);
}

RecordingBuilder Continuous() {
  return RecordingBuilder()
      .Channels(3)
      .Rate(250)
      .Calibration(33.0f)
      .Samples(500, Mixed)
      .Events({{.stimType = 1, .sample = 5}, {.stimType = 0, .keypad = 3, .sample = 100}});
}

struct Upgraded {
  explicit Upgraded(const Bytes& bytes) : before(bytes) {
    EXPECT_TRUE(before.isOpen);
    delivered = EverythingIn(before.recording);
    isSaved = before.recording.SaveAndClose(0);
    after.emplace(before.test.memory.Contents("test.rec").value_or(Bytes()));
  }

  OpenedRecording before;
  Delivered delivered;
  bool isSaved = false;
  std::optional<OpenedRecording> after;
};

void ExpectSame(Upgraded& upgraded) {
  ASSERT_TRUE(upgraded.isSaved);
  ASSERT_TRUE(upgraded.after->isOpen);
  EXPECT_EQ(upgraded.after->Header().headerRevision, 16);
  EXPECT_EQ(EverythingIn(upgraded.after->recording), upgraded.delivered);
}

TEST(Upgrading, ContinuousRecordingsOfEveryGenerationAndLayout) {
  for (const int revision : {0, 2, 3, 4, 6, 7, 8, 9, 11, 13, 14, 16}) {
    for (const int layout : {0, 1, 2, 3}) {
      if ((revision < 7) != (layout == 0)) continue;  // trigger words are the old form
      SCOPED_TRACE(testing::Message() << "revision " << revision << ", layout " << layout);
      Upgraded upgraded(Continuous().Revision(revision).Layout(layout).BlockSamples(100).Build());
      ExpectSame(upgraded);
      EXPECT_EQ(upgraded.after->Header().sampleLayout, 1);
      EXPECT_EQ(upgraded.after->Header().sampleCountField, 500u);
    }
  }
}

TEST(Upgrading, OldestLayouts) {
  for (const int firstByte : {2, 3, 5}) {
    SCOPED_TRACE(firstByte);
    Upgraded upgraded(Continuous().OldestLayout(firstByte).AcquisitionMode(3).Build());
    ExpectSame(upgraded);
  }
}

TEST(Upgrading, EventsThatNoByteOffsetHoldsKeepTheirPoints) {
  Upgraded upgraded(Continuous()
                        .EventTableKind(3)
                        .Events({{.stimType = 1, .sample = 0x7FFFFFFF}, {.stimType = 2, .sample = 3}})
                        .Build());
  ExpectSame(upgraded);
}

TEST(Upgrading, EpochsGetWholeHeads) {
  std::vector<RecordingBuilder::Epoch> epochs;
  for (std::uint16_t i = 0; i < 4; ++i) {
    epochs.push_back({.trialType = i, .correct = 7, .reactionTime = 0.25f, .response = 9});
    for (std::uint64_t p = 0; p < 20; ++p) epochs.back().samples.push_back(Mixed(p, i));
  }
  for (const int revision : {0, 2, 3, 9, 16}) {
    SCOPED_TRACE(revision);
    Upgraded upgraded(
        RecordingBuilder().Revision(revision).Epoched().Channels(2).Points(10).Epochs(epochs).Build());
    ExpectSame(upgraded);
    EXPECT_EQ(upgraded.after->recording.GetEpochCount(), 4u);
  }
}

TEST(Upgrading, Spectra) {
  RecordingBuilder::Epoch epoch{.trialType = 5};
  for (int i = 0; i < 2 * 2 * 8; ++i) epoch.spectrum.push_back(static_cast<float>(i) / 3.0f);
  for (const int revision : {2, 7, 16}) {
    SCOPED_TRACE(revision);
    Upgraded upgraded(RecordingBuilder()
                          .Revision(revision)
                          .Epoched()
                          .FrequencyDomain()
                          .Channels(2)
                          .Points(8)
                          .Epochs({epoch, epoch})
                          .Build());
    ExpectSame(upgraded);
  }
}

// ---- averages

constexpr int kChannels = 3;
constexpr int kPoints = 16;
constexpr int kSweeps = 5;
constexpr std::size_t kSpectrumScale = 675;
constexpr std::size_t kHasVariance = 375;
constexpr std::size_t kAcceptedSweeps = 364;
constexpr std::size_t kSummaryB = 255;

float Odd(int i) {
  return 1.0f / static_cast<float>(3 + i) - 0.1f;
}

RecordingBuilder Average(int revision) {
  ByteWriter data;
  for (int c = 0; c < kChannels; ++c) {
    data.Zeros(5);
    for (int p = 0; p < kPoints; ++p) data.F32(Odd(c * kPoints + p));
  }
  for (int i = 0; i < kChannels * kPoints + 2 * kChannels * kSweeps; ++i) data.F32(Odd(1000 + i));
  RecordingBuilder builder;
  builder.Revision(revision).Averaged().Channels(kChannels).Points(kPoints).Data(data);
  builder.PutU8(kHasVariance, 1).PutU16(kAcceptedSweeps, kSweeps).PutU16(kSummaryB, 2);
  for (int c = 0; c < kChannels; ++c)
    builder.Sensitivity(c, 1.5f + static_cast<float>(c)).PutChannelU16(c, 15, 7);
  return builder;
}

TEST(Upgrading, AveragesWithTheRulesForOldFilesDoneOnceAndForAll) {
  for (const int revision : {3, 9, 10, 11, 12, 13, 16}) {
    for (std::uint8_t scale = 0; scale < 3; ++scale) {
      for (const int domain : {0, 1}) {
        SCOPED_TRACE(testing::Message() << revision << ", scale " << int{scale} << ", domain " << domain);
        Upgraded upgraded(Average(revision).FrequencyDomain(domain).PutU8(kSpectrumScale, scale).Build());
        ExpectSame(upgraded);
        EXPECT_EQ(upgraded.after->recording.halveSpectrum, 0);
      }
    }
  }
}

TEST(Upgrading, AveragesWithStatistics) {
  Upgraded upgraded(Average(16).AveragedWithStatistics().Build());
  ExpectSame(upgraded);
  EXPECT_EQ(upgraded.after->Setup().dataKind, kAverageWithStatistics);
}

// ---- pairs

TEST(Upgrading, PairsFindTheirNewPlaces) {
  for (const int revision : {3, 9}) {
    SCOPED_TRACE(revision);
    RecordingBuilder builder;
    builder.Revision(revision).TimeFrequency().Channels(2).Points(4);
    const auto entry = static_cast<std::uint32_t>(builder.DataStart());
    ByteWriter data;
    data.U16(0).U16(1).U32(0);
    for (int i = 0; i < 8; ++i) data.F32(Odd(i));
    data.U32(0).U32(entry).U32(entry).U32(1);
    builder.Data(data);
    Upgraded upgraded(builder.Build());
    ExpectSame(upgraded);
    EXPECT_EQ(upgraded.delivered.count("pairs"), 1u);
    Upgraded again(*upgraded.before.test.memory.Contents("test.rec"));
    ExpectSame(again);
  }
}

// ---- what is edited, and what is not saved

TEST(Upgrading, EditsAreSaved) {
  OpenedRecording opened(Continuous());
  opened.Setup().channels[1].label.Assign("Cz");
  opened.recording.GetEventTable().Elements()[0].stimType = 42;
  ASSERT_TRUE(opened.recording.SaveAndClose(0));
  EXPECT_EQ(opened.recording.file, nullptr);
  EXPECT_TRUE(opened.recording.GetFileName().empty());
  ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
  EXPECT_EQ(opened.Setup().channels[1].label, "Cz");
  EXPECT_EQ(opened.recording.GetEventTable().Elements()[0].stimType, 42);
}

TEST(Upgrading, LostMarkersAreReported) {
  OpenedRecording opened(Continuous());
  opened.recording.markerList.Add(std::make_unique<CMarker>());
  ASSERT_TRUE(opened.recording.SaveAndClose(0));
  EXPECT_THAT(NumbersOf(opened.test.user.messages), testing::Contains(1778));
}

TEST(Upgrading, CopyLeavesTheRecordingOpenAndAsItWas) {
  const Bytes bytes = Continuous().Layout(3).Build();
  OpenedRecording opened(bytes);
  ASSERT_TRUE(opened.recording.SaveCopy("/elsewhere/copy.rec"));
  EXPECT_NE(opened.recording.file, nullptr);
  EXPECT_EQ(opened.test.memory.Contents("test.rec"), bytes);
  OpenedRecording copy(*opened.test.memory.Contents("/elsewhere/copy.rec"));
  EXPECT_EQ(EverythingIn(copy.recording), EverythingIn(opened.recording));
}

TEST(Upgrading, DataThatAreNotUnderstoodStay) {
  const Bytes cut = Continuous().FileSize(Continuous().EventTablePosition() + 4).Build();
  const Bytes uncounted = RecordingBuilder()
                              .Epoched()
                              .Channels(1)
                              .Points(2)
                              .Epochs({{.samples = {1, 2}}, {.samples = {3, 4}}})
                              .PutU16(362, 1)
                              .Build();
  const Bytes blockless = Continuous().Layout(3).PutU32(894, 0).Build();
  for (const Bytes& bytes : {cut, uncounted, blockless}) {
    OpenedRecording opened(bytes);
    EXPECT_TRUE(opened.isOpen);
    EXPECT_FALSE(opened.recording.SaveAndClose(0));
    EXPECT_NE(opened.recording.file, nullptr);
    EXPECT_EQ(opened.test.memory.Contents("test.rec"), bytes);
    EXPECT_FALSE(opened.test.memory.Exists("test.rec.0.new"));
  }
}

TEST(Upgrading, ReadOnlyFilesStay) {
  OpenedRecording opened(Continuous());
  opened.test.memory.SetStatus("test.rec", {.readOnly = true});
  EXPECT_FALSE(opened.recording.SaveAndClose(0));
}

}  // namespace
}  // namespace wavelock

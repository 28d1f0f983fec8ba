// A recording that was opened is saved in the current form, and delivers what it delivered before.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>

#include "tests/support/annotated_recordings.h"
#include "tests/support/every_kind.h"
#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

// Any integer, the same for a sample and a channel every time.
std::int32_t Mixed(std::uint64_t sample, int channel) {
  const std::uint64_t bits =
      (sample * 131 + static_cast<std::uint64_t>(channel) * 17 + 7) * 0x9E3779B97F4A7C15;
  return static_cast<std::int32_t>(bits >> 32);
}

RecordingBuilder Continuous() {
  return RecordingBuilder()
      .Channels(3)
      .Rate(250)
      .Calibration(33.0f)
      .BlockSamples(100)
      .Samples(500, Mixed)
      .Events({{.stimType = 1, .sample = 5}, {.stimType = 0, .keypad = 3, .sample = 100}});
}

RecordingBuilder Epochs() {
  std::vector<RecordingBuilder::Epoch> epochs;
  for (std::uint16_t i = 0; i < 4; ++i) {
    epochs.push_back({.trialType = i, .correct = 7, .reactionTime = 0.25f, .response = 9});
    for (std::uint64_t p = 0; p < 20; ++p) epochs.back().samples.push_back(Mixed(p, i));
  }
  return RecordingBuilder().Epoched().Channels(2).Points(10).Epochs(epochs);
}

float Odd(int i) {
  return 1.0f / static_cast<float>(3 + i) - 0.1f;
}

RecordingBuilder Spectra() {
  RecordingBuilder::Epoch epoch{.trialType = 5};
  for (int i = 0; i < 2 * 2 * 8; ++i) epoch.spectrum.push_back(Odd(i));
  return RecordingBuilder().Epoched().FrequencyDomain().Channels(2).Points(8).Epochs({epoch, epoch});
}

constexpr int kChannels = 3;
constexpr int kPoints = 16;
constexpr int kSweeps = 5;
constexpr std::size_t kSpectrumScale = 675;
constexpr std::size_t kHasVariance = 375;
constexpr std::size_t kAcceptedSweeps = 364;
constexpr std::size_t kSummaryB = 255;

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

RecordingBuilder Pairs(int revision) {
  RecordingBuilder builder;
  builder.Revision(revision).TimeFrequency().Channels(2).Points(4);
  const auto entry = static_cast<std::uint32_t>(builder.DataStart());
  ByteWriter data;
  data.U16(0).U16(1).U32(0);
  for (int i = 0; i < 8; ++i) data.F32(Odd(i));
  return builder.Data(data.U32(0).U32(entry).U32(entry).U32(1));
}

std::vector<NamedRecording> EveryForm() {
  std::vector<NamedRecording> forms;
  const auto add = [&forms](const std::string& name, std::initializer_list<int> numbers,
                            const RecordingBuilder& builder) {
    forms.push_back({name, builder});
    for (const int number : numbers) forms.back().name += " " + std::to_string(number);
  };
  for (const int revision : {0, 2, 3, 4, 6})
    add("continuous", {revision}, Continuous().Revision(revision));  // trigger words are the old form
  for (const int revision : {7, 8, 9, 11, 13, 14, 16}) {
    for (const int layout : {1, 2, 3})
      add("continuous", {revision, layout}, Continuous().Revision(revision).Layout(layout));
  }
  for (const int firstByte : {2, 3, 5})
    add("oldest", {firstByte}, Continuous().OldestLayout(firstByte).AcquisitionMode(3));
  const std::vector<RecordingBuilder::Event> far = {{.stimType = 1, .sample = 0x7FFFFFFF}};
  add("events that no byte offset holds", {}, Continuous().EventTableKind(3).Events(far));
  for (const int revision : {14, 16}) {
    for (const int layout : {1, 2, 255}) {
      add("wide", {revision, layout},
          Continuous().Revision(revision).Width(4).Layout(layout).Tail(PlainSetupSections(3)));
    }
  }
  for (const int revision : {0, 2, 3, 9, 16}) add("epochs", {revision}, Epochs().Revision(revision));
  for (const int revision : {2, 7, 16}) add("spectra", {revision}, Spectra().Revision(revision));
  for (const int revision : {3, 9, 10, 11, 12, 13, 16}) {
    for (const int scale : {0, 1, 2}) {
      for (const int domain : {0, 1}) {
        const auto scaleByte = static_cast<std::uint8_t>(scale);
        add("average", {revision, scale, domain},
            Average(revision).FrequencyDomain(domain).PutU8(kSpectrumScale, scaleByte));
      }
    }
  }
  add("statistics", {}, Average(16).AveragedWithStatistics());
  for (const int revision : {3, 9}) add("pairs", {revision}, Pairs(revision));
  return forms;
}

TEST(Upgrading, EveryFormDeliversWhatItDeliveredBefore) {
  for (const NamedRecording& form : EveryForm()) {
    SCOPED_TRACE(form.name);
    OpenedRecording old(form.builder);
    ASSERT_TRUE(old.isOpen);
    const Delivered delivered = EverythingIn(old.recording);
    EXPECT_GT(delivered.size(), 1u);
    const int kind = old.recording.GetFileClass(&old.recording.rawHeader);
    const std::uint64_t samples = old.recording.GetContinuousSampleCount();
    ASSERT_TRUE(old.recording.SaveAndClose(0));
    Bytes file = *old.test.memory.Contents("test.rec");
    for (int upgrade = 0; upgrade < 2; ++upgrade) {
      OpenedRecording opened(file);
      ASSERT_TRUE(opened.isOpen);
      EXPECT_EQ(EverythingIn(opened.recording), delivered);
      EXPECT_EQ(opened.Header().headerRevision, 16);
      if (kind == kContinuous) {
        EXPECT_EQ(opened.Header().sampleLayout, 1);
        EXPECT_EQ(opened.Header().sampleCountField, samples);
      }
      EXPECT_EQ(opened.recording.GetFileClass(&opened.recording.rawHeader), kind);
      EXPECT_EQ(opened.recording.sampleWidth, old.recording.sampleWidth);
      EXPECT_EQ(opened.recording.halveSpectrum, 0);
      ASSERT_TRUE(opened.recording.SaveAndClose(0));
      file = *opened.test.memory.Contents("test.rec");
    }
  }
}

// ---- what is not saved, and what is not touched

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
  const Bytes longAverage =
      RecordingBuilder().Averaged().Channels(1).Points(2).Data(Bytes(2 * (5 + 8))).Build();
  for (const Bytes& bytes : {cut, uncounted, blockless, longAverage}) {
    OpenedRecording opened(bytes);
    EXPECT_TRUE(opened.isOpen);
    EXPECT_FALSE(opened.recording.SaveAndClose(0));
    EXPECT_TRUE(opened.recording.file || opened.recording.keptData);
    EXPECT_EQ(opened.test.memory.Contents("test.rec"), bytes);
    EXPECT_FALSE(opened.test.memory.Exists("test.rec.0.new"));
  }
}

}  // namespace
}  // namespace wavelock

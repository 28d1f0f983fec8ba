// Recordings of many gigabytes, nearly all of them holes: every sample, event and section is found where it
// lies.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <set>
#include <utility>

#include "tests/support/annotated_recordings.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kGiB = std::uint64_t{1} << 30;
constexpr std::uint64_t kBlockSamples = 64;

std::int32_t ValueOf(std::uint64_t sample, int channel) {
  return static_cast<std::int32_t>((sample * 31 + static_cast<std::uint64_t>(channel)) % 30011) + 1;
}

struct BigFile {
  int layout = 1;
  int width = 2;
  int channels = 3;
  std::uint64_t dataEnd = 3 * kGiB;  // about: the data end with a whole block

  bool HasTable() const { return layout == 1 || layout == 3; }
  bool HasEvents() const { return layout != 2; }
  bool HasTail() const { return layout != 0; }  // trigger words are older

  // Whole blocks.
  std::uint64_t SamplesBefore(std::uint64_t position) const {
    const int words = channels + (layout == 0 ? 2 : layout == 2 ? 1 : 0);
    const auto head = static_cast<std::uint64_t>(900 + 75 * channels);
    const std::uint64_t samples = (position - head) / static_cast<std::uint64_t>(words * width);
    return samples - samples % kBlockSamples;
  }
  std::uint64_t Samples() const { return SamplesBefore(dataEnd); }

  // The places that are looked at: as many samples as make a block, from these on.
  std::set<std::uint64_t> Firsts() const {
    std::set<std::uint64_t> firsts = {0, Samples() - kBlockSamples};
    for (const std::uint64_t border : {2 * kGiB, 4 * kGiB, 16 * kGiB}) {
      if (border < dataEnd) firsts.insert(SamplesBefore(border) - (layout == 3 ? 0 : 8));
    }
    return firsts;
  }

  std::vector<std::int32_t> ValuesFrom(std::uint64_t first) const {
    std::vector<std::int32_t> values;
    for (std::uint64_t s = first; s < first + kBlockSamples; ++s) {
      for (int c = 0; c < channels; ++c) values.push_back(ValueOf(s, c));
    }
    return values;
  }

  // At the first sample of every place that a 32-bit index reaches.
  std::vector<RecordingBuilder::Event> Events() const {
    std::vector<RecordingBuilder::Event> events;
    for (const std::uint64_t first : Firsts()) {
      if (HasEvents() && first <= 0xFFFFFFFF)
        events.push_back({.stimType = static_cast<std::uint16_t>(events.size() + 1),
                          .sample = static_cast<std::uint32_t>(first)});
    }
    return events;
  }

  RecordingBuilder Builder() const {
    RecordingBuilder builder;
    builder.Channels(channels).Layout(layout).Width(width).BlockSamples(kBlockSamples).Events(Events());
    if (HasTail()) {
      std::vector<RecordingBuilder::Section> tail = PlainSetupSections(channels);
      tail.push_back({tag::kLabel, 0, LabelBytes("behind it all", 7)});
      builder.Tail(std::move(tail));
    } else {
      builder.Revision(6);
    }
    for (const std::uint64_t first : Firsts()) builder.SamplesAt(first, ValuesFrom(first));
    return builder;
  }
};

void ExpectSamples(CRecordingFile& recording, const BigFile& file, std::uint64_t first) {
  const std::vector<std::int32_t> expected = file.ValuesFrom(first);
  const auto width = static_cast<std::size_t>(file.width);
  std::vector<std::byte> raw(expected.size() * width);
  std::vector<float> microvolts(expected.size());
  const std::uint64_t end = first + kBlockSamples;
  ASSERT_TRUE(
      recording.ReadContinuousRaw(first, end, raw.data(), static_cast<std::int32_t>(raw.size()), 0, 0));
  ASSERT_TRUE(recording.ReadContinuousFloat(first, end, microvolts.data(),
                                            static_cast<std::uint32_t>(4 * microvolts.size()), 0, 0));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    std::int32_t value = 0;
    std::memcpy(&value, raw.data() + i * width, width);
    ASSERT_EQ(value, expected[i]) << first << ": " << i;
    ASSERT_EQ(microvolts[i], static_cast<float>(expected[i])) << first << ": " << i;
  }
}

void CheckBigFile(const BigFile& file) {
  SCOPED_TRACE(testing::Message() << "layout " << file.layout << ", width " << file.width << ", "
                                  << file.channels << " channels, data up to " << file.dataEnd);
  const TemporaryFolder folder;
  const RecordingBuilder builder = file.Builder();
  ASSERT_TRUE(builder.WriteTo(folder.Path("big.rec")));
  CRecordingFile recording(1);
  ASSERT_TRUE(recording.OpenFile(folder.Path("big.rec")));
  EXPECT_EQ(recording.fileSize, std::filesystem::file_size(folder.Path("big.rec")));
  EXPECT_EQ(recording.largeFile, 1);
  if (file.HasTail()) {
    EXPECT_EQ(recording.TailPosition(), builder.TailPosition());
  }
  EXPECT_EQ(recording.labelList.Entries().size(), file.HasTail() ? 1u : 0u);
  EXPECT_EQ(recording.sampleWidth, file.width);
  const std::uint64_t count = recording.GetContinuousSampleCount();
  if (file.HasTable()) {
    EXPECT_EQ(count, file.Samples());
  } else {
    EXPECT_GE(count, file.Samples()) << "the tail counts as samples";
  }
  for (const std::uint64_t first : file.Firsts()) ExpectSamples(recording, file, first);
  const auto events = file.Events();
  ASSERT_EQ(recording.GetEventTable().Elements().size(), events.size());
  for (std::size_t i = 0; i < events.size(); ++i) {
    EXPECT_EQ(recording.GetEventTable().Elements()[i].stimType, events[i].stimType);
    EXPECT_EQ(recording.GetEventTable().Elements()[i].point, events[i].sample);
  }
}

// Trigger words are looked for in all of a file when it is opened, so those with them stay small.
TEST(BigFiles, AreReadAtBothEndsAndAcrossEveryBorder) {
  for (const std::uint64_t size : {3 * kGiB, 5 * kGiB, 17 * kGiB}) {
    for (const int layout : {1, 2, 3}) {
      for (const int width : {2, 4}) {
        if (layout == 3 && width == 4) continue;  // such samples cannot be read
        CheckBigFile({.layout = layout, .width = width, .dataEnd = size});
      }
    }
  }
  CheckBigFile({.layout = 0, .width = 2, .channels = 30, .dataEnd = 2 * kGiB + kGiB / 16});
  CheckBigFile({.channels = 1, .dataEnd = 17 * kGiB});  // more samples than 32 bits count
}

// The header has a high word for the tail alone.
TEST(BigFiles, EventTableMayLieBelowABorderThatItsTailLiesAbove) {
  for (const std::uint64_t border : {4 * kGiB, 16 * kGiB}) {
    for (const int layout : {1, 3}) {
      for (const std::uint64_t ahead : {20u, 700'000'000u}) {
        SCOPED_TRACE(testing::Message() << "border " << border << ", table " << ahead << " ahead");
        const BigFile file{.layout = layout, .dataEnd = border - kGiB};
        RecordingBuilder builder = file.Builder();
        builder.EventTableAt(border - ahead).TailAt(border + 400);
        const TemporaryFolder folder;
        ASSERT_TRUE(builder.WriteTo(folder.Path("b.rec")));
        CRecordingFile recording(1);
        ASSERT_TRUE(recording.OpenFile(folder.Path("b.rec")));
        EXPECT_EQ(recording.GetEventCount(), static_cast<int>(file.Events().size()));
        EXPECT_EQ(recording.labelList.Entries().size(), 1u);
        EXPECT_GE(recording.GetContinuousSampleCount(), file.Samples());
      }
    }
  }
}

}  // namespace
}  // namespace wavelock

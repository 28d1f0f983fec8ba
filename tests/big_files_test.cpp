// Recordings of many gigabytes, nearly all of them holes: every sample, event and section is found where it
// lies.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <ostream>
#include <set>

#include "tests/support/annotated_recordings.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kGiB = std::uint64_t{1} << 30;
constexpr std::uint64_t kBlockSamples = 64;

struct BigFile {
  int layout = 1;
  int width = 2;
  int channels = 3;
  std::uint64_t dataEnd = 3 * kGiB;  // about: the data end with a whole record or block
};

std::ostream& operator<<(std::ostream& out, const BigFile& file) {
  return out << "layout " << file.layout << ", width " << file.width << ", " << file.channels
             << " channels, data up to " << file.dataEnd;
}

std::int32_t ValueOf(std::uint64_t sample, int channel) {
  return static_cast<std::int32_t>((sample * 31 + static_cast<std::uint64_t>(channel)) % 30011) + 1;
}

// What is at the places that are looked at. A place is a sample with those around it, as many as make a
// block.
class Plan {
 public:
  explicit Plan(const BigFile& file) : file_(file) {
    const std::uint64_t samples = SamplesBefore(file.dataEnd);
    first_ = {0, samples - kBlockSamples};
    for (const std::uint64_t border : {2 * kGiB, 4 * kGiB, 16 * kGiB}) {
      if (border < file.dataEnd) first_.insert(SamplesBefore(border) - (file.layout == 3 ? 0 : 8));
    }
    samples_ = samples;
  }

  std::uint64_t Samples() const { return samples_; }
  const std::set<std::uint64_t>& Firsts() const { return first_; }
  bool HasTable() const { return file_.layout == 1 || file_.layout == 3; }
  bool HasEvents() const { return file_.layout != 2; }
  bool HasTail() const { return file_.layout != 0; }  // trigger words are older

  // At the first sample of every place that a 32-bit index reaches.
  std::vector<RecordingBuilder::Event> Events() const {
    std::vector<RecordingBuilder::Event> events;
    for (const std::uint64_t first : first_) {
      if (first <= 0xFFFFFFFF)
        events.push_back({.stimType = static_cast<std::uint16_t>(events.size() + 1),
                          .sample = static_cast<std::uint32_t>(first)});
    }
    return events;
  }

  std::vector<std::int32_t> ValuesFrom(std::uint64_t first) const {
    std::vector<std::int32_t> values;
    for (std::uint64_t s = first; s < first + kBlockSamples; ++s) {
      for (int c = 0; c < file_.channels; ++c) values.push_back(ValueOf(s, c));
    }
    return values;
  }

  RecordingBuilder Builder() const {
    RecordingBuilder builder;
    builder.Channels(file_.channels).Layout(file_.layout).Width(file_.width);
    if (HasTail()) {
      builder.Tail(Tail());
    } else {
      builder.Revision(6);
    }
    builder.BlockSamples(kBlockSamples)
        .Events(HasEvents() ? Events() : std::vector<RecordingBuilder::Event>());
    for (const std::uint64_t first : first_) builder.SamplesAt(first, ValuesFrom(first));
    return builder;
  }

 private:
  std::vector<RecordingBuilder::Section> Tail() const {
    std::vector<RecordingBuilder::Section> tail = PlainSetupSections(file_.channels);
    tail.push_back({tag::kLabel, 0, LabelBytes("behind it all", 7)});
    return tail;
  }

  // Whole blocks in layout 3.
  std::uint64_t SamplesBefore(std::uint64_t position) const {
    const int words = file_.channels + (file_.layout == 0 ? 2 : file_.layout == 2 ? 1 : 0);
    const auto sampleBytes = static_cast<std::uint64_t>(words * file_.width);
    const std::uint64_t samples =
        (position - 900 - 75 * static_cast<std::uint64_t>(file_.channels)) / sampleBytes;
    return samples - samples % kBlockSamples;
  }

  BigFile file_;
  std::set<std::uint64_t> first_;
  std::uint64_t samples_ = 0;
};

void ExpectSamples(CRecordingFile& recording, const Plan& plan, std::uint64_t start, std::uint64_t end,
                   std::uint64_t first) {
  const std::vector<std::int32_t> all = plan.ValuesFrom(first);
  const auto channels = recording.rawHeader.header.channelCount;
  const auto from = all.begin() + static_cast<std::ptrdiff_t>((start - first) * channels);
  const std::vector<std::int32_t> expected(from,
                                           from + static_cast<std::ptrdiff_t>((end - start) * channels));
  const auto width = static_cast<std::size_t>(recording.sampleWidth);
  std::vector<std::byte> raw(expected.size() * width);
  std::vector<float> microvolts(expected.size());
  ASSERT_TRUE(
      recording.ReadContinuousRaw(start, end, raw.data(), static_cast<std::int32_t>(raw.size()), 0, 0));
  ASSERT_TRUE(recording.ReadContinuousFloat(start, end, microvolts.data(),
                                            static_cast<std::uint32_t>(4 * microvolts.size()), 0, 0));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    std::int32_t value = 0;
    std::memcpy(&value, raw.data() + i * width, width);
    ASSERT_EQ(value, expected[i]) << start << ": " << i;
    ASSERT_EQ(microvolts[i], static_cast<float>(expected[i])) << start << ": " << i;
  }
}

void CheckBigFile(const BigFile& file) {
  SCOPED_TRACE(testing::Message() << file);
  const TemporaryFolder folder;
  const std::string path = folder.Path("big.rec");
  const Plan plan(file);
  const RecordingBuilder builder = plan.Builder();
  ASSERT_TRUE(builder.WriteTo(path));
  CRecordingFile recording(1);
  ASSERT_TRUE(recording.OpenFile(path));
  EXPECT_EQ(recording.fileSize, std::filesystem::file_size(path));
  EXPECT_EQ(recording.largeFile, 1);
  if (plan.HasTail()) {
    EXPECT_EQ(recording.TailPosition(), builder.TailPosition());
  }
  EXPECT_EQ(recording.labelList.Entries().size(), plan.HasTail() ? 1u : 0u);
  EXPECT_EQ(recording.sampleWidth, file.width);
  if (plan.HasTable()) {
    EXPECT_EQ(recording.GetContinuousSampleCount(), plan.Samples());
  } else {
    EXPECT_GE(recording.GetContinuousSampleCount(), plan.Samples()) << "the tail counts as samples";
  }
  for (const std::uint64_t first : plan.Firsts()) {
    ExpectSamples(recording, plan, first, first + kBlockSamples, first);
    ExpectSamples(recording, plan, first + 7, first + 9, first);  // across a border of bytes
  }
  const std::uint64_t count = recording.GetContinuousSampleCount();
  std::vector<std::byte> one(static_cast<std::size_t>(file.channels * file.width));
  const auto oneSample = static_cast<std::int32_t>(one.size());
  EXPECT_TRUE(recording.ReadContinuousRaw(count - 1, count, one.data(), oneSample, 0, 0));
  EXPECT_FALSE(recording.ReadContinuousRaw(count, count + 1, one.data(), oneSample, 0, 0));

  const auto events = plan.Events();
  ASSERT_EQ(recording.GetEventCount(), plan.HasEvents() ? static_cast<int>(events.size()) : 0);
  for (int i = 0; i < recording.GetEventCount(); ++i) {
    const EventRecord& read = recording.GetEventTable().Elements()[static_cast<std::size_t>(i)];
    EXPECT_EQ(read.stimType, events[static_cast<std::size_t>(i)].stimType);
    EXPECT_EQ(read.point, events[static_cast<std::size_t>(i)].sample);
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
        const Plan plan(file);
        RecordingBuilder builder = plan.Builder();
        builder.EventTableAt(border - ahead).TailAt(border + 400);
        const TemporaryFolder folder;
        ASSERT_TRUE(builder.WriteTo(folder.Path("b.rec")));
        CRecordingFile recording(1);
        ASSERT_TRUE(recording.OpenFile(folder.Path("b.rec")));
        EXPECT_EQ(recording.GetEventCount(), static_cast<int>(plan.Events().size()));
        EXPECT_EQ(recording.labelList.Entries().size(), 1u);
        EXPECT_GE(recording.GetContinuousSampleCount(), plan.Samples());
      }
    }
  }
}

}  // namespace
}  // namespace wavelock

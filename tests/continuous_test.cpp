// Samples come out sample-major and exact from every layout, width and range, and nothing comes out of a
// wrong request; events that point nowhere or stand there twice, and tables that cannot be read, cost no
// samples.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;
using Event = RecordingBuilder::Event;

constexpr int kLayouts[][3] = {  // layout, channels, samples of a block
    {0, 5, 40}, {1, 1, 40},   {1, 7, 9000},  {2, 6, 9000},  {3, 1, 1}, {3, 3, 50},
    {3, 9, 33}, {3, 64, 700}, {3, 7, 20000}, {3, 17, 40000}};  // the last ones are larger than those that are
                                                               // read whole

TEST(ContinuousSamples, EveryRangeGivesTheSamplesAsTheyWereStored) {
  std::mt19937_64 random(2);
  for (const auto& [layout, channels, blockSamples] : kLayouts) {
    SCOPED_TRACE(blockSamples);
    const auto samples = static_cast<std::uint64_t>(3 * blockSamples);
    std::vector<std::int32_t> values(samples * static_cast<std::size_t>(channels));
    for (std::int32_t& value : values) value = static_cast<std::int16_t>(random());
    RecordingBuilder builder;
    builder.Revision(layout == 0 ? 6 : 16).Layout(layout).BlockSamples(blockSamples).LeadingWord(-5);
    builder.TriggerWords(2, 7, 1).Channels(channels).Samples(values);
    if (layout == 3) builder.FileSize(builder.EventTablePosition());  // ends with its last sample
    OpenedRecording opened(builder);
    ASSERT_EQ(opened.recording.GetContinuousSampleCount(), samples);
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges = {
        {0, samples}, {0, 1}, {samples - 1, samples}, {samples / 3 - 1, samples / 3 + 1}};
    for (int i = 0; i < 20; ++i) {
      const std::uint64_t start = random() % samples;
      ranges.emplace_back(start, start + 1 + random() % (samples - start));
    }
    for (const auto& [start, end] : ranges) {
      const auto from = values.begin() + static_cast<std::ptrdiff_t>(start) * channels;
      const auto to = values.begin() + static_cast<std::ptrdiff_t>(end) * channels;
      ASSERT_EQ(opened.Raw<std::int16_t>(start, end), std::vector<std::int16_t>(from, to)) << start;
      ASSERT_EQ(opened.Microvolts(start, end), std::vector<float>(from, to)) << start;
    }
  }
}

// So many that they go around the cache, from a sample on that lets them do so only in some blocks.
TEST(ContinuousSamples, AsManyAsNoCacheHoldsComeFromBlocksLikeFewDo) {
  constexpr int kChannels = 17;
  constexpr std::uint64_t kSamples = 600'000;
  const auto valueAt = [](std::uint64_t sample, int channel) {
    return static_cast<std::int16_t>(sample * 31 + static_cast<std::uint64_t>(channel) * 7919);
  };
  OpenedRecording opened(
      RecordingBuilder().Layout(3).BlockSamples(999).Channels(kChannels).Samples(kSamples, valueAt));
  const std::vector<std::int16_t> raw = opened.Raw<std::int16_t>(3, kSamples);
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    wrong += raw[i] != valueAt(3 + i / kChannels, static_cast<int>(i % kChannels)) ? 1 : 0;
  }
  EXPECT_EQ(raw.size(), (kSamples - 3) * kChannels);
  EXPECT_EQ(wrong, 0U);
}

TEST(ContinuousSamples, WideSamplesComeAsTheyAre) {
  OpenedRecording wide(RecordingBuilder().Channels(2).Width(4).Samples({1 << 30, -7, 3, 4}));
  wide.recording.sampleWidth = 4;
  EXPECT_THAT(wide.Raw<std::int32_t>(0, 2), ElementsAre(1 << 30, -7, 3, 4));
  EXPECT_THAT(wide.Microvolts(0, 1), ElementsAre(static_cast<float>(1 << 30), -7.0f));
  wide.Header().sampleLayout = 3;
  wide.Header().blockBytes = 8;
  EXPECT_TRUE(wide.Raw<std::int32_t>(0, 1).empty()) << "blocks have 2-byte samples";
  wide.recording.sampleWidth = 2;
  wide.Header().blockBytes = 1;
  EXPECT_TRUE(wide.Raw<std::int16_t>(0, 1).empty()) << "and no less";
}

TEST(ContinuousSamples, WrongRequestsFail) {
  OpenedRecording opened(RecordingBuilder().Channels(2).Samples({1, 2, 3, 4, 5, 6}));
  std::int16_t raw[8];
  float floats[8];
  const auto readRaw = [&](std::uint64_t start, std::uint64_t end, std::int32_t bytes, void* out) {
    return opened.recording.ReadContinuousRaw(start, end, out, bytes, 0, 0);
  };
  const auto readFloat = [&](std::uint64_t start, std::uint64_t end, std::uint32_t bytes, float* out) {
    return opened.recording.ReadContinuousFloat(start, end, out, bytes, 0, 0);
  };
  EXPECT_TRUE(readRaw(2, 3, 4, raw));
  EXPECT_TRUE(readFloat(2, 3, 11, floats)) << "bytes of no whole value are not looked at";
  for (const std::int32_t bytes : {0, 2, 3, 5, 8, -4}) EXPECT_FALSE(readRaw(2, 3, bytes, raw)) << bytes;
  for (const std::uint32_t bytes : {0u, 4u, 7u, 12u, 0xFFFFFFF8u})
    EXPECT_FALSE(readFloat(2, 3, bytes, floats)) << bytes;
  const auto minusOne = std::numeric_limits<std::uint64_t>::max();
  for (const auto& [start, end] :
       {std::pair<std::uint64_t, std::uint64_t>(1, 1), {2, 1}, {3, 4}, {minusOne, 1}})
    EXPECT_FALSE(readRaw(start, end, 4, raw) || readFloat(start, end, 8, floats)) << start;
  EXPECT_FALSE(readRaw(1, 1, 0, raw) || readFloat(0, minusOne, 8, floats));
  EXPECT_FALSE(readRaw(0, 1, 4, nullptr) || readFloat(0, 1, 8, nullptr));
}

TEST(ContinuousSamples, ATableThatClaimsToLieBeforeTheSamplesGivesNoSamples) {
  OpenedRecording opened(RecordingBuilder().Channels(2).Samples({1, 2, 3, 4}).PutU32(886, 0));
  EXPECT_GT(opened.recording.GetContinuousSampleCount(), std::uint64_t{1} << 60);
  EXPECT_EQ(opened.Raw<std::int16_t>(0, 2).size(), 4u) << "the samples themselves are there";
  EXPECT_TRUE(opened.Raw<std::int16_t>(100, 102).empty());
}

// ---- events

constexpr std::uint32_t kDataStart = 900 + 2 * 75;

RecordingBuilder WithEvents(std::vector<Event> events) {
  return RecordingBuilder().Channels(2).Samples(std::vector<std::int32_t>(20)).Events(std::move(events));
}

std::vector<std::uint32_t> Points(const RecordingBuilder& builder) {
  OpenedRecording opened(builder);
  std::vector<std::uint32_t> points;
  for (const EventRecord& event : opened.recording.GetEventTable().Elements()) points.push_back(event.point);
  return points;
}

TEST(Events, PointsThatNoSampleHasAreKeptAsTheyCompute) {
  constexpr std::uint32_t kCases[][2] = {{kDataStart + 13, 3},
                                         {kDataStart - 1, 0},
                                         {kDataStart - 4, 0xFFFFFFFF},
                                         {0x80000000, (0x80000000 - kDataStart) / 4},
                                         {0xFFFFFFFF, 0 - (kDataStart + 1) / 4}};
  for (const auto& [stored, point] : kCases) {
    for (const int kind : {1, 2})
      EXPECT_THAT(Points(WithEvents({{.stimType = 1, .storedPoint = stored}}).EventTableKind(kind)),
                  ElementsAre(point));
  }
}

TEST(Events, OnlyIdenticalRecordsAreDropped) {
  const Event event{.stimType = 1, .sample = 4};
  Event other = event;
  other.extra[10] = 1;
  EXPECT_THAT(Points(WithEvents({event, other, event, {.stimType = 2, .sample = 1}, other})),
              ElementsAre(4, 4, 1));
  // In the order of their points, and more at one point than are compared by pairs.
  EXPECT_THAT(
      Points(WithEvents({event, other, event, {.stimType = 1, .sample = 5}, {.stimType = 1, .sample = 5}})),
      ElementsAre(4, 4, 5));
  std::vector<Event> many(40, event);
  for (std::size_t i = 0; i < many.size(); ++i) many[i].stimType = static_cast<std::uint16_t>(i % 30);
  EXPECT_THAT(Points(WithEvents(many)), ::testing::SizeIs(30));
}

TEST(Events, ManyTriggerWordsKeepTheirSamples) {
  EXPECT_THAT(Points(RecordingBuilder()
                         .Revision(6)
                         .Samples(std::vector<std::int32_t>(5000))
                         .TriggerWords(0, 0, 0x10)
                         .TriggerWords(4999, 0x8001, 0xFFF3)),
              ElementsAre(0, 4999, 4999));
}

TEST(Events, TablesThatCannotBeReadCostNoSamples) {
  const RecordingBuilder one = WithEvents({{.stimType = 1, .sample = 1}});
  const struct {
    RecordingBuilder builder;
    std::vector<int> messages;
  } kCases[] = {{WithEvents({}), {}},
                {RecordingBuilder(one).EventTableKind(4), {1767}},
                {RecordingBuilder(one).EventTableByteSize(-1), {1767}},
                {RecordingBuilder(one).EventTableByteSize(0x7FFFFFFF), {1767}},
                {RecordingBuilder(one).EventTableByteSize(18), {}},
                {RecordingBuilder(one).FileSize(kDataStart + 10 * 4 + 5), {1775, 1767}},
                {RecordingBuilder(one).Layout(2), {1774, 1767}}};
  for (const auto& [builder, messages] : kCases) {
    OpenedRecording opened(builder);
    EXPECT_EQ(NumbersOf(opened.test.user.messages), messages);
    EXPECT_EQ(opened.recording.GetEventCount(), 0);
    EXPECT_EQ(opened.Raw<std::int16_t>(0, 2).size(), 4u);
  }
}

}  // namespace
}  // namespace wavelock

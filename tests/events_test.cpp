// Events come out the same from every form in which they are stored.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;

using Event = RecordingBuilder::Event;

RecordingBuilder WithEvents(std::vector<Event> events) {
  return RecordingBuilder()
      .Channels(2)
      .Samples(10, [](std::uint64_t, int) { return 1; })
      .Events(std::move(events));
}

std::vector<std::uint32_t> Points(OpenedRecording& recording) {
  std::vector<std::uint32_t> points;
  for (const EventRecord& event : recording.recording.GetEventTable().Elements())
    points.push_back(event.point);
  return points;
}

TEST(Events, EveryKindOfTableGivesSamples) {
  const std::vector<Event> events = {
      {.stimType = 300, .keyboard = 2, .keypad = 5, .segmentClass = 0xF, .sample = 3},
      {.stimType = 1, .sample = 9},
      {.stimType = 2, .sample = 0}};
  for (const int kind : {1, 2, 3}) {
    SCOPED_TRACE(kind);
    OpenedRecording recording(WithEvents(events).EventTableKind(kind));
    ASSERT_EQ(recording.recording.GetEventCount(), 3);
    EXPECT_THAT(Points(recording), ElementsAre(3, 9, 0));
    const EventRecord& first = recording.recording.GetEventTable().Elements()[0];
    EXPECT_EQ(first.stimType, 300);
    EXPECT_EQ(first.keyboard, 2);
    EXPECT_EQ(first.Keypad(), 5);
    EXPECT_EQ(first.SegmentClass(), 0xF);
  }
}

TEST(Events, PointsThatNoSampleHasAreKeptAsTheyCompute) {
  const auto pointOf = [](std::uint32_t stored) {
    OpenedRecording recording(WithEvents({{.stimType = 1, .storedPoint = stored}}).EventTableKind(2));
    return Points(recording).at(0);
  };
  const std::uint32_t dataStart = 900 + 2 * 75;
  EXPECT_EQ(pointOf(dataStart + 13), 3u) << "truncates";
  EXPECT_EQ(pointOf(dataStart - 1), 0u);
  EXPECT_EQ(pointOf(dataStart - 4), 0xFFFFFFFFu);
  EXPECT_EQ(pointOf(0x80000000u), (0x80000000u - dataStart) / 4) << "the difference wraps";
}

TEST(Events, OnlyIdenticalRecordsAreDropped) {
  const Event event{.stimType = 1, .sample = 4};
  Event other = event;
  other.extra[10] = 1;
  OpenedRecording recording(WithEvents({event, other, event, {.stimType = 2, .sample = 1}, other}));
  EXPECT_THAT(Points(recording), ElementsAre(4, 4, 1));
}

TEST(Events, SsSegmentsAreTurnedIntoDcWhenTheProfileAsksForIt) {
  const std::vector<Event> events = {{.keypad = 5, .segmentClass = 0xF, .sample = 1},
                                     {.segmentClass = 0xE, .sample = 2},
                                     {.keypad = 5, .segmentClass = 0xD, .sample = 3}};
  TestHost test;
  test.profile.SetInt(profile::kState, profile::kConvertSegments, 1);
  test.memory.Put("a.rec", WithEvents(events).Build());
  CRecordingFile recording(1, test.host);
  ASSERT_TRUE(recording.OpenFile("a.rec"));
  const auto records = recording.GetEventTable().Elements();
  EXPECT_EQ(records[0].keypadAndClass, 0xB5);
  EXPECT_EQ(records[1].keypadAndClass, 0xB0);
  EXPECT_EQ(records[2].keypadAndClass, 0xD5);
  ASSERT_EQ(test.user.messages.size(), 1u) << "also of a silent recording";
  EXPECT_EQ(test.user.messages[0].text, "Converted 2 SS segments to DC");
}

TEST(Events, TriggerWordsGiveAStimulusAndAKey) {
  OpenedRecording recording(RecordingBuilder()
                                .Revision(6)
                                .Channels(2)
                                .Samples(5000, [](std::uint64_t, int) { return 1; })
                                .TriggerWords(0, 0, 0x10)
                                .TriggerWords(4999, 0x8001, 0xFFF3)
                                .Append(std::vector<std::byte>(3)));
  const auto records = recording.recording.GetEventTable().Elements();
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0].Keypad(), 0) << "low bits of the second word alone count";
  EXPECT_EQ(records[1].stimType, 0x8001);
  EXPECT_EQ(records[1].point, 4999u);
  EXPECT_EQ(records[2].keypadAndClass, 3);
  EXPECT_EQ(records[2].point, 4999u);
}

TEST(Events, TablesThatCannotBeReadCostNoSamples) {
  const auto opened = [](const RecordingBuilder& builder, std::vector<int> messages) {
    OpenedRecording recording(builder);
    EXPECT_TRUE(recording.isOpen);
    EXPECT_EQ(NumbersOf(recording.test.user.messages), messages);
    EXPECT_EQ(recording.recording.GetEventCount(), 0);
    EXPECT_EQ(recording.Raw<std::int16_t>(0, 2).size(), 4u);
  };
  const std::vector<Event> one = {{.stimType = 1, .sample = 1}};
  opened(WithEvents({}), {});
  opened(WithEvents(one).EventTableKind(4), {1767});
  opened(WithEvents(one).EventTableByteSize(-1), {1767});
  opened(WithEvents(one).EventTableByteSize(0x7FFFFFFF), {1767});
  opened(WithEvents(one).EventTableByteSize(18), {});
  opened(RecordingBuilder(WithEvents(one)).FileSize(900 + 2 * 75 + 10 * 4 + 5), {1775, 1767});
  opened(RecordingBuilder().Layout(2).Channels(2).Samples({1, 2, 3, 4}), {1774, 1767});
}

}  // namespace
}  // namespace wavelock

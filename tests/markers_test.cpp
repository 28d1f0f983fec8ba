// Markers come back from both stored forms and go out in the newer one; stacked ones are spread when asked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/support/opened_recording.h"
#include "tests/support/stored_annotations.h"
#include "wavelock/annotations/marker_list.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::byte>;

Bytes CurrentRecord(std::string_view name, std::string_view text = "", int channel = 2, int locked = 1) {
  return MarkerBytes({.name = name, .text = text, .channel = channel, .locked = locked});
}

Bytes TimedRecord(std::string_view name, double timeMs) {
  ByteWriter record;
  record.U32(0x8040FF).Bytes(Padded(ByteWriter().Text(name), 36));
  record.I32(13).I32(-1).F64(timeMs).F64(2.5).I32(2).I32(4).I32(1);
  record.Bytes(Padded(ByteWriter().Text("twenty characters!!!"), 20));
  return record.I32(14).I32(-1);
}

std::vector<StoredRecord> RecordsOf(const std::vector<Bytes>& payloads) {
  std::vector<StoredRecord> records;
  for (const Bytes& payload : payloads) records.push_back({tag::kMarker, 0, payload});
  return records;
}

// With a list to read it into.
struct Container : ContainerInMemory {
  explicit Container(const std::vector<Bytes>& payloads) : ContainerInMemory(RecordsOf(payloads)) {}

  bool Load(std::int32_t channelCount = 99) { return list.Load(tff, channelCount); }

  std::vector<std::int32_t> Channels() const {
    std::vector<std::int32_t> channels;
    for (std::int32_t i = 0; i < list.GetCount(); ++i) channels.push_back(list.GetAt(i)->channel);
    return channels;
  }

  CMarkerList list{test.host};
};

TEST(Markers, BothStoredFormsAreRead) {
  Container container({CurrentRecord("name", "text"), TimedRecord("old", 12.5)});
  ASSERT_TRUE(container.Load());
  ASSERT_EQ(container.list.GetCount(), 2);
  EXPECT_EQ(container.list.GetAt(-1), nullptr);
  EXPECT_EQ(container.list.GetAt(2), nullptr);

  const CMarker& current = *container.list.GetAt(0);
  EXPECT_EQ(current.name, "name");
  EXPECT_EQ(current.text, "text");
  EXPECT_EQ(current.colour, 0x8040FFu);
  EXPECT_THAT(
      (std::array{current.attributeB, current.attributeC, current.attributeD, current.sampleIndex,
                  current.channel, current.epoch, current.locked, current.attributeA, current.labelMode}),
      ElementsAre(11, 12, 13, 77, 2, 4, 1, 14, 3));
  EXPECT_EQ(current.secondValue, 2.5);
  EXPECT_EQ(current.timeMs, 0);

  const CMarker& timed = *container.list.GetAt(1);
  EXPECT_EQ(timed.name, "old");
  EXPECT_EQ(timed.text, "twenty characters!!!");
  EXPECT_EQ(timed.timeMs, 12.5);
  EXPECT_THAT((std::array{timed.attributeB, timed.attributeC, timed.attributeD, timed.sampleIndex,
                          timed.channel, timed.epoch, timed.locked, timed.attributeA, timed.labelMode}),
              ElementsAre(0, 0, 13, -1, 2, 4, 1, 14, 0));
}

TEST(Markers, RecordOfAnotherLengthLeavesNone) {
  Bytes longer = CurrentRecord("a");
  longer.resize(151);
  Container container({CurrentRecord("a"), longer});
  container.list.Add(std::make_unique<CMarker>());
  EXPECT_FALSE(container.Load());
  EXPECT_EQ(container.list.GetCount(), 0);
  Container none({});
  EXPECT_TRUE(none.Load());
}

TEST(Markers, SavedRecordsAreTheOnesRead) {
  Container source({CurrentRecord(std::string(50, 'n'), std::string(50, 't'))});
  ASSERT_TRUE(source.Load());
  auto transient = std::make_unique<CMarker>();
  transient->transient = 1;
  source.list.Add(std::move(transient));
  EXPECT_EQ(source.list.GetAt(0)->name.size(), 50u);

  Container saved({});
  ASSERT_TRUE(source.list.Save(saved.tff));
  const Bytes expected = CurrentRecord(std::string(49, 'n'), std::string(49, 't'));
  const Bytes contents = *saved.test.memory.Contents("/c");
  ASSERT_EQ(contents.size(), 64 + 16 + expected.size());
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), contents.begin() + 64 + 16));
  EXPECT_EQ(saved.tff.Entries().front().record.version, 0x0106);  // the system's
}

TEST(Markers, CopiesAreTheirOwn) {
  Container container({CurrentRecord("a"), CurrentRecord("b")});
  ASSERT_TRUE(container.Load());
  CMarkerList copy(container.test.host);
  copy.Add(std::make_unique<CMarker>());
  ASSERT_TRUE(copy.Assign(container.list));
  container.list.GetAt(0)->SetName("changed");
  container.list.RemoveAll();
  ASSERT_EQ(copy.GetCount(), 2);
  EXPECT_EQ(copy.GetAt(0)->GetName(), "a");
  EXPECT_EQ(copy.GetAt(1)->sampleIndex, 77);
}

TEST(Markers, LabelFollowsItsMode) {
  CMarker marker;
  marker.SetName("name");
  marker.firstValue = 1.25;
  marker.secondValue = -1e300;
  const auto label = [&marker](std::int32_t mode) {
    marker.labelMode = mode;
    EXPECT_EQ(marker.GetLabel(true), "name");
    return marker.GetLabel(false);
  };
  EXPECT_EQ(label(0), "name");
  EXPECT_EQ(label(1), "1.2");
  EXPECT_EQ(label(2).size(), std::string("-.0").size() + 301);
  EXPECT_EQ(label(3).substr(0, 6), "1.2,-1");
  EXPECT_THAT(label(7), IsEmpty());
}

// ---- redistribution

TEST(StackedMarkers, AreSpreadOverTheChannelsAfterOneQuestion) {
  // Two stacks of three on three channels, one of which meets a marker that is not locked.
  const std::vector<Bytes> records = {CurrentRecord("p", "", 2), CurrentRecord("q", "", 1, 0),
                                      CurrentRecord("p", "", 2), CurrentRecord("p", "", 2, 0),
                                      CurrentRecord("q", "", 1), CurrentRecord("p", "", 2),
                                      CurrentRecord("q", "", 1)};
  Container container(records);
  container.test.user.ExpectQuestion(0, true);
  ASSERT_TRUE(container.Load(3));
  EXPECT_THAT(container.Channels(), ElementsAre(0, 0, 1, 2, 1, 2, 2));
  EXPECT_EQ(container.test.user.questions.front().text,
            "Multiple instatnces of a locked marker were detected on a single channel\n"
            "Do you want to redistribute these across all channels");

  Container refused(records);
  refused.test.user.ExpectQuestion(0, false);
  ASSERT_TRUE(refused.Load(3));
  EXPECT_THAT(refused.Channels(), ElementsAre(2, 1, 2, 2, 1, 2, 1));
}

// The rule as it is told: every marker looks at all behind it. Whether there was a stack.
bool SpreadOneByOne(std::vector<CMarker>& markers, int channelCount) {
  bool isSpread = false;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < markers.size(); ++i) {
    if (std::find(names.begin(), names.end(), markers[i].name) != names.end()) continue;
    names.push_back(markers[i].name);
    std::vector<CMarker*> like;
    for (std::size_t j = i + 1; j < markers.size(); ++j) {
      const CMarker& later = markers[j];
      if (later.name == markers[i].name && later.channel == markers[i].channel && later.locked != 0)
        like.push_back(&markers[j]);
    }
    if (static_cast<int>(like.size()) != channelCount - 1) continue;
    int channel = 1;
    for (CMarker* marker : like) marker->channel = channel++;
    markers[i].channel = 0;
    isSpread = true;
  }
  return isSpread;
}

TEST(StackedMarkers, AreFoundAsByLookingAtEveryPair) {
  std::mt19937 random(7);
  const auto upTo = [&random](unsigned most) { return static_cast<int>(random() % (most + 1)); };
  for (int round = 0; round < 300; ++round) {
    const int channelCount = upTo(5) - 1;
    std::vector<Bytes> records;
    std::vector<CMarker> expected(static_cast<std::size_t>(upTo(25)));
    for (CMarker& marker : expected) {
      marker.name = std::string(1, static_cast<char>('a' + upTo(4)));
      marker.channel = upTo(1);
      marker.locked = upTo(3);
      records.push_back(CurrentRecord(marker.name, "", marker.channel, marker.locked));
    }
    Container container(records);
    const bool isSpread = SpreadOneByOne(expected, channelCount);
    container.test.user.saysYesToAll = true;
    ASSERT_TRUE(container.Load(channelCount));
    ASSERT_EQ(container.test.user.questions.size(), isSpread ? 1u : 0u);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      ASSERT_EQ(container.Channels()[i], expected[i].channel) << round;
    }
  }
}

// ---- times

std::vector<std::int32_t> PointsOf(const std::vector<double>& times, const RecordingBuilder& builder) {
  OpenedRecording opened(builder);
  CMarkerList& list = opened.recording.markerList;
  for (const double time : times) {
    auto marker = std::make_unique<CMarker>();
    marker->timeMs = time;
    list.Add(std::move(marker));
  }
  list.TimesToSamples(opened.Setup());
  std::vector<std::int32_t> points;
  for (std::int32_t i = 0; i < list.GetCount(); ++i) points.push_back(list.GetAt(i)->sampleIndex);
  return points;
}

TEST(MarkerTimes, BecomeTheNearestPointOfTheAxisUnlessThereIsAPoint) {
  const auto builder = RecordingBuilder().Epoched().Rate(100).Points(11).Times(-0.05f, 0.06f).Epochs({});
  EXPECT_THAT(PointsOf({-50, -44.9, 0, 4, 1e9, -1e300}, builder), ElementsAre(0, 1, 5, 5, 10, 0));
  OpenedRecording opened(builder);
  auto marker = std::make_unique<CMarker>();
  marker->sampleIndex = 5000;
  opened.recording.markerList.Add(std::move(marker));
  opened.recording.markerList.TimesToSamples(opened.Setup());
  EXPECT_EQ(opened.recording.markerList.GetAt(0)->sampleIndex, 5000);
}

TEST(MarkerTimes, OnAnAxisWithoutStepsAreDefined) {
  const auto points = [](int count) {
    return RecordingBuilder().Epoched().Rate(100).Points(count).Times(0, 0.01f).Epochs({});
  };
  EXPECT_THAT(PointsOf({0, 10, -10}, points(1)), ElementsAre(0, 0, 0));
  OpenedRecording empty(RecordingBuilder().Samples({1}));
  empty.Setup().pointCount = 0;
  empty.recording.markerList.Add(std::make_unique<CMarker>());
  empty.recording.markerList.TimesToSamples(empty.Setup());
  EXPECT_EQ(empty.recording.markerList.GetAt(0)->sampleIndex, -1);
}

}  // namespace
}  // namespace wavelock

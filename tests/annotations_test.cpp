// Markers and labels as they are read, spread, sorted and saved, and objects in archives; damaged records and
// archives change nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <span>
#include <tuple>

#include "tests/support/opened_recording.h"
#include "tests/support/stored_annotations.h"
#include "wavelock/annotations/event_group.h"
#include "wavelock/annotations/exchange_sort.h"
#include "wavelock/annotations/label_list.h"
#include "wavelock/annotations/marker_list.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::byte>;

// A container of markers, with a list to read it into.
struct Markers : ContainerInMemory {
  explicit Markers(const std::vector<Bytes>& payloads) : ContainerInMemory(RecordsOf(payloads)) {}

  static std::vector<StoredRecord> RecordsOf(const std::vector<Bytes>& payloads) {
    std::vector<StoredRecord> records;
    for (const Bytes& payload : payloads) records.push_back({tag::kMarker, 0, payload});
    return records;
  }

  bool Load(std::int32_t channelCount = 99) { return list.Load(tff, channelCount); }

  CMarkerList list{test.host};
};

TEST(Markers, RecordOfAnotherLengthLeavesNone) {
  Bytes longer = MarkerBytes({});
  longer.resize(151);
  Markers markers({MarkerBytes({}), longer});
  markers.list.Add(std::make_unique<CMarker>());
  EXPECT_FALSE(markers.Load());
  EXPECT_EQ(markers.list.GetCount(), 0);
  EXPECT_TRUE(Markers({}).Load());
}

TEST(Markers, AreSavedCutToTheirWidthButForTransientOnes) {
  Markers source({MarkerBytes({.name = std::string(50, 'n'), .text = std::string(50, 't')})});
  ASSERT_TRUE(source.Load());
  EXPECT_EQ(source.list.GetAt(0)->name.size(), 50u);
  auto transient = std::make_unique<CMarker>();
  transient->transient = 1;
  source.list.Add(std::move(transient));
  Markers saved({});
  ASSERT_TRUE(source.list.Save(saved.tff));
  const StoredContainer container(*saved.test.memory.Contents("/c"));
  ASSERT_EQ(container.records.size(), 1u);
  EXPECT_EQ(container.records[0].payload,
            MarkerBytes({.name = std::string(49, 'n'), .text = std::string(49, 't')}));
  EXPECT_EQ(container.records[0].version, 0x0106) << "the system's";
}

TEST(Markers, CopiesAreTheirOwn) {
  Markers markers({MarkerBytes({.name = "a"}), MarkerBytes({.name = "b"})});
  ASSERT_TRUE(markers.Load());
  CMarkerList copy(markers.test.host);
  copy.Add(std::make_unique<CMarker>());
  ASSERT_TRUE(copy.Assign(markers.list));
  markers.list.GetAt(0)->SetName("changed");
  markers.list.RemoveAll();
  ASSERT_EQ(copy.GetCount(), 2);
  EXPECT_EQ(copy.GetAt(0)->GetName(), "a");
  EXPECT_EQ(copy.GetAt(1)->sampleIndex, 77);
  EXPECT_EQ(copy.GetAt(2), nullptr);
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

// Behind the first of "a" two locked ones lie on its channel, and two behind that of "c"; of "b" it is one.
TEST(Markers, StacksAreSpreadAfterOneQuestion) {
  std::vector<Bytes> records;
  for (const auto& [name, channel, locked] : {std::tuple("a", 5, 0),
                                              {"b", 5, 1},
                                              {"a", 5, 1},
                                              {"a", 5, 0},
                                              {"a", 4, 1},
                                              {"b", 5, 3},
                                              {"a", 5, 2},
                                              {"c", 1, 1},
                                              {"c", 1, 1},
                                              {"c", 1, 1}})
    records.push_back(MarkerBytes({.name = name, .channel = channel, .locked = locked}));
  const std::vector<int> asStored = {5, 5, 5, 5, 4, 5, 5, 1, 1, 1};
  const struct {
    int channelCount;
    std::optional<bool> answer;  // none: nobody is asked
    std::vector<int> channels;
  } kCases[] = {{3, true, {0, 5, 1, 5, 4, 5, 2, 0, 1, 2}},
                {3, false, asStored},
                {2, true, {5, 0, 5, 5, 4, 1, 5, 1, 1, 1}},
                {1, std::nullopt, asStored},
                {-1, std::nullopt, asStored}};
  for (const auto& [channelCount, answer, expected] : kCases) {
    Markers markers(records);
    if (answer) markers.test.user.ExpectQuestion(0, *answer);
    ASSERT_TRUE(markers.Load(channelCount));
    std::vector<int> channels;
    for (std::int32_t i = 0; i < markers.list.GetCount(); ++i)
      channels.push_back(markers.list.GetAt(i)->channel);
    EXPECT_EQ(channels, expected) << channelCount;
  }
}

TEST(Markers, TimesBecomeTheNearestPointOfTheAxisUnlessThereIsAPoint) {
  const auto pointsOf = [](const std::vector<double>& times, int points, float start) {
    OpenedRecording opened(RecordingBuilder().Epoched().Rate(100).Points(11).Epochs({}));
    opened.Setup().pointCount = points;
    opened.Setup().timeStart = start;
    CMarkerList& list = opened.recording.markerList;
    for (const double time : times) {
      list.Add(std::make_unique<CMarker>());
      list.GetAt(list.GetCount() - 1)->timeMs = time;
    }
    list.Add(std::make_unique<CMarker>());
    list.GetAt(list.GetCount() - 1)->sampleIndex = 5000;
    list.TimesToSamples(opened.Setup());
    std::vector<std::int32_t> found;
    for (std::int32_t i = 0; i < list.GetCount(); ++i) found.push_back(list.GetAt(i)->sampleIndex);
    return found;
  };
  EXPECT_THAT(pointsOf({-50, -44.9, 0, 4, 1e9, -1e300}, 11, -0.05f), ElementsAre(0, 1, 5, 5, 10, 0, 5000));
  EXPECT_THAT(pointsOf({0, 10, -10}, 1, 0), ElementsAre(0, 0, 0, 5000)) << "an axis without steps";
  EXPECT_THAT(pointsOf({0}, 0, 0), ElementsAre(-1, 5000)) << "an axis without points";
}

// ---- labels

// The sort as its name says it.
std::vector<std::uint32_t> OrderByExchanging(std::vector<std::uint32_t> values) {
  std::vector<std::uint32_t> order(values.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = i + 1; j < values.size(); ++j) {
      if (values[i] <= values[j]) continue;
      std::swap(values[i], values[j]);
      std::swap(order[i], order[j]);
    }
  }
  return order;
}

TEST(Labels, AreSortedAsByExchanging) {
  std::mt19937 random(5);
  for (int round = 0; round < 2000; ++round) {
    std::vector<std::uint32_t> values(random() % (round % 10 == 0 ? 300 : 8));
    const auto most = 1 + static_cast<std::uint32_t>(random() % 40);
    for (std::uint32_t& value : values) value = static_cast<std::uint32_t>(random()) % most;
    ASSERT_EQ(ExchangeSortOrder(values), OrderByExchanging(values)) << round;
  }
}

std::vector<std::string> Texts(const CLabelList& list) {
  std::vector<std::string> texts;
  for (const LabelEntry& label : list.Entries()) texts.push_back(label.text);
  return texts;
}

TEST(Labels, AreReadUpToTheirNulAndSavedUpToATextThatIsTooLong) {
  ContainerInMemory container(
      {{tag::kLabel, 0, ByteWriter().Text("one").U8(0).Text(std::string(252, 'x')).U32(7)},
       {tag::kLabel, 0, ByteWriter().Text("short")},
       {tag::kLabel, 0, ByteWriter().Text(std::string(256, 'y')).U32(8)}});
  const std::string longest(255, 'y');
  CLabelList list;
  list.Add({"before", 1});
  ASSERT_TRUE(list.Load(container.tff));
  EXPECT_THAT(Texts(list), ElementsAre("one", "short", longest));
  EXPECT_EQ(list.Entries()[0].value, 7u);
  EXPECT_EQ(list.Entries()[1].value, 0u);

  list.Add({std::string(256, 'b'), 1});
  list.Add({"never written", 2});
  ContainerInMemory saved;
  ASSERT_FALSE(list.Save(saved.tff));
  CLabelList read;
  ASSERT_TRUE(read.Load(saved.tff));
  EXPECT_THAT(Texts(read), ElementsAre("one", "short", longest));
  EXPECT_EQ(read.Entries()[2].value, 8u);
}

// ---- archives

Bytes ArchivedMarker(bool withLabelMode) {
  ByteWriter bytes;
  bytes.I32(1).U32(0xFF00).U32(4).Text("name").I32(2).I32(3).I32(4).I32(5).I32(6).I32(7).F64(8.5).I32(9).I32(
      10);
  bytes.U32(5).Text("text!");
  if (withLabelMode) bytes.I32(2);
  return bytes;
}

TEST(MarkerArchive, HoldsTheFieldsInTheirOrder) {
  CMarker marker;
  marker.firstValue = 99;
  marker.timeMs = 77;
  const Bytes bytes = ArchivedMarker(true);
  Archive in(bytes, 2);
  ASSERT_TRUE(marker.Serialize(in));
  EXPECT_EQ(marker.name, "name");
  EXPECT_EQ(marker.epoch, 10);
  EXPECT_EQ(marker.timeMs, 0);
  EXPECT_EQ(marker.firstValue, 99);
  Archive out;
  ASSERT_TRUE(marker.Serialize(out));
  EXPECT_EQ(out.Stored(), bytes);

  const Bytes first = ArchivedMarker(false);  // of the first generation, which has no label mode
  for (const int schema : {1, 0, -1}) {
    marker.labelMode = 3;
    Archive old(first, schema);
    ASSERT_TRUE(marker.Serialize(old));
    EXPECT_EQ(marker.labelMode, 0);
  }
}

TEST(MarkerArchive, CutShortLeavesTheMarkerAsItWas) {
  const Bytes whole = ArchivedMarker(true);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CMarker marker;
    marker.SetName("before");
    Archive in(std::span<const std::byte>(whole).first(length), 2);
    ASSERT_FALSE(marker.Serialize(in)) << length;
    EXPECT_EQ(marker.name, "before");
    EXPECT_EQ(marker.locked, 0);
  }
}

TEST(ArrayArchive, EventGroupKeepsItsEvents) {
  CEventGroup group;
  for (const std::uint16_t type : std::initializer_list<std::uint16_t>{7, 8, 9}) {
    EventRecord event;
    event.stimType = type;
    group.Append(event);
  }
  group.groupArrayA.Append(5);  // stays out
  Archive out;
  ASSERT_TRUE(group.Serialize(out));
  EXPECT_EQ(out.Stored().size(), 4 + 3 * 19u);
  CEventGroup loaded;
  Archive in(out.Stored(), 0);
  ASSERT_TRUE(loaded.Serialize(in));
  ASSERT_EQ(loaded.Size(), 3);
  EXPECT_EQ(loaded.Elements()[2].stimType, 9);
  EXPECT_EQ(loaded.groupArrayA.Size(), 0);
}

TEST(ArrayArchive, CountBeyondTheArchiveLeavesTheArrayAsItWas) {
  GroupWordArray array;
  array.Append(4);
  for (const std::uint32_t count : {3u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    const Bytes bytes = ByteWriter().U32(count).U32(11).U32(12);
    Archive in(bytes, 0);
    EXPECT_FALSE(array.Serialize(in));
    EXPECT_THAT(array.Elements(), ElementsAre(4));
  }
}

}  // namespace
}  // namespace wavelock

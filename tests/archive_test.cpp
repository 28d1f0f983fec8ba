// What objects store in an archive they load again, byte for byte as laid down; damaged archives change
// nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "tests/support/byte_writer.h"
#include "wavelock/annotations/event_group.h"
#include "wavelock/annotations/marker.h"

namespace wavelock {
namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::byte>;

Bytes MarkerBytes(bool withLabelMode) {
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
  const Bytes bytes = MarkerBytes(true);
  Archive in(bytes, 2);
  ASSERT_TRUE(marker.Serialize(in));
  EXPECT_EQ(marker.name, "name");
  EXPECT_EQ(marker.text, "text!");
  EXPECT_EQ(marker.labelMode, 2);
  EXPECT_EQ(marker.timeMs, 0);
  EXPECT_EQ(marker.firstValue, 99);
  Archive out;
  ASSERT_TRUE(marker.Serialize(out));
  EXPECT_EQ(out.Stored(), bytes);
}

TEST(MarkerArchive, FirstGenerationHasNoLabelMode) {
  const Bytes bytes = MarkerBytes(false);
  for (const int schema : {1, 0, -1}) {
    CMarker marker;
    marker.labelMode = 3;
    Archive in(bytes, schema);
    ASSERT_TRUE(marker.Serialize(in));
    EXPECT_EQ(marker.labelMode, 0);
    EXPECT_EQ(marker.epoch, 10);
  }
}

TEST(MarkerArchive, CutShortLeavesTheMarkerAsItWas) {
  const Bytes whole = MarkerBytes(true);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CMarker marker;
    marker.SetName("before");
    const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    Archive in(part, 2);
    ASSERT_FALSE(marker.Serialize(in)) << length;
    EXPECT_EQ(marker.name, "before");
    EXPECT_EQ(marker.locked, 0);
  }
}

EventRecord EventOfType(std::uint16_t type) {
  EventRecord event;
  event.stimType = type;
  return event;
}

TEST(ArrayArchive, EventGroupKeepsItsEvents) {
  CEventGroup group;
  for (const std::uint16_t type : std::array<std::uint16_t, 3>{7, 8, 9}) group.Append(EventOfType(type));
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

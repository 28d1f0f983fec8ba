// The tagged container: what is written is laid out as told, and what is found in damaged ones is bounded by
// the file.
#include <gtest/gtest.h>

#include <array>

#include "tests/support/stored_container.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

std::vector<std::byte> BytesOfText(std::string_view text) {
  return ByteWriter().Text(text);
}

class TffFile : public testing::Test {
 protected:
  // Opens a container of these bytes.
  CTffFile& Open(const std::vector<std::byte>& bytes) {
    test_.memory.Put("c", bytes);
    EXPECT_TRUE(file_.Open("c", OpenMode::kReadOnly));
    return file_;
  }
  CTffFile& Open(std::vector<StoredRecord> records) {
    StoredContainer container;
    container.records = std::move(records);
    return Open(container.Bytes());
  }

  std::string Read(std::uint32_t tag, std::uint32_t occurrence = 1, std::uint64_t room = 64) {
    std::array<char, 64> buffer{};
    const std::uint64_t got = file_.ReadSection(tag, room, buffer.data(), occurrence);
    EXPECT_EQ(got, room);
    return {buffer.data(), static_cast<std::size_t>(got)};
  }
  std::string ReadNext(std::uint32_t tag, std::uint64_t room = 64) {
    std::array<char, 64> buffer{};
    const std::uint64_t got = file_.ReadNextSection(tag, room, buffer.data());
    EXPECT_EQ(got, room);
    return {buffer.data(), static_cast<std::size_t>(got)};
  }

  TestHost test_;
  CTffFile file_{test_.host};
};

TEST_F(TffFile, IsWrittenByteForByte) {
  CTffFile file(test_.host);
  ASSERT_TRUE(file.Open("out", OpenMode::kCreate));
  file.SetWideSamples(1);
  file.SetWideSamples(0);
  EXPECT_EQ(file.WriteHeader(), 64);
  EXPECT_TRUE(file.WriteSection(0x01020304, 3, "abc", 7));
  EXPECT_FALSE(file.WriteSection(0, 3, "abc", 7));
  EXPECT_TRUE(file.WriteSection(5, 2, nullptr, 0));
  ByteWriter expected;
  expected.Text("QVR TFF").U8(0).U32(0x8A0502CE).U32(0x805316F0).U32(0xA901F4F7).U32(0x8A110B20);
  expected.Zeros(24).U32(0).U16(1).Zeros(10);
  expected.U32(0x01020304).U16(7).U16(0).U32(3).U32(3).Text("abc");
  expected.U32(5).U16(0).U16(0).U32(2).U32(2);
  EXPECT_EQ(test_.memory.Contents("out"), expected.Written());
}

TEST_F(TffFile, FindsRecordsByOccurrenceWhereverTheyStand) {
  Open({{9, 1, BytesOfText("one")}, {8, 2, BytesOfText("other")}, {9, 3, BytesOfText("two")}});
  EXPECT_EQ(Read(9, 2), "two");
  EXPECT_EQ(file_.LastVersion(), 3);
  EXPECT_EQ(Read(8), "other");
  EXPECT_EQ(Read(9), "one");
  EXPECT_EQ(file_.LastVersion(), 1);
  EXPECT_EQ(Read(9, 0), "");
  EXPECT_EQ(Read(9, 3), "");
  EXPECT_EQ(Read(7), "");
  EXPECT_EQ(Read(0), "");
  EXPECT_EQ(file_.FindSection(8), 5u);
  EXPECT_EQ(file_.Position(), 64u + 16 + 3 + 16);
}

TEST_F(TffFile, ReadsARunInOrder) {
  Open({{9, 0, BytesOfText("a")},
        {8, 0, BytesOfText("x")},
        {9, 0, BytesOfText("b")},
        {9, 0, {}},
        {9, 0, BytesOfText("c")}});
  EXPECT_EQ(Read(9), "a");
  EXPECT_EQ(ReadNext(9), "b");
  EXPECT_EQ(ReadNext(9), "") << "an empty record ends the run";
  EXPECT_EQ(Read(8), "x");
  EXPECT_EQ(ReadNext(8), "");
}

TEST_F(TffFile, AnEmptyRecordHidesALaterOneOfItsTag) {
  Open({{9, 0, {}}, {9, 0, BytesOfText("full")}});
  EXPECT_EQ(Read(9), "");
  EXPECT_EQ(Read(9, 2), "full");
}

TEST_F(TffFile, TakesTheRestOfALongPayloadForRecords) {
  StoredContainer inner;
  inner.records = {{5, 0, BytesOfText("inner")}};
  const std::vector<std::byte> container = inner.Bytes();
  ByteWriter payload;
  payload.Text("head").Bytes(std::span(container).subspan(64));
  Open({{9, 0, payload.Written()}, {5, 0, BytesOfText("outer")}});
  EXPECT_EQ(Read(9, 1, 4), "head");
  EXPECT_EQ(ReadNext(5), "inner");
  EXPECT_EQ(Read(5), "outer");
}

TEST_F(TffFile, MagicAloneDecidesWhatIsAContainer) {
  StoredContainer container;
  container.flags = 0xFFFF;
  container.records = {{9, 0, BytesOfText("text")}};
  std::vector<std::byte> bytes = container.Bytes();
  Open(bytes);
  EXPECT_EQ(Read(9), "text");
  EXPECT_TRUE(file_.HasWideSamples());
  bytes[0] = std::byte{'q'};
  Open(bytes);
  EXPECT_EQ(Read(9), "");
  EXPECT_TRUE(file_.Entries().empty());
}

TEST_F(TffFile, HeadsThatEndWithTheFileEndTheSearch) {
  StoredContainer container;
  container.records = {{8, 0, BytesOfText("12345678")}, {9, 0, BytesOfText("text")}};
  const std::vector<std::byte> whole = container.Bytes();
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    Open(std::vector<std::byte>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    const std::size_t payload = 64 + 16 + 8 + 16;
    EXPECT_EQ(Read(9), std::string("text").substr(0, size > payload ? size - payload : 0));
  }
}

TEST_F(TffFile, LengthsBeyondTheFileDoNotWrapAround) {
  std::vector<std::byte> bytes = ByteWriter()
                                     .Bytes(StoredContainer().Bytes())
                                     .U32(8)
                                     .U32(0)
                                     .U32(0xFFFFFFFF)
                                     .U32(1)
                                     .U32(9)
                                     .U32(0)
                                     .U32(4)
                                     .U32(4)
                                     .Text("text");
  Open(bytes);
  EXPECT_EQ(Read(9), "");
  EXPECT_EQ(Read(8, 1, 8).size(), 8u);
  EXPECT_EQ(file_.Entries().size(), 1u);
}

TEST_F(TffFile, OverAnOpenFileItNeitherMovesNorClosesIt) {
  std::vector<std::byte> bytes(100);
  StoredContainer container;
  container.records = {{9, 0, BytesOfText("text")}};
  const std::vector<std::byte> tail = container.Bytes();
  bytes.insert(bytes.end(), tail.begin(), tail.end());
  test_.memory.Put("r", bytes);
  const auto open = test_.host.files.Open("r", OpenMode::kReadWrite);
  {
    CTffFile over(*open, 100);
    EXPECT_EQ(open->Position(), 0u);
    EXPECT_EQ(over.FindSection(9), 4u);
    over.SeekTo(0, SeekOrigin::kEnd);
    EXPECT_TRUE(over.WriteSection(10, 3, "new", 0));
    EXPECT_EQ(over.FindSection(10), 3u) << "what is appended belongs to the same run";
  }
  EXPECT_EQ(open->Size(), bytes.size() + 19);
}

TEST_F(TffFile, WithoutAFileNothingIsThere) {
  std::uint64_t length = 4;
  std::uint32_t word = 0;
  EXPECT_EQ(file_.ReadSection(9, length, &word), 0u);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(file_.Length(), 0u);
  EXPECT_EQ(file_.SeekTo(5, SeekOrigin::kStart), 0u);
  EXPECT_EQ(file_.WriteHeader(), 0);
  EXPECT_FALSE(file_.WriteSection(9, 4, &word, 0));
  Open({{9, 0, BytesOfText("text")}});
  length = 4;
  EXPECT_EQ(file_.ReadSection(9, length, nullptr), 0u);
  EXPECT_EQ(length, 0u);
}

}  // namespace
}  // namespace wavelock

// The tagged container: records are found wherever they stand, and what is found in damaged ones is bounded
// by the file.
#include <gtest/gtest.h>

#include <array>

#include "tests/support/stored_container.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

struct TextRecord {
  std::uint32_t tag;
  std::uint16_t version;
  std::string_view text;
};

std::vector<std::byte> ContainerOf(std::initializer_list<TextRecord> records) {
  StoredContainer container;
  for (const auto& [tag, version, text] : records)
    container.records.push_back({tag, version, ByteWriter().Text(text)});
  return container.Bytes();
}

class TffFile : public testing::Test {
 protected:
  // Opens a container of these bytes.
  void Open(const std::vector<std::byte>& bytes) {
    test_.memory.Put("c", bytes);
    EXPECT_TRUE(file_.Open("c", OpenMode::kReadOnly));
  }

  std::string Read(std::uint32_t tag, std::uint32_t occurrence = 1, std::uint64_t room = 64) {
    const std::uint64_t got = file_.ReadSection(tag, room, buffer_.data(), occurrence);
    EXPECT_EQ(got, room);
    return {buffer_.data(), static_cast<std::size_t>(got)};
  }
  std::string ReadNext(std::uint32_t tag) {
    std::uint64_t room = buffer_.size();
    const std::uint64_t got = file_.ReadNextSection(tag, room, buffer_.data());
    EXPECT_EQ(got, room);
    return {buffer_.data(), static_cast<std::size_t>(got)};
  }

  TestHost test_;
  CTffFile file_{test_.host};
  std::array<char, 64> buffer_{};
};

TEST_F(TffFile, FindsRecordsByOccurrenceWhereverTheyStand) {
  Open(ContainerOf({{9, 1, "one"}, {8, 2, "other"}, {9, 3, "two"}, {9, 0, ""}, {9, 0, "behind"}}));
  EXPECT_EQ(Read(9, 2), "two");
  EXPECT_EQ(file_.LastVersion(), 3);
  EXPECT_EQ(Read(8), "other");
  EXPECT_EQ(ReadNext(9), "two");
  EXPECT_EQ(ReadNext(9), "") << "an empty record ends a run";
  EXPECT_EQ(Read(9, 4), "behind");
  EXPECT_EQ(Read(9), "one");
  EXPECT_EQ(file_.LastVersion(), 1);
  for (const std::uint32_t occurrence : {0u, 3u, 5u}) EXPECT_EQ(Read(9, occurrence), "") << occurrence;
  for (const std::uint32_t tag : {0u, 7u}) EXPECT_EQ(Read(tag), "") << tag;
  EXPECT_EQ(file_.FindSection(8), 5u);
  EXPECT_EQ(file_.Position(), 64u + 16 + 3 + 16);
}

TEST_F(TffFile, TakesTheRestOfALongPayloadForRecords) {
  const std::vector<std::byte> inner = ContainerOf({{5, 0, "inner"}});
  const std::string head =
      "head" + std::string(reinterpret_cast<const char*>(inner.data()) + 64, inner.size() - 64);
  Open(ContainerOf({{9, 0, head}, {5, 0, "outer"}}));
  EXPECT_EQ(Read(9, 1, 4), "head");
  EXPECT_EQ(ReadNext(5), "inner");
  EXPECT_EQ(Read(5), "outer");
}

TEST_F(TffFile, MagicAloneDecidesWhatIsAContainer) {
  StoredContainer container(ContainerOf({{9, 0, "text"}}));
  container.flags = 0xFFFF;
  std::vector<std::byte> bytes = container.Bytes();
  Open(bytes);
  EXPECT_EQ(Read(9), "text");
  EXPECT_TRUE(file_.HasWideSamples());
  bytes[0] = std::byte{'q'};
  Open(bytes);
  EXPECT_EQ(Read(9), "");
  EXPECT_TRUE(file_.Entries().empty());
}

TEST_F(TffFile, RecordsEndWithTheFile) {
  const std::vector<std::byte> whole = ContainerOf({{8, 0, "12345678"}, {9, 0, "text"}});
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    Open(std::vector<std::byte>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    const std::size_t payload = 64 + 16 + 8 + 16;
    EXPECT_EQ(Read(9), std::string("text").substr(0, size > payload ? size - payload : 0));
  }
  ByteWriter endless;
  endless.Bytes(StoredContainer().Bytes()).U32(8).U32(0).U32(0xFFFFFFFF).U32(1);
  Open(endless.U32(9).U32(0).U32(4).U32(4).Text("text"));
  EXPECT_EQ(Read(9), "") << "a length beyond the file does not wrap around";
  EXPECT_EQ(Read(8, 1, 8).size(), 8u);
  EXPECT_EQ(file_.Entries().size(), 1u);
}

TEST_F(TffFile, OverAnOpenFileItNeitherMovesNorClosesIt) {
  const std::vector<std::byte> bytes = ByteWriter().Zeros(100).Bytes(ContainerOf({{9, 0, "text"}}));
  test_.memory.Put("r", bytes);
  const auto open = test_.host.files.Open("r", OpenMode::kReadWrite);
  {
    CTffFile over(*open, 100);
    EXPECT_EQ(open->Position(), 0u);
    EXPECT_EQ(over.FindSection(9), 4u);
    over.SeekTo(0, SeekOrigin::kEnd);
    EXPECT_TRUE(over.WriteSection(10, 3, "new", 0));
    EXPECT_FALSE(over.WriteSection(0, 3, "new", 0)) << "no record is without a tag";
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
  Open(ContainerOf({{9, 0, "text"}}));
  length = 4;
  EXPECT_EQ(file_.ReadSection(9, length, nullptr), 0u);
  EXPECT_EQ(length, 0u);
}

}  // namespace
}  // namespace wavelock

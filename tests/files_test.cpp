// Files in memory behave as files on the disk do.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string_view>

#include "tests/support/memory_files.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/platform/host.h"

namespace wavelock {
namespace {

std::span<const std::byte> Bytes(std::string_view text) {
  return std::as_bytes(std::span(text));
}

std::string ReadText(File& file, std::size_t count) {
  std::string text(count, '\0');
  const auto got = file.Read(std::as_writable_bytes(std::span(text)));
  text.resize(got.value_or(0));
  return text;
}

struct OnDisk {
  TemporaryFolder folder;
  FileService& service = Host::Default().files;
  std::string Path(const std::string& name) const { return folder.Path(name); }
};

struct InMemory {
  MemoryFiles files;
  FileService& service = files;
  std::string Path(const std::string& name) const { return "/memory/" + name; }
};

template <class Place>
class Files : public testing::Test {
 protected:
  FileService& service() { return place_.service; }
  std::string Path(const std::string& name) const { return place_.Path(name); }
  std::unique_ptr<File> Open(const std::string& name, OpenMode mode) {
    return service().Open(Path(name), mode);
  }
  void Make(const std::string& name, std::string_view text) {
    ASSERT_TRUE(Open(name, OpenMode::kCreate)->Write(Bytes(text)));
  }
  std::string TextOf(const std::string& name) {
    const auto file = Open(name, OpenMode::kReadOnly);
    return file ? ReadText(*file, 1000) : "no file";
  }

 private:
  Place place_;
};

using Places = testing::Types<OnDisk, InMemory>;
TYPED_TEST_SUITE(Files, Places);

TYPED_TEST(Files, CreatingMakesOrEmptiesAndAllowsReading) {
  this->Make("two words.rec", "a long old text");
  const auto file = this->Open("two words.rec", OpenMode::kCreate);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->Name(), "two words.rec");
  EXPECT_EQ(file->Path(), this->Path("two words.rec"));
  EXPECT_EQ(file->Size(), 0u);
  ASSERT_TRUE(file->Write(Bytes("new")));
  ASSERT_TRUE(file->SeekTo(0));
  EXPECT_EQ(ReadText(*file, 3), "new");
  EXPECT_TRUE(file->Flush());
}

TYPED_TEST(Files, NewFilesAreMadeOnlyWhereThereIsNone) {
  ASSERT_NE(this->Open("a", OpenMode::kCreateNew), nullptr);
  this->Make("a", "kept");
  EXPECT_EQ(this->Open("a", OpenMode::kCreateNew), nullptr);
  EXPECT_EQ(this->TextOf("a"), "kept");
}

TYPED_TEST(Files, ModesThatDoNotCreateRefuseWhatIsNotThereAndSayWhy) {
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite}) {
    std::string why;
    EXPECT_FALSE(this->service().Open(this->Path("missing"), mode, &why));
    EXPECT_FALSE(why.empty());
  }
  EXPECT_FALSE(this->service().Exists(this->Path("missing")));
  EXPECT_FALSE(this->service().Open("", OpenMode::kCreate));
}

TYPED_TEST(Files, FoldersExistButAreNotOpened) {
  this->Make("inside", "");
  const std::string folder = this->Path("").substr(0, this->Path("").size() - 1);
  EXPECT_TRUE(this->service().Exists(folder));
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite, OpenMode::kCreate}) {
    std::string why;
    EXPECT_FALSE(this->service().Open(folder, mode, &why));
    EXPECT_FALSE(why.empty());
  }
  EXPECT_FALSE(this->service().Delete(folder));
}

TYPED_TEST(Files, ReadsAreShortOnlyAtTheEndAndMoveThePosition) {
  this->Make("a", "0123456789");
  const auto file = this->Open("a", OpenMode::kReadOnly);
  EXPECT_EQ(ReadText(*file, 4), "0123");
  EXPECT_EQ(file->Position(), 4u);
  EXPECT_EQ(ReadText(*file, 100), "456789");
  EXPECT_EQ(file->Position(), 10u);
  EXPECT_EQ(ReadText(*file, 1), "");

  std::array<std::byte, 3> three;
  EXPECT_TRUE(file->SeekTo(7) && file->ReadExactly(three));
  EXPECT_TRUE(file->SeekTo(8));
  EXPECT_FALSE(file->ReadExactly(three));
}

TYPED_TEST(Files, SeeksReportThePositionAndStayWherePositionsEnd) {
  constexpr auto kLast = std::numeric_limits<std::int64_t>::max();
  this->Make("a", "0123456789");
  const auto file = this->Open("a", OpenMode::kReadWrite);
  EXPECT_EQ(file->Seek(-3, SeekOrigin::kEnd), 7u);
  EXPECT_EQ(file->Seek(-2, SeekOrigin::kCurrent), 5u);
  EXPECT_EQ(file->Seek(-6, SeekOrigin::kCurrent), std::nullopt);
  EXPECT_EQ(file->Seek(std::numeric_limits<std::int64_t>::min(), SeekOrigin::kEnd), std::nullopt);
  EXPECT_EQ(file->Seek(kLast, SeekOrigin::kCurrent), std::nullopt);
  EXPECT_FALSE(file->SeekTo(static_cast<std::uint64_t>(kLast) + 1));
  EXPECT_EQ(file->Position(), 5u);

  EXPECT_EQ(file->Seek(kLast, SeekOrigin::kStart), static_cast<std::uint64_t>(kLast));
  EXPECT_EQ(ReadText(*file, 8), "");
  EXPECT_FALSE(file->Write(Bytes("x")));
  EXPECT_EQ(file->Size(), 10u);
}

TYPED_TEST(Files, WritingPastTheEndFillsTheGapWithZeros) {
  const auto file = this->Open("a", OpenMode::kCreate);
  ASSERT_TRUE(file->SeekTo(3) && file->Write(Bytes("x")));
  EXPECT_EQ(this->TextOf("a"), std::string("\0\0\0x", 4));
}

TYPED_TEST(Files, ReadOnlyAttributeIsSetTakenBackAndSeenByOpenFiles) {
  this->Make("a", "kept");
  const auto file = this->Open("a", OpenMode::kReadOnly);
  EXPECT_FALSE(file->Write(Bytes("lost"))) << "it was opened to be read";
  EXPECT_EQ(this->TextOf("a"), "kept");
  EXPECT_FALSE(file->Status()->readOnly);
  ASSERT_TRUE(this->service().SetStatus(this->Path("a"), {.readOnly = true}));
  EXPECT_TRUE(this->service().Status(this->Path("a"))->readOnly);
  EXPECT_TRUE(file->Status()->readOnly);
  ASSERT_TRUE(this->service().SetStatus(this->Path("a"), {.readOnly = false}));
  EXPECT_FALSE(this->service().Status(this->Path("a"))->readOnly);
  EXPECT_EQ(this->service().Status(this->Path("missing")), std::nullopt);
  EXPECT_FALSE(this->service().SetStatus(this->Path("missing"), {}));
}

TYPED_TEST(Files, ReplacingPutsTheNewFileInPlaceAndLeavesTheOldToItsReaders) {
  this->Make("old", "old");
  this->Make("new", "new");
  const auto reader = this->Open("old", OpenMode::kReadOnly);
  const auto writer = this->Open("old", OpenMode::kReadWrite);
  ASSERT_TRUE(this->service().Replace(this->Path("new"), this->Path("old")));
  EXPECT_EQ(this->TextOf("old"), "new");
  EXPECT_FALSE(this->service().Exists(this->Path("new")));
  ASSERT_TRUE(writer->Write(Bytes("O")));
  EXPECT_EQ(ReadText(*reader, 3), "Old") << "each has a position of its own";
  EXPECT_FALSE(this->service().Replace(this->Path("missing"), this->Path("old")));
  EXPECT_EQ(this->TextOf("old"), "new");
}

TYPED_TEST(Files, DeletedFilesLiveOnForThoseWhoHaveThemOpen) {
  this->Make("a", "text");
  const auto file = this->Open("a", OpenMode::kReadOnly);
  ASSERT_TRUE(this->service().Delete(this->Path("a")));
  EXPECT_FALSE(this->service().Exists(this->Path("a")));
  EXPECT_FALSE(this->service().Delete(this->Path("a")));
  EXPECT_EQ(ReadText(*file, 4), "text");
  EXPECT_FALSE(file->Status()->readOnly);
}

}  // namespace
}  // namespace wavelock

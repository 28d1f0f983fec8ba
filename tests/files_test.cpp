// Files in memory behave as files on the disk do, and paths of every platform fall into pieces that give them
// back.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string_view>
#include <tuple>

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
  text.resize(file.Read(std::as_writable_bytes(std::span(text))).value_or(0));
  return text;
}

struct OnDisk {
  TemporaryFolder folder;
  std::string path = folder.Path();
  FileService& service = Host::Default().files;
};

struct InMemory {
  MemoryFiles files;
  std::string path = "/memory";
  FileService& service = files;
};

template <class Place>
class Files : public testing::Test {
 protected:
  const std::string& folder() const { return place_.path; }
  FileService& service() { return place_.service; }
  std::string Path(const std::string& name) const { return place_.path + "/" + name; }
  std::unique_ptr<File> Open(const std::string& name, OpenMode mode) {
    return service().Open(Path(name), mode);
  }
  void Make(const std::string& name, std::string_view text) {
    ASSERT_TRUE(Open(name, OpenMode::kCreate)->Write(Bytes(text)));
  }
  std::string TextOf(const std::string& name) { return ReadText(*Open(name, OpenMode::kReadOnly), 1000); }
  void ExpectRefusal(const std::string& path, OpenMode mode) {
    std::string why;
    EXPECT_FALSE(service().Open(path, mode, &why));
    EXPECT_FALSE(why.empty());
  }

 private:
  Place place_;
};

using Places = testing::Types<OnDisk, InMemory>;
TYPED_TEST_SUITE(Files, Places);

TYPED_TEST(Files, ModesMakeAFileEmptyItOrSayWhyNot) {
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite})
    this->ExpectRefusal(this->Path("missing"), mode);
  EXPECT_FALSE(this->service().Exists(this->Path("missing")));
  this->ExpectRefusal("", OpenMode::kCreate);

  ASSERT_NE(this->Open("two words.rec", OpenMode::kCreateNew), nullptr);
  this->Make("two words.rec", "a long old text");
  EXPECT_EQ(this->Open("two words.rec", OpenMode::kCreateNew), nullptr);
  EXPECT_EQ(this->TextOf("two words.rec"), "a long old text");
  const auto file = this->Open("two words.rec", OpenMode::kCreate);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->Name(), "two words.rec");
  EXPECT_EQ(file->Path(), this->Path("two words.rec"));
  EXPECT_EQ(file->Size(), 0u);
  EXPECT_TRUE(file->Write(Bytes("new")) && file->Flush() && file->SeekTo(0));
  EXPECT_EQ(ReadText(*file, 3), "new");
}

TYPED_TEST(Files, FoldersExistButAreNotOpened) {
  this->Make("inside", "");
  const std::string folder = this->folder();
  EXPECT_TRUE(this->service().Exists(folder));
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite, OpenMode::kCreate})
    this->ExpectRefusal(folder, mode);
  EXPECT_FALSE(this->service().Delete(folder));
}

TYPED_TEST(Files, ReadsAreShortOnlyAtTheEndAndSeeksStayWherePositionsEnd) {
  constexpr auto kLast = std::numeric_limits<std::int64_t>::max();
  this->Make("a", "0123456789");
  const auto file = this->Open("a", OpenMode::kReadWrite);
  EXPECT_EQ(ReadText(*file, 4), "0123");
  EXPECT_EQ(file->Position(), 4u);
  EXPECT_EQ(ReadText(*file, 100), "456789");
  EXPECT_EQ(ReadText(*file, 1), "");
  std::array<std::byte, 3> three;
  EXPECT_TRUE(file->SeekTo(7) && file->ReadExactly(three));
  EXPECT_TRUE(file->SeekTo(8) && !file->ReadExactly(three));

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

  ASSERT_TRUE(file->SeekTo(12) && file->Write(Bytes("x")));
  EXPECT_EQ(this->TextOf("a"), std::string("0123456789\0\0x", 13));
}

TYPED_TEST(Files, ReadOnlyAttributeIsSetTakenBackAndSeenByOpenFiles) {
  this->Make("a", "kept");
  const auto file = this->Open("a", OpenMode::kReadOnly);
  EXPECT_FALSE(file->Write(Bytes("lost"))) << "it was opened to be read";
  EXPECT_EQ(this->TextOf("a"), "kept");
  EXPECT_FALSE(file->Status()->readOnly);
  for (const bool readOnly : {true, false}) {
    ASSERT_TRUE(this->service().SetStatus(this->Path("a"), {.readOnly = readOnly}));
    EXPECT_EQ(this->service().Status(this->Path("a"))->readOnly, readOnly);
    EXPECT_EQ(file->Status()->readOnly, readOnly);
  }
  EXPECT_EQ(this->service().Status(this->Path("missing")), std::nullopt);
  EXPECT_FALSE(this->service().SetStatus(this->Path("missing"), {}));
}

TYPED_TEST(Files, ReplacedAndDeletedFilesLiveOnForThoseWhoHaveThemOpen) {
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

  const auto deleted = this->Open("old", OpenMode::kReadOnly);
  ASSERT_TRUE(this->service().Delete(this->Path("old")));
  EXPECT_FALSE(this->service().Exists(this->Path("old")));
  EXPECT_FALSE(this->service().Delete(this->Path("old")));
  EXPECT_EQ(ReadText(*deleted, 4), "new");
  EXPECT_FALSE(deleted->Status()->readOnly);
}

TEST(PathSplitting, PiecesGiveThePathBack) {
  const PathParts cases[] = {
      {"", "/usr/local/bin/", "wavelock", ""},
      {"C:", "\\Program Files\\Lab\\", "record", ".exe"},
      {"c:", "", "name", ".ast"},
      {"", "..\\mixed/", "a.b", ".cnt"},
      {"", "/folder.d/", "name", ""},
      {"", "/folder/", "", ""},
      {"", "/", "", ".hidden"},
      {"", "", "name", "."},
      {"", "", "1:", ""},
      {"C:", "", "", ""},
      {"", "", "", ""},
  };
  for (const auto& [drive, directory, name, extension] : cases) {
    const PathParts parts = SplitPath(drive + directory + name + extension);
    EXPECT_EQ(std::tie(parts.drive, parts.directory, parts.name, parts.extension),
              std::tie(drive, directory, name, extension));
  }
}

}  // namespace
}  // namespace wavelock

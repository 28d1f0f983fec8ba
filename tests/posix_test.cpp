// What is particular to a POSIX system: files of every size and kind, the process, the default host.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <limits>

#include "tests/support/temporary_folder.h"
#include "wavelock/platform/posix_files.h"
#include "wavelock/platform/posix_process.h"

namespace wavelock {
namespace {

class PosixFilesTest : public testing::Test {
 protected:
  // A file with one byte.
  std::string Made(const std::string& name) {
    const auto file = files.Open(folder.Path(name), OpenMode::kCreate);
    EXPECT_TRUE(file->Write(std::array{std::byte{1}}) && file->Flush());
    return folder.Path(name);
  }

  const TemporaryFolder folder;
  PosixFiles files;
};

unsigned RightsOf(const std::string& path) {
  return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

TEST_F(PosixFilesTest, PositionsBeyondFourGibibytesAreReached) {
  constexpr std::uint64_t kFar = 5'000'000'000;
  const auto file = files.Open(folder.Path("sparse"), OpenMode::kCreate);
  const std::array<std::byte, 2> written{std::byte{1}, std::byte{2}};
  ASSERT_TRUE(file->SeekTo(kFar) && file->Write(written));
  EXPECT_EQ(file->Size(), kFar + 2);
  EXPECT_EQ(file->Seek(-1, SeekOrigin::kEnd), kFar + 1);
  std::array<std::byte, 2> read{};
  EXPECT_EQ(file->Read(read), 1u);
  EXPECT_EQ(read[0], written[1]);
}

TEST_F(PosixFilesTest, PipesDevicesAndPathsWithAZeroByteAreRefusedWithoutWaiting) {
  ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
  const std::string made = Made("a");
  const std::string tricky = made + std::string("\0.cnt", 5);
  for (const std::string& path : {folder.Path("pipe"), std::string("/dev/zero"), tricky}) {
    for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite, OpenMode::kCreate}) {
      std::string why;
      EXPECT_FALSE(files.Open(path, mode, &why)) << path;
      EXPECT_FALSE(why.empty());
    }
  }
  EXPECT_FALSE(files.Exists(tricky) || files.Delete(tricky));
  EXPECT_TRUE(files.Exists(made));
}

TEST_F(PosixFilesTest, AReplacedFileKeepsItsRightsAndTheLinksToIt) {
  const std::string made = Made("new");
  const std::string old = folder.Path("old");
  const std::string link = folder.Path("link");
  ASSERT_TRUE(files.Open(old, OpenMode::kCreate));
  ASSERT_EQ(chmod(old.c_str(), 0600), 0);
  ASSERT_EQ(symlink("old", link.c_str()), 0);
  ASSERT_TRUE(files.Replace(made, link));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(std::filesystem::file_size(old), 1u);
  EXPECT_EQ(RightsOf(old), 0600u);
  EXPECT_FALSE(files.Exists(made));
}

TEST_F(PosixFilesTest, ReadOnlyTakesEveryWriteBitAndGivesBackTheOwnersAlone) {
  const std::string path = Made("a");
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  for (const unsigned mode : {0444u, 0644u}) {
    ASSERT_TRUE(files.SetStatus(path, {.readOnly = mode == 0444u}));
    EXPECT_EQ(RightsOf(path), mode);
  }
}

TEST_F(PosixFilesTest, RelativePathsBecomeFullAndDescriptorsAreNotInherited) {
  const std::string path = Made("a");
  const int next = dup(STDERR_FILENO);
  close(next);
  const auto file = files.Open(std::filesystem::relative(path).string(), OpenMode::kReadOnly);
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->Path().starts_with('/'));
  EXPECT_TRUE(std::filesystem::equivalent(file->Path(), path));
  EXPECT_NE(fcntl(next, F_GETFD) & FD_CLOEXEC, 0);
}

TEST(PosixProcess, KnowsItsProgramAndTheLocalTime) {
  PosixProcess process;
  EXPECT_TRUE(std::filesystem::is_regular_file(process.ExecutablePath()));
  EXPECT_NE(process.OsVersionWord(), 0u);

  setenv("TZ", "XYZ-01:30", 1);
  tzset();
  EXPECT_EQ(process.LocalTime(0, "%m/%d/%Y %H:%M:%S"), "01/01/1970 01:30:00");
  EXPECT_EQ(process.LocalTime(-5400, "%H:%M"), "00:00");
  unsetenv("TZ");
  tzset();
  EXPECT_EQ(process.LocalTime(std::numeric_limits<std::int64_t>::max(), "%Y"), "");
}

}  // namespace
}  // namespace wavelock

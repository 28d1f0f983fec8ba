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

TEST(PosixFiles, PositionsBeyondFourGibibytesAreReached) {
  constexpr std::uint64_t kFar = 5'000'000'000;
  const TemporaryFolder folder;
  PosixFiles files;
  const auto file = files.Open(folder.Path("sparse"), OpenMode::kCreate);
  const std::array<std::byte, 2> written{std::byte{1}, std::byte{2}};
  ASSERT_TRUE(file->SeekTo(kFar) && file->Write(written));
  EXPECT_EQ(file->Size(), kFar + 2);
  EXPECT_EQ(file->Seek(-1, SeekOrigin::kEnd), kFar + 1);
  std::array<std::byte, 2> read{};
  EXPECT_EQ(file->Read(read), 1u);
  EXPECT_EQ(read[0], written[1]);
}

TEST(PosixFiles, PipesDevicesAndPathsWithAZeroByteAreRefusedWithoutWaiting) {
  const TemporaryFolder folder;
  PosixFiles files;
  ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
  ASSERT_TRUE(files.Open(folder.Path("a"), OpenMode::kCreate));
  const std::string tricky = folder.Path("a") + std::string("\0.cnt", 5);
  for (const std::string& path : {folder.Path("pipe"), std::string("/dev/zero"), tricky}) {
    for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite, OpenMode::kCreate}) {
      std::string why;
      EXPECT_FALSE(files.Open(path, mode, &why)) << path;
      EXPECT_FALSE(why.empty());
    }
  }
  EXPECT_FALSE(files.Exists(tricky) || files.Delete(tricky));
  EXPECT_TRUE(files.Exists(folder.Path("a")));
}

TEST(PosixFiles, AReplacedFileKeepsItsRightsAndTheLinksToIt) {
  const TemporaryFolder folder;
  PosixFiles files;
  const std::string old = folder.Path("old");
  const std::string link = folder.Path("link");
  ASSERT_TRUE(files.Open(old, OpenMode::kCreate));
  ASSERT_EQ(chmod(old.c_str(), S_IRUSR | S_IWUSR), 0);
  ASSERT_EQ(symlink("old", link.c_str()), 0);
  const std::array<std::byte, 1> written{std::byte{1}};
  {
    const auto made = files.Open(folder.Path("new"), OpenMode::kCreate);
    ASSERT_TRUE(made->Write(written) && made->Flush());
  }
  ASSERT_TRUE(files.Replace(folder.Path("new"), link));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(std::filesystem::file_size(old), 1u);
  EXPECT_EQ(std::filesystem::status(old).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_FALSE(files.Exists(folder.Path("new")));
}

TEST(PosixFiles, ReadOnlyTakesEveryWriteBitAndGivesBackTheOwnersAlone) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("a");
  PosixFiles files;
  ASSERT_TRUE(files.Open(path, OpenMode::kCreate));
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  for (const unsigned mode : {0444u, 0644u}) {
    ASSERT_TRUE(files.SetStatus(path, {.readOnly = mode == 0444u}));
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(path).permissions()), mode);
  }
}

TEST(PosixFiles, RelativePathsBecomeFullAndDescriptorsAreNotInherited) {
  const TemporaryFolder folder;
  PosixFiles files;
  ASSERT_TRUE(files.Open(folder.Path("a"), OpenMode::kCreate));
  const std::string relative = std::filesystem::relative(folder.Path("a")).string();
  const int next = dup(STDERR_FILENO);
  close(next);
  const auto file = files.Open(relative, OpenMode::kReadOnly);
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->Path().starts_with('/'));
  EXPECT_TRUE(std::filesystem::equivalent(file->Path(), folder.Path("a")));
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

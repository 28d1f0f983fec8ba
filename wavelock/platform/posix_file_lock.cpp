#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "wavelock/platform/file_lock.h"
#include "wavelock/platform/posix_descriptor.h"

namespace wavelock {
namespace {

constexpr auto kPause = std::chrono::milliseconds(5);
constexpr int kAttempts = 400;

// The system frees the lock with the descriptor, also when the process ends by force.
class PosixFileLock : public FileLock {
 public:
  PosixFileLock(PosixDescriptor descriptor, std::string path)
      : descriptor_(std::move(descriptor)), path_(std::move(path)) {}

  void RemoveFile() override { unlink(path_.c_str()); }

 private:
  PosixDescriptor descriptor_;
  const std::string path_;
};

PosixDescriptor OpenLock(const std::string& path) {
  return PosixDescriptor(
      Uninterrupted([&] { return open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR); }));
}

bool IsHeldByAnother(int descriptor) {
  return Uninterrupted([&] { return flock(descriptor, LOCK_EX | LOCK_NB); }) != 0 && errno == EWOULDBLOCK;
}

// Whoever held the lock before may have removed its file: others then lock another one of that name.
bool IsStillAt(const std::string& path, int descriptor) {
  struct stat held;
  struct stat named;
  return fstat(descriptor, &held) == 0 && stat(path.c_str(), &named) == 0 && held.st_dev == named.st_dev &&
         held.st_ino == named.st_ino;
}

}  // namespace

std::unique_ptr<FileLock> LockFile(const std::string& path) {
  for (int attempt = 0; attempt <= kAttempts; ++attempt) {
    PosixDescriptor descriptor = OpenLock(path);
    if (!descriptor.IsOpen()) return nullptr;
    if (IsHeldByAnother(descriptor.Number())) {
      std::this_thread::sleep_for(kPause);
    } else if (IsStillAt(path, descriptor.Number())) {
      return std::make_unique<PosixFileLock>(std::move(descriptor), path);
    }
  }
  return nullptr;
}

}  // namespace wavelock

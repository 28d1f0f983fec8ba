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
  explicit PosixFileLock(PosixDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

 private:
  PosixDescriptor descriptor_;
};

bool IsHeldByAnother(int descriptor) {
  return Uninterrupted([&] { return flock(descriptor, LOCK_EX | LOCK_NB); }) != 0 && errno == EWOULDBLOCK;
}

}  // namespace

std::unique_ptr<FileLock> LockFile(const std::string& path) {
  PosixDescriptor descriptor(
      Uninterrupted([&] { return open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR); }));
  if (!descriptor.IsOpen()) return nullptr;
  for (int attempt = 0; IsHeldByAnother(descriptor.Number()); ++attempt) {
    if (attempt == kAttempts) return nullptr;
    std::this_thread::sleep_for(kPause);
  }
  return std::make_unique<PosixFileLock>(std::move(descriptor));
}

}  // namespace wavelock

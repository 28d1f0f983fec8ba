#include "wavelock/platform/posix_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "wavelock/platform/posix_descriptor.h"

namespace wavelock {
namespace {

static_assert(sizeof(off_t) == 8, "positions need 64 bits");

// Systems limit what one call transfers, some by refusing a larger request.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;

constexpr mode_t kEveryWriteBit = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kNewFile = S_IRUSR | S_IRGRP | S_IROTH | kEveryWriteBit;  // less the process's mask

// For the system a name ends at its first zero byte. A path with one inside would name another file than it
// says, so it becomes the empty path, which names none.
const char* SystemPath(const std::string& path) {
  return path.find('\0') == std::string::npos ? path.c_str() : "";
}

int SystemFlags(OpenMode mode) {
  switch (mode) {
    case OpenMode::kReadOnly:
      return O_RDONLY;
    case OpenMode::kReadWrite:
      return O_RDWR;
    case OpenMode::kCreate:
      return O_RDWR | O_CREAT | O_TRUNC;
    case OpenMode::kCreateNew:
      return O_RDWR | O_CREAT | O_EXCL;
  }
  return O_RDONLY;
}

// 0, or the error that tells why a descriptor is not one of a file with positions.
int WhyNoFile(int descriptor) {
  struct stat facts;
  if (fstat(descriptor, &facts) != 0) return errno;
  if (S_ISREG(facts.st_mode)) return 0;
  return S_ISDIR(facts.st_mode) ? EISDIR : ESPIPE;
}

// A path that leads nowhere refuses nothing: an open file may have lost its name.
bool RefusesWriting(const std::string& path) {
  if (faccessat(AT_FDCWD, SystemPath(path), W_OK, AT_EACCESS) == 0) return false;
  return errno == EACCES || errno == EPERM || errno == EROFS;
}

FileStatus StatusFrom(const struct stat& facts, const std::string& path) {
  return {.readOnly = (facts.st_mode & S_IWUSR) == 0 || RefusesWriting(path)};
}

// What stands in a file outlasts a loss of power after this; some systems keep it in the medium's own cache
// when asked plainly.
bool SyncToMedium(int descriptor) {
#ifdef F_FULLFSYNC
  if (Uninterrupted([&] { return fcntl(descriptor, F_FULLFSYNC); }) == 0) return true;
#endif
  return Uninterrupted([&] { return fsync(descriptor); }) == 0;
}

// The same for the names in the folder of a path. Systems that cannot do that for a folder have no need to.
bool SyncFolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  PosixDescriptor descriptor(
      Uninterrupted([&] { return open(SystemPath(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!descriptor.IsOpen()) return errno == EACCES;  // a folder may let files be made and not be read
  return SyncToMedium(descriptor.Number()) || errno == EINVAL;
}

// Gives a file that is to take another's place the rights of that other, and its owner where that is allowed.
bool TakeRights(const std::string& from, const std::string& to) {
  struct stat facts;
  if (stat(SystemPath(to), &facts) != 0) return errno == ENOENT;
  if (chown(SystemPath(from), facts.st_uid, facts.st_gid) != 0 && errno != EPERM) return false;
  return chmod(SystemPath(from), facts.st_mode & kPermissionBits) == 0;
}

// Keeps its own position, so that a seek costs no call and nobody else can move it.
class PosixFile : public File {
 public:
  PosixFile(std::string path, bool isNew) : path_(std::move(path)), hasNewName_(isNew) {}

  void Take(PosixDescriptor descriptor) { descriptor_ = std::move(descriptor); }

  std::string Name() const override { return path_.substr(path_.rfind('/') + 1); }
  std::string Path() const override { return path_; }
  std::optional<std::size_t> Read(std::span<std::byte> buffer) override;
  bool Write(std::span<const std::byte> bytes) override;
  std::optional<std::uint64_t> Seek(std::int64_t offset, SeekOrigin origin) override;
  std::optional<std::uint64_t> Size() override;
  bool Flush() override;
  std::optional<FileStatus> Status() override;

 private:
  std::size_t TransferAt(std::uint64_t position, std::size_t wanted) const;

  PosixDescriptor descriptor_{-1};
  std::string path_;
  std::uint64_t position_ = 0;
  bool hasNewName_;  // which is not on the medium yet
};

// How much of `wanted` one call may ask for: it must not reach beyond the last position.
std::size_t PosixFile::TransferAt(std::uint64_t position, std::size_t wanted) const {
  const std::uint64_t left = std::numeric_limits<off_t>::max() - position;
  return static_cast<std::size_t>(std::min<std::uint64_t>({wanted, kLargestTransfer, left}));
}

std::optional<std::size_t> PosixFile::Read(std::span<std::byte> buffer) {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const std::uint64_t from = position_ + done;
    const auto part = buffer.subspan(done, TransferAt(from, buffer.size() - done));
    const ssize_t got = Uninterrupted(
        [&] { return pread(descriptor_.Number(), part.data(), part.size(), static_cast<off_t>(from)); });
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  position_ += done;
  return done;
}

bool PosixFile::Write(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const auto part = bytes.first(TransferAt(position_, bytes.size()));
    const ssize_t put = Uninterrupted([&] {
      return pwrite(descriptor_.Number(), part.data(), part.size(), static_cast<off_t>(position_));
    });
    if (put <= 0) return false;
    position_ += static_cast<std::uint64_t>(put);
    bytes = bytes.subspan(static_cast<std::size_t>(put));
  }
  return true;
}

std::optional<std::uint64_t> PosixFile::Seek(std::int64_t offset, SeekOrigin origin) {
  std::uint64_t base = origin == SeekOrigin::kCurrent ? position_ : 0;
  if (origin == SeekOrigin::kEnd) {
    const auto size = Size();
    if (!size) return std::nullopt;
    base = *size;
  }
  const auto target = MovedPosition(base, offset);
  if (target) position_ = *target;
  return target;
}

std::optional<std::uint64_t> PosixFile::Size() {
  struct stat facts;
  if (fstat(descriptor_.Number(), &facts) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(facts.st_size);
}

bool PosixFile::Flush() {
  if (!SyncToMedium(descriptor_.Number())) return false;
  if (hasNewName_ && SyncFolderOf(path_)) hasNewName_ = false;
  return !hasNewName_;
}

std::optional<FileStatus> PosixFile::Status() {
  struct stat facts;
  if (fstat(descriptor_.Number(), &facts) != 0) return std::nullopt;
  return StatusFrom(facts, path_);
}

}  // namespace

std::unique_ptr<File> PosixFiles::Open(const std::string& path, OpenMode mode, std::string* errorText) {
  const auto refuse = [&](int error) {
    if (errorText != nullptr) *errorText = std::generic_category().message(error);
    return nullptr;
  };
  // All that needs memory comes before a file is made.
  const bool isNew = mode == OpenMode::kCreate || mode == OpenMode::kCreateNew;
  std::error_code noFolder;
  const auto fullPath = std::filesystem::absolute(path, noFolder);
  auto file = std::make_unique<PosixFile>(noFolder ? path : fullPath.string(), isNew);
  // Without O_NONBLOCK the open of a pipe would wait for its other end.
  const int flags = SystemFlags(mode) | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
  PosixDescriptor descriptor(Uninterrupted([&] { return open(SystemPath(path), flags, kNewFile); }));
  if (!descriptor.IsOpen()) return refuse(errno);
  if (const int error = WhyNoFile(descriptor.Number()); error != 0) return refuse(error);
  file->Take(std::move(descriptor));
  return file;
}

bool PosixFiles::Exists(const std::string& path) {
  struct stat facts;
  return stat(SystemPath(path), &facts) == 0;
}

bool PosixFiles::Delete(const std::string& path) {
  return unlink(SystemPath(path)) == 0;
}

std::optional<FileStatus> PosixFiles::Status(const std::string& path) {
  struct stat facts;
  if (stat(SystemPath(path), &facts) != 0) return std::nullopt;
  return StatusFrom(facts, path);
}

bool PosixFiles::SetStatus(const std::string& path, const FileStatus& status) {
  struct stat facts;
  if (stat(SystemPath(path), &facts) != 0) return false;
  const mode_t before = facts.st_mode & kPermissionBits;
  const mode_t after = status.readOnly ? before & ~kEveryWriteBit : before | S_IWUSR;
  return after == before || chmod(SystemPath(path), after) == 0;
}

bool PosixFiles::Replace(const std::string& from, const std::string& to) {
  const std::string target = BehindLinks(to);
  if (!TakeRights(from, target) || rename(SystemPath(from), SystemPath(target)) != 0) return false;
  SyncFolderOf(target);  // the new file is in its place, whether or not this can be made to last
  return true;
}

std::string PosixFiles::BehindLinks(const std::string& path) {
  std::error_code noFile;
  const auto target = std::filesystem::canonical(SystemPath(path), noFile);
  return noFile ? path : target.string();
}

}  // namespace wavelock

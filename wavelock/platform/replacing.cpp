#include "wavelock/platform/replacing.h"

#include <new>

namespace wavelock {
namespace {

struct NewFile {
  std::string path{};
  std::unique_ptr<File> file{};  // null when none could be made
};

// Under a name beside the file that nothing bore before: others may be at the same work.
NewFile MakeBeside(FileService& files, const std::string& path) {
  constexpr int kTries = 100;
  NewFile made;
  for (int i = 0; i < kTries && !made.file; ++i) {
    made.path = path + "." + std::to_string(i) + ".new";
    made.file = files.Open(made.path, OpenMode::kCreateNew);
  }
  return made;
}

bool MayBeReplaced(FileService& files, const std::string& path) {
  const auto status = files.Status(path);
  return !path.empty() && !(status && status->readOnly);
}

// The file is closed again before anything else is done to it, so that systems that lock what is open can
// rename it.
bool WriteWhole(std::unique_ptr<File> file, const std::function<bool(File&)>& write) try {
  WatchedFile watched(std::move(file));
  return write(watched) && watched.Flush() && !watched.HasFailed();
} catch (const std::bad_alloc&) {
  return false;
}

bool PutInPlace(FileService& files, const std::string& written, const std::string& path) try {
  return files.Replace(written, path);
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace

std::optional<std::size_t> WatchedFile::Read(std::span<std::byte> buffer) {
  const std::optional<std::size_t> got = open_.Read(buffer);
  if (!got || (*got < buffer.size() && open_.Position() < open_.Size())) hasFailed_ = true;
  return got;
}

bool ReplaceWhole(FileService& files, const std::string& path, const std::function<bool(File&)>& write) try {
  const std::string target = files.BehindLinks(path);
  if (!MayBeReplaced(files, target)) return false;
  NewFile made = MakeBeside(files, target);
  if (!made.file) return false;
  if (WriteWhole(std::move(made.file), write) && PutInPlace(files, made.path, target)) return true;
  files.Delete(made.path);
  return false;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace wavelock

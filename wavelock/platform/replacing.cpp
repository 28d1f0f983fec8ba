#include "wavelock/platform/replacing.h"

#include <new>

namespace wavelock {
namespace {

// A name beside the file that nothing bears yet; empty when all that come to mind are taken.
std::string FreeNameBeside(FileService& files, const std::string& path) {
  constexpr int kTries = 100;
  for (int i = 0; i < kTries; ++i) {
    std::string name = path + "." + std::to_string(i) + ".new";
    if (!files.Exists(name)) return name;
  }
  return {};
}

bool MayBeReplaced(FileService& files, const std::string& path) {
  const auto status = files.Status(path);
  return !path.empty() && !(status && status->readOnly);
}

// The file is closed again before anything else is done to it, so that systems that lock what is open can
// rename it.
bool WriteWhole(FileService& files, const std::string& path, const std::function<bool(File&)>& write) try {
  const std::unique_ptr<File> file = files.Open(path, OpenMode::kCreate);
  if (!file) return false;
  WatchedFile watched(*file);
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
  if (!MayBeReplaced(files, path)) return false;
  const std::string written = FreeNameBeside(files, path);
  if (written.empty()) return false;
  if (WriteWhole(files, written, write) && PutInPlace(files, written, path)) return true;
  files.Delete(written);
  return false;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace wavelock

#include "wavelock/platform/replacing.h"

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

// The file is closed again, so that systems that lock what is open can rename it.
bool WriteWhole(FileService& files, const std::string& path, const std::function<bool(File&)>& write) {
  const std::unique_ptr<File> file = files.Open(path, OpenMode::kCreate);
  if (!file) return false;
  WatchedFile watched(*file);
  return write(watched) && watched.Flush() && !watched.HasFailed();
}

}  // namespace

bool ReplaceWhole(FileService& files, const std::string& path, const std::function<bool(File&)>& write) {
  if (!MayBeReplaced(files, path)) return false;
  const std::string written = FreeNameBeside(files, path);
  if (written.empty()) return false;
  if (WriteWhole(files, written, write) && files.Replace(written, path)) return true;
  files.Delete(written);
  return false;
}

}  // namespace wavelock

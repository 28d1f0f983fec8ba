#include "wavelock/platform/shared_text_file.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "wavelock/platform/file_lock.h"
#include "wavelock/platform/replacing.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kLargestText = 1u << 20;  // bytes; nothing that is kept this way comes near it

bool MakeFolderOf(const std::string& path) {
  std::error_code error;
  const auto folder = std::filesystem::path(path).parent_path();
  if (folder.empty()) return true;
  std::filesystem::create_directories(folder, error);
  return std::filesystem::is_directory(folder, error);
}

}  // namespace

SharedTextFile::SharedTextFile(FileService& files, std::string path)
    : files_(files), path_(std::move(path)) {}

std::optional<std::string> SharedTextFile::Read() {
  const auto file = files_.Open(path_, OpenMode::kReadOnly);
  if (!file && !files_.Exists(path_)) return std::string();
  const auto size = file ? file->Size() : std::nullopt;
  if (!size || *size > kLargestText) return std::nullopt;
  std::string text(static_cast<std::size_t>(*size), '\0');
  if (!file->ReadExactly(std::as_writable_bytes(std::span(text)))) return std::nullopt;
  return text;
}

bool SharedTextFile::Change(const std::function<std::string(const std::string&)>& change) {
  const std::lock_guard changing(changing_);
  if (path_.empty() || !MakeFolderOf(path_)) return false;
  const auto lock = LockFile(path_ + ".lock");
  if (!lock) return false;
  const auto text = Read();
  if (!text) return false;
  const std::string changed = change(*text);
  if (changed.size() > kLargestText) return false;
  const bool isReplaced = Replace(changed);
  if (isReplaced && changed.empty()) lock->RemoveFile();
  return isReplaced;
}

bool SharedTextFile::Replace(const std::string& text) {
  if (!text.empty()) {
    return ReplaceWhole(files_, path_,
                        [&text](File& file) { return file.Write(std::as_bytes(std::span(text))); });
  }
  const auto status = files_.Status(path_);
  if (status && status->readOnly) return false;
  const std::string target = files_.BehindLinks(path_);
  return files_.Delete(target) || !files_.Exists(target);
}

}  // namespace wavelock

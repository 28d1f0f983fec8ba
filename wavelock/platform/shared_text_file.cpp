#include "wavelock/platform/shared_text_file.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "wavelock/platform/file_lock.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kLargestText = 1u << 20;  // bytes; nothing that is kept this way comes near it

bool MakeFolderOf(const std::string& path) {
  std::error_code error;
  const auto folder = std::filesystem::path(path).parent_path();
  std::filesystem::create_directories(folder, error);
  return std::filesystem::is_directory(folder, error);
}

// The file itself where the path leads through links, so that a replaced file leaves the links alone.
std::string LinkTarget(const std::string& path) {
  std::error_code missing;
  const auto target = std::filesystem::canonical(path, missing);
  return missing ? path : target.string();
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
  const bool isReplaced = Replace(changed);
  if (isReplaced && changed.empty()) lock->RemoveFile();
  return isReplaced;
}

bool SharedTextFile::Replace(const std::string& text) {
  const std::string target = LinkTarget(path_);
  if (const auto status = files_.Status(target); status && status->readOnly) return false;
  if (text.empty()) return files_.Delete(target) || !files_.Exists(target);
  const std::string beside = target + ".new";
  auto file = files_.Open(beside, OpenMode::kCreate);
  const bool written = file && file->Write(std::as_bytes(std::span(text))) && file->Flush();
  file.reset();
  if (written && files_.Replace(beside, target)) return true;
  files_.Delete(beside);
  return false;
}

}  // namespace wavelock

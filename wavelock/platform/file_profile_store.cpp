#include "wavelock/platform/file_profile_store.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "wavelock/platform/file_lock.h"
#include "wavelock/platform/profile_text.h"

namespace wavelock {
namespace {

constexpr std::uint64_t kLargestProfile = 1u << 20;  // bytes; nothing that a person keeps comes near it

bool MakeFolderOf(const std::string& path) {
  std::error_code error;
  const auto folder = std::filesystem::path(path).parent_path();
  std::filesystem::create_directories(folder, error);
  return std::filesystem::is_directory(folder, error);
}

// The file itself where the path leads through links, so that a replaced profile leaves the links alone.
std::string LinkTarget(const std::string& path) {
  std::error_code missing;
  const auto target = std::filesystem::canonical(path, missing);
  return missing ? path : target.string();
}

}  // namespace

FileProfileStore::FileProfileStore(FileService& files, std::string path)
    : files_(files), path_(std::move(path)) {}

std::optional<std::string> FileProfileStore::Find(std::string_view section, std::string_view key) {
  const auto text = ReadText();
  if (!text) return std::nullopt;
  return FindInProfile(*text, section, key);
}

bool FileProfileStore::Store(std::string_view section, std::string_view key, std::string_view value) {
  const std::lock_guard storing(storing_);
  if (path_.empty() || !MakeFolderOf(path_)) return false;
  const auto lock = LockFile(path_ + ".lock");
  if (!lock) return false;
  const auto text = ReadText();
  return text && ReplaceText(StoreInProfile(*text, section, key, value));
}

// Empty when there is no file yet; nothing when it cannot be read.
std::optional<std::string> FileProfileStore::ReadText() {
  const auto file = files_.Open(path_, OpenMode::kReadOnly);
  if (!file && !files_.Exists(path_)) return std::string();
  const auto size = file ? file->Size() : std::nullopt;
  if (!size || *size > kLargestProfile) return std::nullopt;
  std::string text(static_cast<std::size_t>(*size), '\0');
  if (!file->ReadExactly(std::as_writable_bytes(std::span(text)))) return std::nullopt;
  return text;
}

// After a failure the old profile is still in its place.
bool FileProfileStore::ReplaceText(const std::string& text) {
  const std::string target = LinkTarget(path_);
  if (const auto status = files_.Status(target); status && status->readOnly) return false;
  const std::string beside = target + ".new";
  auto file = files_.Open(beside, OpenMode::kCreate);
  const bool written = file && file->Write(std::as_bytes(std::span(text))) && file->Flush();
  file.reset();
  if (written && files_.Replace(beside, target)) return true;
  files_.Delete(beside);
  return false;
}

}  // namespace wavelock

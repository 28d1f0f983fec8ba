#include "wavelock/platform/file_profile_store.h"

#include <utility>

#include "wavelock/platform/profile_text.h"

namespace wavelock {

FileProfileStore::FileProfileStore(FileService& files, std::string path) : file_(files, std::move(path)) {}

std::optional<std::string> FileProfileStore::Find(std::string_view section, std::string_view key) {
  const auto text = file_.Read();
  if (!text) return std::nullopt;
  return FindInProfile(*text, section, key);
}

bool FileProfileStore::Store(std::string_view section, std::string_view key, std::string_view value) {
  return file_.Change([&](const std::string& text) { return StoreInProfile(text, section, key, value); });
}

}  // namespace wavelock

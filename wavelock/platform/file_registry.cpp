#include "wavelock/platform/file_registry.h"

#include <utility>

#include "wavelock/platform/profile_text.h"
#include "wavelock/platform/user_files.h"

namespace wavelock {
namespace {

constexpr std::string_view kFileName = "registry.ini";
constexpr std::string_view kOwnValue = "@";

RegistryTree ParseRegistry(std::string_view text) {
  RegistryTree tree;
  RegistryValues* values = nullptr;
  ReadProfile(
      text, [&](const std::string& path) { values = &tree[path]; },
      [&](const std::string& name, std::string value) {
        if (values != nullptr) (*values)[name == kOwnValue ? std::string() : name] = std::move(value);
      });
  return tree;
}

std::string FormatRegistry(const RegistryTree& tree) {
  std::string text;
  for (const auto& [path, values] : tree) {
    if (!text.empty()) text += '\n';
    text += ProfileSectionLine(path) + "\n";
    for (const auto& [name, value] : values) {
      text += ProfileEntryLine(name.empty() ? kOwnValue : name, value) + "\n";
    }
  }
  return text;
}

}  // namespace

FileRegistry::FileRegistry(FileService& files, std::string path) : file_(files, std::move(path)) {}

FileRegistry::FileRegistry(FileService& files) : FileRegistry(files, UserFilePath(kFileName)) {}

std::optional<RegistryTree> FileRegistry::Read() {
  const auto text = file_.Read();
  if (!text) return std::nullopt;
  return ParseRegistry(*text);
}

bool FileRegistry::Change(const std::function<void(RegistryTree&)>& change) {
  return file_.Change([&](const std::string& text) {
    RegistryTree tree = ParseRegistry(text);
    change(tree);
    return FormatRegistry(tree);
  });
}

}  // namespace wavelock

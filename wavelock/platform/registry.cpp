#include "wavelock/platform/registry.h"

#include <utility>

namespace wavelock {
namespace {

constexpr char kSeparator = '/';

bool IsBelow(std::string_view key, std::string_view path) {
  return key.size() > path.size() && key[path.size()] == kSeparator &&
         EqualIgnoringCase(key.substr(0, path.size()), path);
}

}  // namespace

std::optional<std::string> FindValue(const RegistryTree& tree, std::string_view path, std::string_view name) {
  const auto key = tree.find(path);
  if (key == tree.end()) return std::nullopt;
  const auto value = key->second.find(name);
  if (value == key->second.end()) return std::nullopt;
  return value->second;
}

void RemoveKey(RegistryTree& tree, std::string_view path) {
  std::erase_if(
      tree, [&](const auto& key) { return EqualIgnoringCase(key.first, path) || IsBelow(key.first, path); });
}

bool HasKeysBelow(const RegistryTree& tree, std::string_view path) {
  return std::any_of(tree.begin(), tree.end(), [&](const auto& key) { return IsBelow(key.first, path); });
}

std::optional<RegistryTree> MemoryRegistry::Read() {
  const std::lock_guard lock(mutex_);
  return tree_;
}

bool MemoryRegistry::Change(const std::function<void(RegistryTree&)>& change) {
  const std::lock_guard lock(mutex_);
  RegistryTree changed = tree_;
  change(changed);
  tree_ = std::move(changed);
  return true;
}

}  // namespace wavelock

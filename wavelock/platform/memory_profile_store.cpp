#include "wavelock/platform/memory_profile_store.h"

namespace wavelock {

std::optional<std::string> MemoryProfileStore::Find(std::string_view section, std::string_view key) {
  const std::lock_guard lock(mutex_);
  const auto found = values_.find({std::string(section), std::string(key)});
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

bool MemoryProfileStore::Store(std::string_view section, std::string_view key, std::string_view value) {
  const std::lock_guard lock(mutex_);
  values_.insert_or_assign({std::string(section), std::string(key)}, std::string(value));
  return true;
}

}  // namespace wavelock

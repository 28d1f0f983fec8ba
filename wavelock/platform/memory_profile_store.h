// A profile that lives as long as its object: for programs that keep no state, and for tests.
#pragma once

#include <map>
#include <mutex>
#include <utility>

#include "wavelock/platform/text_profile_store.h"

namespace wavelock {

class MemoryProfileStore : public TextProfileStore {
 private:
  std::optional<std::string> Find(std::string_view section, std::string_view key) override;
  bool Store(std::string_view section, std::string_view key, std::string_view value) override;

  std::mutex mutex_;
  std::map<std::pair<std::string, std::string>, std::string> values_;  // by section and key
};

}  // namespace wavelock

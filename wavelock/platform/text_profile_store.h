// What profile stores that keep every value as text have in common: numbers are decimal text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "wavelock/platform/profile_store.h"

namespace wavelock {

class TextProfileStore : public ProfileStore {
 public:
  int GetInt(std::string_view section, std::string_view key, int fallback) final;
  std::string GetString(std::string_view section, std::string_view key, std::string_view fallback) final;
  bool SetInt(std::string_view section, std::string_view key, int value) final;
  bool SetString(std::string_view section, std::string_view key, std::string_view value) final;

 private:
  virtual std::optional<std::string> Find(std::string_view section, std::string_view key) = 0;
  virtual bool Store(std::string_view section, std::string_view key, std::string_view value) = 0;
};

}  // namespace wavelock

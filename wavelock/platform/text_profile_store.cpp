#include "wavelock/platform/text_profile_store.h"

#include <charconv>
#include <system_error>

namespace wavelock {

int TextProfileStore::GetInt(std::string_view section, std::string_view key, int fallback) {
  const auto text = Find(section, key);
  if (!text) return fallback;
  int value = 0;
  const char* const end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, value);
  return error == std::errc() && stop == end ? value : fallback;
}

std::string TextProfileStore::GetString(std::string_view section, std::string_view key,
                                        std::string_view fallback) {
  return Find(section, key).value_or(std::string(fallback));
}

bool TextProfileStore::SetInt(std::string_view section, std::string_view key, int value) {
  return Store(section, key, std::to_string(value));
}

bool TextProfileStore::SetString(std::string_view section, std::string_view key, std::string_view value) {
  return Store(section, key, value);
}

}  // namespace wavelock

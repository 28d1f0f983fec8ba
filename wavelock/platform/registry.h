// Where modules say which classes they have: a tree of keys, each with named values.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "wavelock/platform/ascii_case.h"

namespace wavelock {

// Values of a key by name; the key's own value has the empty name.
using RegistryValues = std::map<std::string, std::string, LessIgnoringCase>;

// Keys by their paths, "CLSID/{...}/Version". A key may have no values.
using RegistryTree = std::map<std::string, RegistryValues, LessIgnoringCase>;

std::optional<std::string> FindValue(const RegistryTree& tree, std::string_view path,
                                     std::string_view name = {});

// Takes away the key with all that is below it.
void RemoveKey(RegistryTree& tree, std::string_view path);

bool HasKeysBelow(const RegistryTree& tree, std::string_view path);

class Registry {
 public:
  virtual ~Registry() = default;

  // Nothing when the registry cannot be read.
  virtual std::optional<RegistryTree> Read() = 0;

  // Carries the change out on what the registry holds at this time and keeps the outcome in one step. After a
  // failure everything is as before.
  virtual bool Change(const std::function<void(RegistryTree&)>& change) = 0;
};

// Lives as long as its object: for programs that enter nothing for others, and for tests.
class MemoryRegistry : public Registry {
 public:
  std::optional<RegistryTree> Read() override;
  bool Change(const std::function<void(RegistryTree&)>& change) override;

 private:
  std::mutex mutex_;
  RegistryTree tree_;
};

}  // namespace wavelock

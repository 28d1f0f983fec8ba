// The registry in a text file of the user: a section a key, "@" for the key's own value.
#pragma once

#include "wavelock/platform/registry.h"
#include "wavelock/platform/shared_text_file.h"

namespace wavelock {

class FileRegistry : public Registry {
 public:
  // Borrows `files`.
  FileRegistry(FileService& files, std::string path);

  // The user's own, which every program of the user finds.
  explicit FileRegistry(FileService& files);

  std::optional<RegistryTree> Read() override;
  bool Change(const std::function<void(RegistryTree&)>& change) override;

 private:
  SharedTextFile file_;
};

}  // namespace wavelock

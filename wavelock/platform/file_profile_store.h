// The profile in a text file that the user may read and edit.
#pragma once

#include "wavelock/platform/shared_text_file.h"
#include "wavelock/platform/text_profile_store.h"

namespace wavelock {

// A file that cannot be read gives no values and is never overwritten.
class FileProfileStore : public TextProfileStore {
 public:
  // Borrows `files`. An empty path stands for a user without a home: nothing is found, nothing is kept.
  FileProfileStore(FileService& files, std::string path);

 private:
  std::optional<std::string> Find(std::string_view section, std::string_view key) override;
  bool Store(std::string_view section, std::string_view key, std::string_view value) override;

  SharedTextFile file_;
};

}  // namespace wavelock

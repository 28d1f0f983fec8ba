// The profile in a text file that the user may read and edit.
#pragma once

#include <mutex>

#include "wavelock/platform/file_service.h"
#include "wavelock/platform/text_profile_store.h"

namespace wavelock {

// Serves any number of threads and processes: every look-up reads the file anew, and every change is made to
// what the file then holds, under a lock (a file beside it that stays), and put in place in one step. The
// file and its folder are made by the first change. A file that cannot be read gives no values and is never
// overwritten.
class FileProfileStore : public TextProfileStore {
 public:
  // Borrows `files`. An empty path stands for a user without a home: nothing is found, nothing is kept.
  FileProfileStore(FileService& files, std::string path);

 private:
  std::optional<std::string> Find(std::string_view section, std::string_view key) override;
  bool Store(std::string_view section, std::string_view key, std::string_view value) override;

  std::optional<std::string> ReadText();
  bool ReplaceText(const std::string& text);

  FileService& files_;
  const std::string path_;
  std::mutex storing_;
};

}  // namespace wavelock

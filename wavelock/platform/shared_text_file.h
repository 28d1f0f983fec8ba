// A small text file that several programs read and change.
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "wavelock/platform/file_service.h"

namespace wavelock {

// Serves any number of threads and processes: every look-up reads the file anew, and every change is made to
// what the file then holds, under a lock (a file beside it that stays), and put in place in one step. The
// file and its folder are made by the first change. A file that cannot be read is never overwritten.
class SharedTextFile {
 public:
  // Borrows `files`. An empty path stands for a user without a home: nothing is found, nothing is kept.
  SharedTextFile(FileService& files, std::string path);

  // Empty when there is no file yet; nothing when it cannot be read.
  std::optional<std::string> Read();

  // A text that becomes empty is kept as no file at all, and without a lock beside it. After a failure the
  // old text is still in its place.
  bool Change(const std::function<std::string(const std::string&)>& change);

 private:
  bool Replace(const std::string& text);

  FileService& files_;
  const std::string path_;
  std::mutex changing_;
};

}  // namespace wavelock

// A lock between processes, for what is read, changed and written back.
#pragma once

#include <memory>
#include <string>

namespace wavelock {

class FileLock {
 public:
  virtual ~FileLock() = default;

  // Leaves no file behind; who waits for the lock makes a new one.
  virtual void RemoveFile() = 0;
};

// Holds the lock of that name for as long as the result lives. The file is made when it is missing and stays
// behind unless it is removed. Null when others keep the lock for more than about two seconds or the file
// cannot be made; where the file system knows no locks it is given to everybody.
std::unique_ptr<FileLock> LockFile(const std::string& path);

}  // namespace wavelock

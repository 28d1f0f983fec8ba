// A folder on the disk for one test, gone with everything in it when the test ends.
#pragma once

#include <string>

namespace wavelock {

class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::string& Path() const { return path_; }
  std::string Path(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace wavelock

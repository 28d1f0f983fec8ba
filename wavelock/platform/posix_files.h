// Files of a POSIX system.
#pragma once

#include "wavelock/platform/file_service.h"

namespace wavelock {

// Holds nothing, so one object serves any number of threads. Only regular files are opened, and opening never
// waits for another program.
class PosixFiles : public FileService {
 public:
  std::unique_ptr<File> Open(const std::string& path, OpenMode mode,
                             std::string* errorText = nullptr) override;
  bool Exists(const std::string& path) override;
  bool Delete(const std::string& path) override;

  // Read-only when its owner may not write to it or this process may not.
  std::optional<FileStatus> Status(const std::string& path) override;

  // Read-only takes the right to write from everybody; its opposite gives it to the owner alone.
  bool SetStatus(const std::string& path, const FileStatus& status) override;

  bool Replace(const std::string& from, const std::string& to) override;
  std::string BehindLinks(const std::string& path) override;
};

}  // namespace wavelock

// Files that live in memory, with the manners of real ones.
#pragma once

#include <map>
#include <vector>

#include "wavelock/platform/file_service.h"

namespace wavelock {

// Paths are compared as they stand, after a separator is put in front of those without. A folder exists when
// a file lies below it. A file that was deleted or replaced lives on for those who have it open.
class MemoryFiles : public FileService {
 public:
  std::unique_ptr<File> Open(const std::string& path, OpenMode mode,
                             std::string* errorText = nullptr) override;
  bool Exists(const std::string& path) override;
  bool Delete(const std::string& path) override;
  std::optional<FileStatus> Status(const std::string& path) override;
  bool SetStatus(const std::string& path, const FileStatus& status) override;
  bool Replace(const std::string& from, const std::string& to) override;

  // Straight to the contents, past the rules of opening.
  void Put(const std::string& path, std::span<const std::byte> bytes);
  std::optional<std::vector<std::byte>> Contents(const std::string& path) const;

  // What open files may grow to, in bytes; a write that would pass it fails as on a full disk.
  void LimitSize(std::uint64_t largest) { largest_ = largest; }

  // What everybody who has the file open shares.
  struct Content {
    std::vector<std::byte> bytes;
    FileStatus status;
  };

 private:
  std::shared_ptr<Content> Find(const std::string& path) const;
  bool IsFolder(const std::string& path) const;

  std::map<std::string, std::shared_ptr<Content>> files_;  // by full path
  std::uint64_t largest_ = std::uint64_t{1} << 30;
};

}  // namespace wavelock

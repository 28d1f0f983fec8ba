// Replacing a file without a moment at which it is neither the old one nor the new one.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "wavelock/platform/file_service.h"

namespace wavelock {

// Another open file, and whether all that was asked of it was done. A reader that comes to its end is no
// failure.
class WatchedFile : public File {
 public:
  explicit WatchedFile(File& open) : open_(open) {}
  explicit WatchedFile(std::unique_ptr<File> owned) : owned_(std::move(owned)), open_(*owned_) {}

  bool HasFailed() const { return hasFailed_; }

  std::string Name() const override { return open_.Name(); }
  std::string Path() const override { return open_.Path(); }
  std::optional<std::size_t> Read(std::span<std::byte> buffer) override;
  bool Write(std::span<const std::byte> bytes) override { return Note(open_.Write(bytes)); }
  std::optional<std::uint64_t> Seek(std::int64_t offset, SeekOrigin origin) override {
    return Note(open_.Seek(offset, origin));
  }
  std::optional<std::uint64_t> Size() override { return Note(open_.Size()); }
  bool Flush() override { return Note(open_.Flush()); }
  std::optional<FileStatus> Status() override { return Note(open_.Status()); }

 private:
  template <class Result>
  Result Note(Result result) {
    if (!result) hasFailed_ = true;
    return result;
  }

  std::unique_ptr<File> owned_;
  File& open_;
  bool hasFailed_ = false;
};

// Lets `write` fill a new file in the folder of the file that `path` leads to, brings that to the medium and
// puts it in the place of the old one, if there is such a file. False when `write` gave that or had no
// memory, when the folder takes no new file, when any call on the new file failed, and when the old one may
// not be written; it is then as it was, and the new one is removed.
bool ReplaceWhole(FileService& files, const std::string& path, const std::function<bool(File&)>& write);

}  // namespace wavelock

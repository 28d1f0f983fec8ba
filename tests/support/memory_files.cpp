#include "tests/support/memory_files.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace wavelock {
namespace {

std::string FullPath(const std::string& path) {
  return path.starts_with('/') ? path : "/" + path;
}

class MemoryFile : public File {
 public:
  MemoryFile(std::shared_ptr<MemoryFiles::Content> content, std::string path, bool writable,
             const std::uint64_t& largest)
      : content_(std::move(content)), path_(std::move(path)), writable_(writable), largest_(largest) {}

  std::string Name() const override { return path_.substr(path_.rfind('/') + 1); }
  std::string Path() const override { return path_; }
  std::optional<std::size_t> Read(std::span<std::byte> buffer) override;
  bool Write(std::span<const std::byte> bytes) override;
  std::optional<std::uint64_t> Seek(std::int64_t offset, SeekOrigin origin) override;
  std::optional<std::uint64_t> Size() override { return content_->bytes.size(); }
  bool Flush() override { return true; }
  std::optional<FileStatus> Status() override { return content_->status; }

 private:
  std::shared_ptr<MemoryFiles::Content> content_;
  std::string path_;
  bool writable_;
  const std::uint64_t& largest_;
  std::uint64_t position_ = 0;
};

std::optional<std::size_t> MemoryFile::Read(std::span<std::byte> buffer) {
  const std::uint64_t size = content_->bytes.size();
  const std::uint64_t left = size - std::min(position_, size);
  const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size()));
  if (count == 0) return 0;
  std::copy_n(content_->bytes.data() + position_, count, buffer.data());
  position_ += count;
  return count;
}

bool MemoryFile::Write(std::span<const std::byte> bytes) {
  if (bytes.empty()) return true;
  if (!writable_ || position_ > largest_ || bytes.size() > largest_ - position_) return false;
  const auto end = static_cast<std::size_t>(position_) + bytes.size();
  if (end > content_->bytes.size()) content_->bytes.resize(end);
  std::copy(bytes.begin(), bytes.end(), content_->bytes.data() + position_);
  position_ = end;
  return true;
}

std::optional<std::uint64_t> MemoryFile::Seek(std::int64_t offset, SeekOrigin origin) {
  std::uint64_t base = origin == SeekOrigin::kCurrent ? position_ : 0;
  if (origin == SeekOrigin::kEnd) base = content_->bytes.size();
  const auto target = MovedPosition(base, offset);
  if (target) position_ = *target;
  return target;
}

}  // namespace

std::unique_ptr<File> MemoryFiles::Open(const std::string& path, OpenMode mode, std::string* errorText) {
  const auto refuse = [&](std::errc error) {
    if (errorText != nullptr) *errorText = std::make_error_code(error).message();
    return nullptr;
  };
  if (IsFolder(path)) return refuse(std::errc::is_a_directory);
  auto content = Find(path);
  const bool writable = mode != OpenMode::kReadOnly;
  const bool makes = mode == OpenMode::kCreate || mode == OpenMode::kCreateNew;
  if (!content && (!makes || path.empty())) {
    return refuse(std::errc::no_such_file_or_directory);
  }
  if (content && mode == OpenMode::kCreateNew) return refuse(std::errc::file_exists);
  if (content && content->status.readOnly && writable) return refuse(std::errc::permission_denied);
  if (!content) content = files_[FullPath(path)] = std::make_shared<Content>();
  if (mode == OpenMode::kCreate) content->bytes.clear();
  return std::make_unique<MemoryFile>(std::move(content), FullPath(path), writable, largest_);
}

bool MemoryFiles::Exists(const std::string& path) {
  return Find(path) != nullptr || IsFolder(path);
}

bool MemoryFiles::Delete(const std::string& path) {
  return files_.erase(FullPath(path)) != 0;
}

std::optional<FileStatus> MemoryFiles::Status(const std::string& path) {
  if (const auto content = Find(path)) return content->status;
  if (IsFolder(path)) return FileStatus{};
  return std::nullopt;
}

bool MemoryFiles::SetStatus(const std::string& path, const FileStatus& status) {
  const auto content = Find(path);
  if (content) content->status = status;
  return content != nullptr;
}

bool MemoryFiles::Replace(const std::string& from, const std::string& to) {
  auto content = Find(from);
  if (!content || IsFolder(to)) return false;
  files_.erase(FullPath(from));
  files_[FullPath(to)] = std::move(content);
  return true;
}

void MemoryFiles::Put(const std::string& path, std::span<const std::byte> bytes) {
  files_[FullPath(path)] = std::make_shared<Content>(Content{{bytes.begin(), bytes.end()}, {}});
}

std::optional<std::vector<std::byte>> MemoryFiles::Contents(const std::string& path) const {
  if (const auto content = Find(path)) return content->bytes;
  return std::nullopt;
}

std::shared_ptr<MemoryFiles::Content> MemoryFiles::Find(const std::string& path) const {
  const auto found = files_.find(FullPath(path));
  return found == files_.end() ? nullptr : found->second;
}

bool MemoryFiles::IsFolder(const std::string& path) const {
  std::string prefix = FullPath(path);
  if (!prefix.ends_with('/')) prefix += '/';
  const auto below = files_.lower_bound(prefix);
  return below != files_.end() && below->first.starts_with(prefix);
}

}  // namespace wavelock

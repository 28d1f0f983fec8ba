#include "wavelock/platform/file_service.h"

#include <limits>

namespace wavelock {
namespace {

constexpr std::uint64_t kLastPosition = std::numeric_limits<std::int64_t>::max();

class AttachedFile : public File {
 public:
  explicit AttachedFile(File& open) : open_(open) {}

  std::string Name() const override { return open_.Name(); }
  std::string Path() const override { return open_.Path(); }
  std::optional<std::size_t> Read(std::span<std::byte> buffer) override { return open_.Read(buffer); }
  bool Write(std::span<const std::byte> bytes) override { return open_.Write(bytes); }
  std::optional<std::uint64_t> Seek(std::int64_t offset, SeekOrigin origin) override {
    return open_.Seek(offset, origin);
  }
  std::optional<std::uint64_t> Size() override { return open_.Size(); }
  bool Flush() override { return open_.Flush(); }
  std::optional<FileStatus> Status() override { return open_.Status(); }

 private:
  File& open_;
};

}  // namespace

bool File::SeekTo(std::uint64_t position) {
  return position <= kLastPosition &&
         Seek(static_cast<std::int64_t>(position), SeekOrigin::kStart) == position;
}

bool File::ReadExactly(std::span<std::byte> buffer) {
  return Read(buffer) == buffer.size();
}

std::unique_ptr<File> AttachFile(File& open) {
  return std::make_unique<AttachedFile>(open);
}

std::optional<std::uint64_t> MovedPosition(std::uint64_t base, std::int64_t offset) {
  const auto distance = static_cast<std::uint64_t>(offset);
  if (base > kLastPosition) return std::nullopt;
  // Unsigned sums wrap, so a move backwards past the start lands above the last position as well.
  const std::uint64_t target = base + distance;
  if (target > kLastPosition) return std::nullopt;
  return target;
}

}  // namespace wavelock

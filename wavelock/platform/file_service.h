// Files as the library sees them: bytes at 64-bit positions behind one small interface, so that tests can
// hand in files in memory and files that fail. A failure is a result; nothing but a want of memory throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace wavelock {

enum class OpenMode {
  kReadOnly,
  kReadWrite,
  kCreate,     // makes the file or empties it; it can be read and written
  kCreateNew,  // the same, but refuses where anything bears that name, a link that leads nowhere included
};

enum class SeekOrigin { kStart, kCurrent, kEnd };

struct FileStatus {
  bool readOnly = false;
};

// One open file with one position. Destruction closes it.
class File {
 public:
  File() = default;
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  virtual ~File() = default;

  // The name without its folder, and the full path.
  virtual std::string Name() const = 0;
  virtual std::string Path() const = 0;

  // Reads up to buffer.size() bytes from the position on and moves it behind them. Fewer bytes than asked for
  // means that the file ended there. Nothing when the system reports an error.
  virtual std::optional<std::size_t> Read(std::span<std::byte> buffer) = 0;

  // Writes all bytes at the position, or gives false; how many of them arrived is then open.
  virtual bool Write(std::span<const std::byte> bytes) = 0;

  // Moves the position, also past the end, and reports the one reached. Nothing when it would lie before the
  // start or beyond what 63 bits hold; the position is then unchanged.
  virtual std::optional<std::uint64_t> Seek(std::int64_t offset, SeekOrigin origin) = 0;

  virtual std::optional<std::uint64_t> Size() = 0;

  // Brings what was written, and the name of a file that was made, to the medium itself, so that they outlast
  // a loss of power.
  virtual bool Flush() = 0;

  // Attributes of the file; nothing when they cannot be had.
  virtual std::optional<FileStatus> Status() = 0;

  std::optional<std::uint64_t> Position() { return Seek(0, SeekOrigin::kCurrent); }

  // True when the position now is `position`. A position that a signed number does not hold is never reached.
  bool SeekTo(std::uint64_t position);

  // True when every byte of the buffer came.
  bool ReadExactly(std::span<std::byte> buffer);
};

// Where a move by `offset` from `base` leads; nothing outside the 63 bits of a position. For those who
// implement files.
std::optional<std::uint64_t> MovedPosition(std::uint64_t base, std::int64_t offset);

class FileService {
 public:
  virtual ~FileService() = default;

  // Null when the file cannot be opened in that mode; `errorText`, where given, then takes the system's words
  // for it. Folders, pipes and other things without positions are refused.
  virtual std::unique_ptr<File> Open(const std::string& path, OpenMode mode,
                                     std::string* errorText = nullptr) = 0;

  virtual bool Exists(const std::string& path) = 0;  // a folder of that name counts
  virtual bool Delete(const std::string& path) = 0;
  virtual std::optional<FileStatus> Status(const std::string& path) = 0;

  // Also of a file that is open; what is open keeps the rights that it was opened with.
  virtual bool SetStatus(const std::string& path, const FileStatus& status) = 0;

  // Puts the file `from` in the place of `to` in one step: whoever looks finds the old file or the new one,
  // whole. It gets the rights of the file that was there, and where that was reached by a link, the link
  // stays and leads to it.
  virtual bool Replace(const std::string& from, const std::string& to) = 0;

  // The file itself where the path leads to it through links; else the path as it is.
  virtual std::string BehindLinks(const std::string& path) { return path; }
};

}  // namespace wavelock

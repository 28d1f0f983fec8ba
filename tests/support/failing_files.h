// Another file service whose nth call goes wrong, to walk through everything that a disk can do to an
// operation.
#pragma once

#include <functional>
#include <limits>
#include <vector>

#include "tests/support/memory_files.h"
#include "wavelock/platform/host.h"

namespace wavelock {

enum class FaultKind {
  kError,  // the call does nothing and reports failure; a look-up finds nothing
  kShort,  // a read or write does half of its bytes and tells so; other calls succeed
};

enum class FileOperation {
  kOpen,
  kExists,
  kDelete,
  kStatus,
  kSetStatus,
  kReplace,
  kRead,
  kWrite,
  kSeek,
  kSize,
  kFlush,
};

struct FileCall {
  FileOperation operation = FileOperation::kOpen;
  std::string path{};
};

// Counts the calls of the service and of every file that it opened together, from 0. Outlives its files.
class FailingFiles : public FileService {
 public:
  explicit FailingFiles(FileService& real) : real_(real) {}

  void FailAt(std::size_t call, FaultKind kind) { SetFaults(call, call, kind); }
  void FailFrom(std::size_t call, FaultKind kind) {
    SetFaults(call, std::numeric_limits<std::size_t>::max(), kind);
  }

  // Every call so far, also those that were made to fail.
  const std::vector<FileCall>& Calls() const { return calls_; }

  std::unique_ptr<File> Open(const std::string& path, OpenMode mode,
                             std::string* errorText = nullptr) override;
  bool Exists(const std::string& path) override;
  bool Delete(const std::string& path) override;
  std::optional<FileStatus> Status(const std::string& path) override;
  bool SetStatus(const std::string& path, const FileStatus& status) override;
  bool Replace(const std::string& from, const std::string& to) override;
  std::string BehindLinks(const std::string& path) override { return real_.BehindLinks(path); }

  // Notes a call and gives the fault that it is to have.
  std::optional<FaultKind> Note(FileOperation operation, const std::string& path);

 private:
  void SetFaults(std::size_t first, std::size_t last, FaultKind kind);

  FileService& real_;
  std::vector<FileCall> calls_;
  std::size_t firstFault_ = std::numeric_limits<std::size_t>::max();
  std::size_t lastFault_ = 0;
  FaultKind kind_ = FaultKind::kError;
};

// Runs `operation`, which tells whether all was done, first without a fault and then with each of its calls
// to the disk failing in turn, once or from then on. Hands what the disk then holds to `check`, with what the
// operation gave. `prepare` fills the disk for every run. A disk that fails for good must show at least once.
void FailEveryCall(const std::function<void(MemoryFiles&)>& prepare,
                   const std::function<bool(Host&, FaultKind)>& operation,
                   const std::function<void(MemoryFiles&, bool isDone)>& check);

}  // namespace wavelock

#include "tests/support/failing_files.h"

#include <gtest/gtest.h>

#include <optional>
#include <system_error>
#include <utility>

#include "tests/support/test_host.h"

namespace wavelock {
namespace {

class FailingFile : public File {
 public:
  FailingFile(FailingFiles& service, std::unique_ptr<File> real)
      : service_(service), real_(std::move(real)) {}

  std::string Name() const override { return real_->Name(); }
  std::string Path() const override { return real_->Path(); }
  std::optional<std::size_t> Read(std::span<std::byte> buffer) override;
  bool Write(std::span<const std::byte> bytes) override;

  std::optional<std::uint64_t> Seek(std::int64_t offset, SeekOrigin origin) override {
    if (Fails(FileOperation::kSeek)) return std::nullopt;
    return real_->Seek(offset, origin);
  }
  std::optional<std::uint64_t> Size() override {
    if (Fails(FileOperation::kSize)) return std::nullopt;
    return real_->Size();
  }
  bool Flush() override { return !Fails(FileOperation::kFlush) && real_->Flush(); }
  std::optional<FileStatus> Status() override {
    if (Fails(FileOperation::kStatus)) return std::nullopt;
    return real_->Status();
  }

 private:
  bool Fails(FileOperation operation) { return service_.Note(operation, Path()) == FaultKind::kError; }

  FailingFiles& service_;
  std::unique_ptr<File> real_;
};

std::optional<std::size_t> FailingFile::Read(std::span<std::byte> buffer) {
  const auto fault = service_.Note(FileOperation::kRead, Path());
  if (fault == FaultKind::kError) return std::nullopt;
  return real_->Read(fault == FaultKind::kShort ? buffer.first(buffer.size() / 2) : buffer);
}

bool FailingFile::Write(std::span<const std::byte> bytes) {
  const auto fault = service_.Note(FileOperation::kWrite, Path());
  if (fault == FaultKind::kShort) real_->Write(bytes.first(bytes.size() / 2));
  return !fault && real_->Write(bytes);
}

}  // namespace

std::unique_ptr<File> FailingFiles::Open(const std::string& path, OpenMode mode, std::string* errorText) {
  if (Note(FileOperation::kOpen, path) == FaultKind::kError) {
    if (errorText != nullptr) *errorText = std::make_error_code(std::errc::io_error).message();
    return nullptr;
  }
  auto file = real_.Open(path, mode, errorText);
  if (!file) return nullptr;
  return std::make_unique<FailingFile>(*this, std::move(file));
}

bool FailingFiles::Exists(const std::string& path) {
  return Note(FileOperation::kExists, path) != FaultKind::kError && real_.Exists(path);
}

bool FailingFiles::Delete(const std::string& path) {
  return Note(FileOperation::kDelete, path) != FaultKind::kError && real_.Delete(path);
}

std::optional<FileStatus> FailingFiles::Status(const std::string& path) {
  if (Note(FileOperation::kStatus, path) == FaultKind::kError) return std::nullopt;
  return real_.Status(path);
}

bool FailingFiles::SetStatus(const std::string& path, const FileStatus& status) {
  return Note(FileOperation::kSetStatus, path) != FaultKind::kError && real_.SetStatus(path, status);
}

bool FailingFiles::Replace(const std::string& from, const std::string& to) {
  return Note(FileOperation::kReplace, from) != FaultKind::kError && real_.Replace(from, to);
}

std::optional<FaultKind> FailingFiles::Note(FileOperation operation, const std::string& path) {
  const std::size_t call = calls_.size();
  calls_.push_back({operation, path});
  if (call < firstFault_ || call > lastFault_) return std::nullopt;
  return kind_;
}

void FailingFiles::SetFaults(std::size_t first, std::size_t last, FaultKind kind) {
  firstFault_ = first;
  lastFault_ = last;
  kind_ = kind;
}

void FailEveryCall(const std::function<void(MemoryFiles&)>& prepare,
                   const std::function<bool(Host&, FaultKind)>& operation,
                   const std::function<void(MemoryFiles&, bool isDone)>& check) {
  struct Fault {
    std::size_t call;
    FaultKind kind;
    bool isLasting;
  };
  struct Run {
    std::size_t calls;
    bool isDone;
  };
  const auto run = [&](const std::optional<Fault>& fault) {
    MemoryFiles memory;
    prepare(memory);
    FailingFiles failing(memory);
    if (fault && fault->isLasting) failing.FailFrom(fault->call, fault->kind);
    if (fault && !fault->isLasting) failing.FailAt(fault->call, fault->kind);
    TestHost test(failing);
    const bool isDone = operation(test.host, fault ? fault->kind : FaultKind::kError);
    check(memory, isDone);
    return Run{failing.Calls().size(), isDone};
  };
  const Run whole = run(std::nullopt);
  EXPECT_TRUE(whole.isDone);
  bool showed = false;
  for (std::size_t call = 0; call < whole.calls; ++call) {
    for (const Fault& fault : {Fault{call, FaultKind::kError, false}, Fault{call, FaultKind::kError, true},
                               Fault{call, FaultKind::kShort, false}}) {
      SCOPED_TRACE(testing::Message() << "call " << call << " of " << whole.calls << ", lasting "
                                      << fault.isLasting << ", kind " << static_cast<int>(fault.kind));
      const bool isDone = run(fault).isDone;
      showed = showed || (fault.isLasting && !isDone);
      if (testing::Test::HasFailure()) return;
    }
  }
  EXPECT_TRUE(showed);
}

}  // namespace wavelock

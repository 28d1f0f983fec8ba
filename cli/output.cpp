#include "cli/output.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "cli/complaint.h"
#include "cli/options.h"
#include "cli/terminal.h"
#include "wavelock/platform/printable.h"

namespace wavelock::command {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBufferBytes = 256 * 1024;

std::string SystemText(int error) {
  return std::generic_category().message(error);
}

// Devices and pipes have nothing to lose.
bool IsRegularFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return fs::equivalent(a, b, error);
}

std::FILE* OpenNamed(const std::string& path, bool force) {
  std::error_code error;
  const bool overwrites = force || (fs::exists(path, error) && !IsRegularFile(path));
  if (!IsFree(path, overwrites)) return nullptr;
  std::FILE* const stream = std::fopen(path.c_str(), overwrites ? "wb" : "wbx");
  if (stream == nullptr) Complain(path, SystemText(errno));
  return stream;
}

}  // namespace

void OutputOptions::AddTo(CLI::App& parser) {
  AddText(parser, "-o,--output", path, "FILE", "Write to this file instead of standard output");
  AddFlag(parser, "--force", force, "Overwrite a file that exists");
}

bool IsFree(const std::string& path, bool force) {
  std::error_code error;
  if (force || !fs::exists(fs::symlink_status(path, error))) return true;
  Complain(path, "The file exists. With --force it is overwritten.");
  return false;
}

Output::Output(std::FILE* stream, std::string path)
    : stream_(stream), path_(std::move(path)), isTerminal_(command::IsTerminal(stream)) {}

std::unique_ptr<Output> Output::Open(const OutputOptions& options, const std::string& input) {
  const bool isNamed = !options.path.empty() && options.path != "-";
  if (isNamed && IsSameFile(options.path, input)) {
    Complain(options.path, "The output would overwrite the recording that it comes from.");
    return nullptr;
  }
  std::FILE* const stream = isNamed ? OpenNamed(options.path, options.force) : stdout;
  if (stream == nullptr) return nullptr;
  std::setvbuf(stream, nullptr, _IOFBF, kBufferBytes);
  return std::unique_ptr<Output>(new Output(stream, isNamed ? options.path : std::string()));
}

Output::~Output() {
  if (IsStandardOutput()) return;
  std::fclose(stream_);
  std::error_code error;
  if (!isFinished_ && IsRegularFile(path_)) fs::remove(path_, error);
}

bool Output::Write(std::string_view bytes) {
  return isTerminal_ ? WriteStyled(Printable(bytes, "\n\t")) : WriteStyled(bytes);
}

bool Output::Write(std::span<const std::byte> bytes) {
  return Write(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

bool Output::WriteStyled(std::string_view text) {
  if (hasFailed_) return false;
  if (text.empty() || std::fwrite(text.data(), text.size(), 1, stream_) == 1) return true;
  return NoteFailure();
}

bool Output::Finish() {
  if (!hasFailed_ && std::fflush(stream_) != 0) NoteFailure();
  isFinished_ = !hasFailed_;
  return isFinished_ || readerIsGone_;
}

bool Output::NoteFailure() {
  const int error = errno;
  hasFailed_ = true;
  readerIsGone_ = error == EPIPE;
  if (!readerIsGone_) Complain(IsStandardOutput() ? "standard output" : path_, SystemText(error));
  return false;
}

bool Output::TakesStyles() const {
  return TakesColor(stream_);
}

}  // namespace wavelock::command

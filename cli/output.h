// Where data goes: standard output, or a file that is not overwritten by accident.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace wavelock::command {

struct OutputOptions {
  std::string path{};  // empty or "-": standard output
  bool force = false;

  void AddTo(CLI::App& parser);
};

// Whether a file may be written at a path: none is there, or `force` is set. If not, standard error says so.
bool IsFree(const std::string& path, bool force);

class Output {
 public:
  // Null when the file cannot be made, stands there already and `force` is not set, or is `input` itself;
  // standard error then says why.
  static std::unique_ptr<Output> Open(const OutputOptions& options, const std::string& input);

  // A file that was not finished is removed.
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // False when nothing more can be written. The first failure is said on standard error, unless it is that
  // the reader of a pipe has gone: see ReaderIsGone. A terminal gets printable text, whatever the bytes are.
  bool Write(std::string_view bytes);
  bool Write(std::span<const std::byte> bytes);

  // The same for text that is printable but for styles, which go to terminals that take them.
  bool WriteStyled(std::string_view text);

  // Brings everything out. True also for a reader that has gone: it had what it wanted.
  [[nodiscard]] bool Finish();

  bool ReaderIsGone() const { return readerIsGone_; }
  bool IsTerminal() const { return isTerminal_; }
  bool TakesStyles() const;

 private:
  Output(std::FILE* stream, std::string path);

  bool NoteFailure();
  bool IsStandardOutput() const { return path_.empty(); }

  std::FILE* stream_;
  const std::string path_;
  const bool isTerminal_;
  bool hasFailed_ = false;
  bool readerIsGone_ = false;
  bool isFinished_ = false;
};

}  // namespace wavelock::command

// wavelock upgrade: recordings of any generation in the current form, compared with what they were before
// they are let into their place.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/comparison.h"
#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/subcommands.h"
#include "wavelock/platform/printable.h"

namespace wavelock::command {
namespace {

namespace fs = std::filesystem;

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock upgrade *.rec -o upgraded\n"
    "  wavelock upgrade --in-place night.rec\n"
    "\n"
    "Both files are read back and compared before the new one gets its name. What the current form has no\n"
    "place for is told, and the exit code is then 3. A file that fails does not stop the others.\n";

struct Options {
  std::vector<std::string> paths{};
  std::string folder{};
  bool inPlace = false;
  bool force = false;
  bool json = false;
};

struct Result {
  std::string path;
  std::optional<std::string> target{};  // none where nothing may be written
  ExitCode code = kFailed;
  std::vector<std::string> losses{};
};

using Targets = std::vector<std::string>;  // that were written

// Tells how much of a file was written.
class ProgressFile : public File {
 public:
  ProgressFile(std::unique_ptr<File> file, Progress& progress)
      : file_(std::move(file)), progress_(progress) {}

  std::string Name() const override { return file_->Name(); }
  std::string Path() const override { return file_->Path(); }
  std::optional<std::size_t> Read(std::span<std::byte> buffer) override { return file_->Read(buffer); }
  bool Write(std::span<const std::byte> bytes) override {
    progress_.Advance(bytes.size());
    return file_->Write(bytes);
  }
  std::optional<std::uint64_t> Seek(std::int64_t offset, SeekOrigin origin) override {
    return file_->Seek(offset, origin);
  }
  std::optional<std::uint64_t> Size() override { return file_->Size(); }
  bool Flush() override { return file_->Flush(); }
  std::optional<FileStatus> Status() override { return file_->Status(); }

 private:
  std::unique_ptr<File> file_;
  Progress& progress_;
};

// Files that exist are opened for reading alone; new ones can be made.
class UpgradeFiles : public ReadOnlyFiles {
 public:
  UpgradeFiles(FileService& files, Progress& progress)
      : ReadOnlyFiles(files), files_(files), progress_(progress) {}

  std::unique_ptr<File> Open(const std::string& path, OpenMode mode, std::string* errorText) override {
    if (mode != OpenMode::kCreateNew) return ReadOnlyFiles::Open(path, mode, errorText);
    std::unique_ptr<File> made = files_.Open(path, mode, errorText);
    return made ? std::make_unique<ProgressFile>(std::move(made), progress_) : nullptr;
  }
  bool Delete(const std::string& path) override { return files_.Delete(path); }
  bool Replace(const std::string& from, const std::string& to) override { return files_.Replace(from, to); }
  std::string BehindLinks(const std::string& path) override { return files_.BehindLinks(path); }

 private:
  FileService& files_;
  Progress& progress_;
};

// A file under a name of its own until it is found to be good; removed when it is not.
class Staged {
 public:
  explicit Staged(const std::string& target)
      : path_(target + ".unverified"), target_(target), isFree_(IsFreeName(path_)) {}
  ~Staged() {
    std::error_code error;
    if (isFree_ && !isPlaced_) fs::remove(path_, error);
  }
  Staged(const Staged&) = delete;
  Staged& operator=(const Staged&) = delete;

  const std::string& Path() const { return path_; }
  bool IsFree() const { return isFree_; }  // whether nothing of that name was there
  // With the rights of the recording at `source`, where there is nothing yet whose rights it takes.
  bool Place(const std::string& source) {
    std::error_code error;
    const fs::file_status status = fs::status(source, error);
    if (!error) fs::permissions(path_, status.permissions(), error);
    return isPlaced_ = Host::Default().files.Replace(path_, target_);
  }

 private:
  // A name that cannot be looked up is told when the file is made.
  static bool IsFreeName(const std::string& path) {
    std::error_code error;
    return !fs::exists(fs::symlink_status(path, error));
  }

  const std::string path_;
  const std::string target_;
  const bool isFree_;
  bool isPlaced_ = false;
};

std::uint64_t SizeOf(const std::string& path) {
  std::error_code error;
  const auto size = fs::file_size(path, error);
  return error ? 0 : size;
}

std::nullopt_t Fail(const std::string& path, std::string_view why) {
  Complain(path, why);
  return std::nullopt;
}

bool IsReadOnly(const std::string& path) {
  const auto status = Host::Default().files.Status(path);
  return status && status->readOnly;
}

bool IsSameFile(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return fs::equivalent(a, b, error);
}

// Where the upgraded file goes. None, with the reason said, when nothing may be written there: what has been
// made already and the recordings themselves are not overwritten by any force.
std::optional<std::string> TargetOf(const std::string& path, const Options& options, const Targets& made) {
  if (options.inPlace) {
    if (IsReadOnly(path)) return Fail(path, "The recording is read-only and stays as it is.");
    return path;
  }
  const fs::path target = fs::path(options.folder) / fs::path(path).filename();
  const auto isTarget = [&target](const std::string& other) { return IsSameFile(target, other); };
  if (isTarget(path))
    return Fail(path, "The output would overwrite the recording that it comes from. That is for --in-place.");
  if (std::any_of(options.paths.begin(), options.paths.end(), isTarget))
    return Fail(path, "The output would overwrite another of the recordings.");
  if (std::any_of(made.begin(), made.end(), isTarget))
    return Fail(path, "The output would overwrite that of another recording of the same name.");
  if (IsReadOnly(target.string())) return Fail(target.string(), "The file is read-only and stays as it is.");
  return IsFree(target.string(), options.force) ? std::optional(target.string()) : std::nullopt;
}

// Why a recording that was opened could not be copied.
std::string_view WhyNotSaved(CRecordingFile& recording, const NamedModalInterface& modal) {
  constexpr std::pair<MessageNumber, std::string_view> kLosses[] = {
      {MessageNumber::kRateRefused, "It cannot be upgraded: its header tells no time axis."},
      {MessageNumber::kEventsNotRead, "It cannot be upgraded: its events cannot be read."},
      {MessageNumber::kPairMatrixNotRead, "It cannot be upgraded: its channel pairs cannot be read."}};
  if (recording.GetFileClass(&recording.rawHeader) == kUnreadable)
    return "It cannot be upgraded: it is not known what kind of data it holds.";
  for (const auto& [number, why] : kLosses) {
    if (modal.HasShown(number)) return why;
  }
  return "It cannot be upgraded: its header, its tail and its data do not agree, or the copy cannot be "
         "written.";
}

// What of a recording is not in its copy; none where the copy does not hold the same data.
std::optional<std::vector<std::string>> LossesOfCopy(CRecordingFile& recording, const std::string& path) {
  ReadOnlyFiles files(Host::Default().files);
  Host host{files, Host::Default().profile, Host::Default().modal, Host::Default().process};
  constexpr int kSilent = 1;
  CRecordingFile copy(kSilent, host);
  if (!copy.OpenFile(path) || !HoldSameData(recording, copy)) return std::nullopt;
  return Losses(recording, copy);
}

// The copy gets its name when it holds what the recording holds. None, with the reason said, when it did not
// come so far.
std::optional<std::vector<std::string>> WriteUpgraded(CRecordingFile& recording, const std::string& path,
                                                      const std::string& target,
                                                      const NamedModalInterface& modal) {
  Staged staged(target);
  if (!staged.IsFree()) return Fail(staged.Path(), "The file stands in the way of an upgrade.");
  if (!recording.SaveCopy(staged.Path())) return Fail(path, WhyNotSaved(recording, modal));
  auto losses = LossesOfCopy(recording, staged.Path());
  if (!losses) return Fail(path, "The upgraded file does not hold the same data and was removed.");
  if (!staged.Place(path)) return Fail(target, "The file cannot be put into its place.");
  return losses;
}

Result Upgrade(const std::string& path, const Options& options, const Targets& made, const Output& output) {
  Result result{.path = path};
  result.target = TargetOf(path, options, made);
  if (!result.target) return result;
  Progress progress(path, SizeOf(path), output);
  UpgradeFiles files(Host::Default().files, progress);
  NamedModalInterface modal(Host::Default().modal, path);
  Host host{files, Host::Default().profile, modal, Host::Default().process};
  CRecordingFile recording(0, host);
  if (!recording.OpenFile(path)) return result;
  // Quotes and blanks around a path are dropped when it is opened.
  if (!IsSameFile(recording.filePath, path)) {
    Complain(path, "The name opens another file; it cannot be upgraded under this one.");
    return result;
  }
  const auto losses = WriteUpgraded(recording, path, *result.target, modal);
  if (!losses) return result;
  result.losses = *losses;
  result.code = losses->empty() ? kDone : kDoneWithLoss;
  return result;
}

std::string_view StatusOf(ExitCode code) {
  return code == kDone ? "done" : code == kDoneWithLoss ? "done with loss" : "failed";
}

std::string AsJson(const Result& result) {
  const nlohmann::json line = {{"path", result.path},
                               {"output", result.target.value_or("")},
                               {"status", StatusOf(result.code)},
                               {"losses", result.losses}};
  return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string AsText(const Result& result) {
  std::string text = fmt::format("{}: {}\n", Printable(result.path), StatusOf(result.code));
  for (const std::string& loss : result.losses) text += "  " + Printable(loss) + "\n";
  return text;
}

ExitCode Run(const Options& options) {
  if (options.inPlace != options.folder.empty()) {
    Complain("An upgrade goes either into a folder (-o) or in the recordings' own place (--in-place).");
    return kUsage;
  }
  const auto output = Output::Open({}, {});
  if (!output) return kFailed;
  std::error_code error;
  if (!options.inPlace) fs::create_directories(options.folder, error);
  ExitCode code = kDone;
  Targets made;
  for (const std::string& path : options.paths) {
    const Result result = Upgrade(path, options, made, *output);
    if (result.code != kFailed) made.push_back(*result.target);
    code = Worse(code, result.code);
    if (!output->Write(options.json ? AsJson(result) : AsText(result))) break;
  }
  return output->Finish() ? code : kFailed;
}

}  // namespace

Subcommand MakeUpgrade(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "upgrade", "Bring recordings of any generation to the current form", kExamples);
  const auto options = std::make_shared<Options>();
  AddFiles(parser, options->paths, "The recordings");
  AddText(parser, "-o,--output", options->folder, "DIR", "Write the upgraded recordings into this folder");
  AddFlag(parser, "--in-place", options->inPlace, "Replace the recordings by the upgraded ones");
  AddFlag(parser, "--force", options->force, "Overwrite files that exist in the folder");
  AddFlag(parser, "--json", options->json, "One JSON object a recording");
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

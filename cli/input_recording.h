// A recording that the command only looks at, and what the library said while opening it.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "wavelock/prompts/messages.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::command {

// Opens files for reading whatever is asked for, so that looking at a recording never changes it.
class ReadOnlyFiles : public FileService {
 public:
  explicit ReadOnlyFiles(FileService& files) : files_(files) {}

  std::unique_ptr<File> Open(const std::string& path, OpenMode mode, std::string* errorText) override;
  bool Exists(const std::string& path) override { return files_.Exists(path); }
  bool Delete(const std::string&) override { return false; }
  std::optional<FileStatus> Status(const std::string& path) override { return files_.Status(path); }
  bool SetStatus(const std::string&, const FileStatus&) override { return false; }
  bool Replace(const std::string&, const std::string&) override { return false; }

 private:
  FileService& files_;
};

// Puts the name of the file before everything that is said about it.
class NamedModalInterface : public ModalInterface {
 public:
  NamedModalInterface(ModalInterface& modal, std::string path) : modal_(modal), path_(std::move(path)) {}

  void ShowMessage(const ModalText& message) override;
  bool AskYesNo(const ModalText& question) override;
  bool RunDialog(ModalDialog& dialog) override;
  std::optional<std::string> AskSavePath(const SavePathDialog& dialog) override {
    return modal_.AskSavePath(dialog);
  }
  std::optional<std::uint32_t> AskColour(std::uint32_t usual) override { return modal_.AskColour(usual); }
  void BeginWaitCursor() override { modal_.BeginWaitCursor(); }
  void EndWaitCursor() override { modal_.EndWaitCursor(); }

  bool HasShown(MessageNumber number) const { return shown_.count(static_cast<int>(number)) != 0; }

 private:
  ModalText Named(ModalText text);

  ModalInterface& modal_;
  const std::string path_;
  std::set<int> shown_;
};

class InputRecording {
 public:
  // Null when the file cannot be used; standard error then says why.
  static std::unique_ptr<InputRecording> Open(const std::string& path);

  CRecordingFile& operator*() { return recording_; }
  CRecordingFile* operator->() { return &recording_; }
  const std::string& Path() const { return path_; }

  // Opened, but not everything that it holds could be read.
  bool HasLoss() const;
  bool HasShown(MessageNumber number) const { return modal_.HasShown(number); }

  // Whether it is of one of these kinds; if not, standard error says what it holds instead.
  bool Require(std::initializer_list<int> kinds);

  // Whether its setup tells all channels of its data; if not, standard error says so.
  bool RequireChannels();

 private:
  explicit InputRecording(const std::string& path);

  const std::string path_;
  ReadOnlyFiles files_;
  NamedModalInterface modal_;
  Host host_;
  CRecordingFile recording_;
};

// Labels of the channels in use.
std::vector<std::string> LabelsOf(const CSetup& setup);

// A kind of recording in a word or two.
std::string_view NameOfKind(int dataKind);

}  // namespace wavelock::command

// Setups in files: a setup file of their own, or the tail of a recording.
#include <new>
#include <string>

#include "wavelock/platform/replacing.h"
#include "wavelock/prompts/notices.h"
#include "wavelock/setup/setup.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

constexpr char kExtension[] = "ast";
constexpr char kFilter[] = "Setup Files (*.ast)|*.ast||";

}  // namespace

bool CSetup::LoadFile() try {
  CTffFile file(*host_);
  return file.Open(setupFileName, OpenMode::kReadOnly) && Load(file);
} catch (const std::bad_alloc&) {
  return false;
}

void CSetup::SaveFile() try {
  if (!SaveTo(setupFileName, host_->files))
    ShowNoticeById(*host_, MessageNumber::kSetupFileNotWritable, setupFileName);
} catch (const std::bad_alloc&) {
}

// Whoever looks finds the old file or the new one, whole.
bool CSetup::SaveTo(const std::string& path, FileService& files) {
  return ReplaceWhole(files, path, [this](File& open) {
    CTffFile file(open, 0);
    return Write(file);
  });
}

bool CSetup::SaveAs(const char* name) try {
  const std::string path = name != nullptr ? name : setupFileName;
  const auto chosen = host_->modal.AskSavePath({.defaultExtension = kExtension,
                                                .initialFile = NameOf(path),
                                                .initialFolder = DirectoryOf(path),
                                                .filter = kFilter});
  if (!chosen) return false;
  setupFileName = *chosen;
  host_->profile.SetString(profile::kState, profile::kSetupFile, setupFileName);
  SaveFile();
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

bool CSetup::LoadEmbedded(File& file, std::uint64_t position) {
  CTffFile tail(file, position);
  return Load(tail);
}

bool CSetup::SaveEmbedded(File& file, std::uint64_t position) {
  UpdateTimeAxis();
  CTffFile tail(file, position);
  return Write(tail);
}

// The setup file of the profile, or else the default one beside the program, or else no file at all: what
// stands there and cannot be read is removed.
void CSetup::FindAndLoadFile() {
  if (LoadFile()) return;
  setupFileName = ProgramDirectory() + std::string(kDefaultSetupFile);
  if (!LoadFile()) {
    host_->files.Delete(setupFileName);
    ResetToDefaults();
  }
  host_->profile.SetString(profile::kState, profile::kSetupFile, setupFileName);
}

std::string CSetup::ProgramDirectory() const {
  const PathParts parts = SplitPath(host_->process.ExecutablePath());
  const bool isRelative =
      !parts.directory.empty() && !parts.directory.starts_with('\\') && !parts.directory.starts_with('/');
  return parts.drive + (isRelative ? "\\" : "") + parts.directory;
}

std::string CSetup::NameOf(std::string_view path) {
  const PathParts parts = SplitPath(path);
  return parts.name + parts.extension;
}

std::string CSetup::DirectoryOf(std::string_view path) {
  const PathParts parts = SplitPath(path);
  return parts.drive + parts.directory;
}

}  // namespace wavelock

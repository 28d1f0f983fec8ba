// Runs the wavelock command as a person would, in a folder of its own.
#pragma once

#include <string>

#include "tests/support/recording_builder.h"
#include "tests/support/temporary_folder.h"

namespace wavelock {

struct Outcome {
  int exitCode = -1;
  std::string out;
  std::string err;
};

class CommandFolder {
 public:
  void Put(const std::string& name, const RecordingBuilder& recording);
  void PutText(const std::string& name, const std::string& text);
  std::string Path(const std::string& name) const { return folder_.Path(name); }
  bool Holds(const std::string& name) const;
  std::string Text(const std::string& name) const;  // all bytes of that file

  // `words` behind "wavelock", as they are typed into a shell.
  Outcome Wavelock(const std::string& words) const;

  // A line for the shell, in which $W is the command.
  Outcome Shell(const std::string& line) const;

 private:
  const TemporaryFolder folder_;
};

}  // namespace wavelock

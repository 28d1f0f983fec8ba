#include "tests/command/run_command.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace wavelock {
namespace {

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

void CommandFolder::Put(const std::string& name, const RecordingBuilder& recording) {
  ASSERT_TRUE(recording.WriteTo(folder_.Path(name)));
}

void CommandFolder::PutText(const std::string& name, const std::string& text) {
  std::ofstream(folder_.Path(name), std::ios::binary) << text;
}

bool CommandFolder::Holds(const std::string& name) const {
  return std::filesystem::exists(folder_.Path(name));
}

std::string CommandFolder::Text(const std::string& name) const {
  return TextOf(folder_.Path(name));
}

Outcome CommandFolder::Wavelock(const std::string& words) const {
  return Shell("$W " + words);
}

Outcome CommandFolder::Shell(const std::string& line) const {
  const TemporaryFolder streams;
  const std::string script = "cd '" + folder_.Path() + "' && { " + line + "; }";
  std::ofstream(streams.Path("script")) << script;
  const int status =
      std::system(("W='" WAVELOCK_COMMAND "' sh '" + streams.Path("script") + "' </dev/null >'" +
                   streams.Path("out") + "' 2>'" + streams.Path("err") + "'")
                      .c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, TextOf(streams.Path("out")),
          TextOf(streams.Path("err"))};
}

}  // namespace wavelock

// The default host of a POSIX system.
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "wavelock/platform/console_modal_interface.h"
#include "wavelock/platform/file_profile_store.h"
#include "wavelock/platform/host.h"
#include "wavelock/platform/posix_files.h"
#include "wavelock/platform/posix_process.h"
#include "wavelock/platform/user_files.h"

namespace wavelock {
namespace {

constexpr char kUserFolder[] = "/wavelock/";
constexpr char kProfileFile[] = "profile.ini";

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

bool IsTerminal() {
  return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

struct DefaultServices {
  PosixFiles files;
  FileProfileStore profile{files, UserFilePath(kProfileFile)};
  ConsoleModalInterface modal{std::cin, std::cerr, IsTerminal()};
  PosixProcess process;
  Host host{files, profile, modal, process};
};

}  // namespace

std::string UserFilePath(std::string_view name) {
  const std::string configuration = Environment("XDG_CONFIG_HOME");
  if (configuration.starts_with('/')) return (configuration + kUserFolder).append(name);
  const std::string home = Environment("HOME");
  return home.empty() ? home : (home + "/.config" + kUserFolder).append(name);
}

Host& Host::Default() {
  static DefaultServices services;
  return services.host;
}

}  // namespace wavelock

// The wavelock command: data goes to standard output, words go to standard error.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <csignal>
#include <exception>
#include <string>
#include <vector>

#include "cli/complaint.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kEpilogue[] =
    "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 done with loss.\n"
    "\"wavelock SUBCOMMAND --help\" tells more, with examples.";

// A reader that goes away, like `head`, is no reason to be killed: the next write tells.
void LetWritesFail() {
#ifdef SIGPIPE
  std::signal(SIGPIPE, SIG_IGN);
#endif
}

std::string UsageFault(const CLI::App*, const CLI::Error& fault) {
  return "wavelock: " + std::string(fault.what()) + "\nRun with --help for more information.\n";
}

ExitCode Run(int argc, char** argv) {
  CLI::App program("Looks into recordings of every generation and takes data out of them.", "wavelock");
  program.set_version_flag("--version", "wavelock " WAVELOCK_VERSION);
  program.failure_message(UsageFault);
  program.require_subcommand(1);
  std::vector<Subcommand> subcommands;
  for (MakeSubcommand* const make : kSubcommands) subcommands.push_back(make(program));
  program.footer(kEpilogue);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& outcome) {  // a request for help is one too
    return program.exit(outcome) == 0 ? kDone : kUsage;
  }
  for (const Subcommand& subcommand : subcommands) {
    if (subcommand.parser->parsed()) return subcommand.run();
  }
  return kUsage;
}

}  // namespace
}  // namespace wavelock::command

int main(int argc, char** argv) {
  using namespace wavelock::command;
  LetWritesFail();
  try {
    return Run(argc, argv);
  } catch (const std::exception& fault) {  // there is no memory, most likely
    Complain(fault.what());
    return kFailed;
  }
}

// What a subcommand is to the program: a place in the parser, and work that is done once the arguments are
// known.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace wavelock::command {

enum ExitCode : int {
  kDone = 0,
  kFailed = 1,
  kUsage = 2,         // the arguments make no sense; nothing was done
  kDoneWithLoss = 3,  // the output stands, but something in the input could not be read
};

// The worse of two outcomes, for work on several files.
inline ExitCode Worse(ExitCode a, ExitCode b) {
  if (a == kFailed || b == kFailed) return kFailed;
  return a == kDone ? b : a;
}

struct Subcommand {
  CLI::App* parser;  // belongs to the program
  std::function<ExitCode()> run;
};

using MakeSubcommand = Subcommand(CLI::App& program);

}  // namespace wavelock::command

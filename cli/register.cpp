// wavelock register: makes the control known to every program of the user, or unknown again.
#include <fmt/format.h>

#include <string>

#include "cli/complaint.h"
#include "cli/control_module.h"
#include "cli/options.h"
#include "cli/subcommands.h"
#include "wavelock/platform/component_loader.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock register\n"
    "  wavelock register --remove\n";

struct Options {
  std::string module{};
  bool remove = false;
};

ExitCode Run(const Options& options) {
  const std::string module = options.module.empty() ? ShippedModule() : options.module;
  SystemLibraries libraries;
  std::string words;
  const Result result = options.remove ? UnregisterModule(libraries, module, &words)
                                       : RegisterModule(libraries, module, &words);
  if (result == Result::kDone) return kDone;
  Complain(module, fmt::format("{} (0x{:08X}). {}",
                               options.remove ? "It cannot be taken out" : "It cannot be entered",
                               static_cast<std::uint32_t>(result), words));
  return kFailed;
}

}  // namespace

Subcommand MakeRegister(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "register", "Make the control known to every program of the user", kExamples);
  const auto options = std::make_shared<Options>();
  AddArgument(parser, "MODULE", options->module, "The one that came with this command if nothing is said",
              Need::kOptional);
  AddFlag(parser, "--remove", options->remove, "Make it unknown again");
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

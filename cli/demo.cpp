// wavelock demo: recordings of a made-up session, to try everything else on.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "cli/complaint.h"
#include "cli/demo_recordings.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/subcommands.h"
#include "wavelock/platform/host.h"

namespace wavelock::command {
namespace {

namespace fs = std::filesystem;

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock demo demo && wavelock info demo/*.rec\n"
    "  wavelock demo demo --seed 2 --force\n"
    "  wavelock demo small --seconds 5 --channels 2\n"
    "\n"
    "One recording of every kind, and a setup file. The same session gives the same files, byte by byte.\n";

constexpr std::uint32_t kLeastSeconds = 5;
constexpr std::uint32_t kMostSeconds = 600;
constexpr std::size_t kFewestChannels = 2;

struct Options {
  std::string folder{};
  DemoPlan session{};
  bool force = false;
};

ExitCode Run(const Options& options) {
  const fs::path folder = options.folder;
  for (const std::string& name : DemoFileNames()) {
    if (!IsFree((folder / name).string(), options.force)) return kFailed;
  }
  std::error_code error;
  fs::create_directories(folder, error);
  const std::string missing = MakeDemoFiles(Host::Default().files, options.folder, options.session);
  if (missing.empty()) return kDone;
  Complain((folder / missing).string(), "The file cannot be written.");
  return kFailed;
}

}  // namespace

Subcommand MakeDemo(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "demo", "Make recordings of every kind to try things on", kExamples);
  const auto options = std::make_shared<Options>();
  AddArgument(parser, "DIR", options->folder, "The folder for them, which is made if there is none",
              Need::kRequired);
  AddCount(parser, "--seed", options->session.seed, "What happens in the session, 1 if nothing is said");
  AddCount(parser, "--seconds", options->session.seconds, "How long it lasts, 60 if nothing is said",
           {kLeastSeconds, kMostSeconds});
  AddCount(parser, "--channels", options->session.channels,
           "The first of the 32 electrodes, all if nothing is said", {kFewestChannels, kDemoElectrodeCount});
  AddFlag(parser, "--force", options->force, "Overwrite files that exist");
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

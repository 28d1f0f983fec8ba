// wavelock epochs: what is known about each epoch of an epoched recording.
#include <fmt/compile.h>
#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <string>
#include <vector>

#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/subcommands.h"
#include "wavelock/annotations/epoch_info.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock epochs trials.rec | column -t\n"
    "  wavelock epochs trials.rec --format json -o trials.json\n";

enum class EpochFormat { kTsv, kJson };

const Choices<EpochFormat> kFormats = {{"tsv", EpochFormat::kTsv}, {"json", EpochFormat::kJson}};

struct Options {
  std::string path{};
  EpochFormat format = EpochFormat::kTsv;
  OutputOptions output{};
};

// A reaction time is whatever the file has.
std::string Time(float seconds, const char* otherwise) {
  return std::isfinite(seconds) ? fmt::format("{}", seconds) : otherwise;
}

bool WriteTsv(const std::vector<EpochInfo>& epochs, Output& output) {
  if (!output.Write("epoch\taccepted\ttype\tcorrect\treaction_time\tresponse\n")) return false;
  std::string line;
  for (const EpochInfo& epoch : epochs) {
    line.clear();
    fmt::format_to(std::back_inserter(line), FMT_COMPILE("{}\t{}\t{}\t{}\t{}\t{}\n"), epoch.tail,
                   epoch.accept, epoch.trialType, epoch.correct, Time(epoch.reactionTime, "n/a"),
                   epoch.response);
    if (!output.Write(line)) return false;
  }
  return true;
}

// One array with a line for each epoch.
bool WriteJson(const std::vector<EpochInfo>& epochs, Output& output) {
  std::string line = "[";
  const char* separator = "\n";
  for (const EpochInfo& epoch : epochs) {
    fmt::format_to(
        std::back_inserter(line),
        FMT_COMPILE(
            R"({}{{"epoch":{},"accepted":{},"type":{},"correct":{},"reaction_time":{},"response":{}}})"),
        separator, epoch.tail, epoch.accept, epoch.trialType, epoch.correct, Time(epoch.reactionTime, "null"),
        epoch.response);
    if (!output.Write(line)) return false;
    line.clear();
    separator = ",\n";
  }
  return output.Write(line + "\n]\n");
}

// False when the facts of some epoch cannot be read.
bool Gather(CRecordingFile& recording, std::vector<EpochInfo>& epochs) {
  epochs.resize(recording.GetEpochCount());
  std::int32_t index = 0;
  for (EpochInfo& info : epochs) {
    info.tail = index;
    if (!recording.GetEpochInfo(index++, &info.trialType, &info.accept, &info.correct, &info.reactionTime,
                                &info.response)) {
      return false;
    }
  }
  return true;
}

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kEpochs})) return kFailed;
  std::vector<EpochInfo> epochs;
  if (!Gather(**input, epochs)) {
    Complain(options.path, "The file ends before the last epoch begins.");
    return kFailed;
  }
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  const auto write = options.format == EpochFormat::kTsv ? WriteTsv : WriteJson;
  write(epochs, *output);
  return output->Finish() ? kDone : kFailed;
}

}  // namespace

Subcommand MakeEpochs(CLI::App& program) {
  CLI::App* const parser =
      program.add_subcommand("epochs", "Epochs of an epoched recording: type, acceptance, response ...");
  const auto options = std::make_shared<Options>();
  AddFile(*parser, options->path);
  AddChoice(*parser, "--format", options->format, kFormats, "tsv if nothing is said");
  options->output.AddTo(*parser);
  parser->footer(kExamples);
  return {parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

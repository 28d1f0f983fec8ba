// wavelock labels: the labels that a continuous recording carries.
#include <string>

#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/row_writer.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock labels night.rec\n"
    "  wavelock labels night.rec --format json | jq -r '.[].text'\n";

struct Options {
  std::string path{};
  RowFormat format = RowFormat::kTsv;
  OutputOptions output{};
};

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kContinuous})) return kFailed;
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  RowWriter rows(*output, options.format, {"value", "text"});
  for (const LabelEntry& label : (*input)->labelList.Entries()) {
    if (!rows.Add({label.value, label.text})) break;
  }
  rows.Finish();
  return output->Finish() ? kDone : kFailed;
}

}  // namespace

Subcommand MakeLabels(CLI::App& program) {
  CLI::App* const parser =
      program.add_subcommand("labels", "Labels of a continuous recording: texts with a number each");
  const auto options = std::make_shared<Options>();
  AddFile(*parser, options->path);
  AddChoice(*parser, "--format", options->format, kRowFormats, "tsv if nothing is said");
  options->output.AddTo(*parser);
  parser->footer(kExamples);
  return {parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

// wavelock labels: the labels that a continuous recording carries.
#include "cli/input_recording.h"
#include "cli/row_command.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock labels night.rec\n"
    "  wavelock labels night.rec --format json | jq -r '.[].text'\n";

ExitCode Run(const RowOptions& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kContinuous})) return kFailed;
  return WriteRows(options, {"value", "text"}, [&](RowWriter& rows) {
    for (const LabelEntry& label : (*input)->labelList.Entries()) {
      if (!rows.Add(label.value, label.text)) return;
    }
  });
}

}  // namespace

Subcommand MakeLabels(CLI::App& program) {
  return MakeRowCommand(program, "labels", "Labels of a continuous recording: texts with a number each",
                        kExamples, Run);
}

}  // namespace wavelock::command

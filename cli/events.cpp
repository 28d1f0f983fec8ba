// wavelock events: what happened when, of a continuous recording.
#include "cli/input_recording.h"
#include "cli/row_command.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock events night.rec | column -t\n"
    "  wavelock events night.rec --format json -o night_events.json\n";

ExitCode Run(const RowOptions& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kContinuous})) return kFailed;
  if (input->HasShown(MessageNumber::kEventsNotRead)) return kFailed;
  const double rate = (*input)->GetSetup()->Rate();
  return WriteRows(options, {"onset", "sample", "stimulus", "keyboard", "keypad", "class"},
                   [&](RowWriter& rows) {
                     for (const EventRecord& event : (*input)->GetEventTable().Elements()) {
                       const std::uint32_t sample = event.point;
                       // Seconds from the first sample, of a recording that has a rate.
                       if (!rows.Add(Finite(sample / rate), sample, std::uint16_t{event.stimType},
                                     std::uint8_t{event.keyboard}, event.Keypad(), event.SegmentClass()))
                         return;
                     }
                   });
}

}  // namespace

Subcommand MakeEvents(CLI::App& program) {
  return MakeRowCommand(program, "events", "Events of a continuous recording, with seconds and samples",
                        kExamples, Run);
}

}  // namespace wavelock::command

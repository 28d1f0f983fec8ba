// wavelock epochs: what is known about each epoch of an epoched recording.
#include <vector>

#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/row_command.h"
#include "cli/subcommands.h"
#include "wavelock/annotations/epoch_info.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock epochs trials.rec | column -t\n"
    "  wavelock epochs trials.rec --format json -o trials.json\n";

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

ExitCode Run(const RowOptions& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kEpochs})) return kFailed;
  std::vector<EpochInfo> epochs;
  if (!Gather(**input, epochs)) {
    Complain(options.path, "The file ends before the last epoch begins.");
    return kFailed;
  }
  return WriteRows(options, {"epoch", "accepted", "type", "correct", "reaction_time", "response"},
                   [&](RowWriter& rows) {
                     for (const EpochInfo& epoch : epochs) {
                       if (!rows.Add(epoch.tail, epoch.accept, epoch.trialType, epoch.correct,
                                     Finite(epoch.reactionTime), epoch.response))
                         return;
                     }
                   });
}

}  // namespace

Subcommand MakeEpochs(CLI::App& program) {
  return MakeRowCommand(program, "epochs", "Epochs of an epoched recording: type, acceptance, response ...",
                        kExamples, Run);
}

}  // namespace wavelock::command

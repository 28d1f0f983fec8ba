// wavelock pairs: the channel pairs of a time-frequency recording, point by point.
#include <string>

#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/row_command.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock pairs coherence.rec | column -t\n"
    "  wavelock pairs coherence.rec | cut -f 1,2 | uniq\n";

std::string NameOfChannel(const CSetup& setup, std::int32_t channel) {
  const auto channels = setup.Channels();
  const auto index = static_cast<std::size_t>(channel);
  return index < channels.size() ? std::string(channels[index].label.View()) : std::to_string(index + 1);
}

void AddPairs(const CTFDPaired& pairs, const CSetup& setup, RowWriter& rows) {
  for (std::size_t pair = 0; pair < pairs.real.Rows(); ++pair) {
    const std::string first = NameOfChannel(setup, pairs.pairIndex[0][pair]);
    const std::string second = NameOfChannel(setup, pairs.pairIndex[1][pair]);
    for (std::size_t point = 0; point < pairs.real.Columns(); ++point) {
      if (!rows.Add(first, second, point, pairs.real[pair][point], pairs.imaginary[pair][point])) return;
    }
  }
}

ExitCode Run(const RowOptions& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kTimeFrequency})) return kFailed;
  if (input->HasShown(MessageNumber::kPairMatrixNotRead)) return kFailed;
  // An object that a read of a pair stopped comes with the second call.
  const CTFDPaired* pairs = (*input)->BuildPairedData();
  const bool isWhole = pairs != nullptr;
  if (!isWhole) pairs = (*input)->BuildPairedData();
  const ExitCode written =
      WriteRows(options, {"first", "second", "point", "real", "imaginary"}, [&](RowWriter& rows) {
        if (pairs != nullptr) AddPairs(*pairs, *(*input)->GetSetup(), rows);
      });
  if (written != kDone || isWhole || pairs == nullptr) return written;
  Complain(options.path, "A pair lies outside of the file. From there on the values are zero.");
  return kDoneWithLoss;
}

}  // namespace

Subcommand MakePairs(CLI::App& program) {
  return MakeRowCommand(program, "pairs",
                        "Channel pairs of a time-frequency recording, a line for each point", kExamples, Run);
}

}  // namespace wavelock::command

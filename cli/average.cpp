// wavelock average: an average, or its variance, as a table.
#include <string>

#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/sample_writer.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock average potential.avg > potential.csv\n"
    "  wavelock average potential.avg --variance --format npy -o variance.npy\n";

struct Options {
  std::string path{};
  bool variance = false;
  TableFormat format = TableFormat::kCsv;
  OutputOptions output{};
};

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kAverage, kAverageWithStatistics}) || !input->RequireChannels())
    return kFailed;
  const CTFDEpoch* const data = (*input)->LoadDataObject(0);
  if (data == nullptr) return kFailed;
  if (options.variance && !data->variance) {
    Complain(options.path, "The average has no variance.");
    return kFailed;
  }
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  const FloatMatrix& values = options.variance ? data->variance : data->main;
  WriteTable(*output, options.format, ValueType::kFloat32, LabelsOf(*(*input)->GetSetup()),
             std::as_bytes(values.All()));
  return output->Finish() ? kDone : kFailed;
}

}  // namespace

Subcommand MakeAverage(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "average",
                    "An average in microvolts: a row for each point, a column for each channel", kExamples);
  const auto options = std::make_shared<Options>();
  AddFile(parser, options->path);
  AddFlag(parser, "--variance", options->variance, "Its variance, as stored, instead");
  AddChoice(parser, "--format", options->format, kTableFormats, "csv if nothing is said");
  options->output.AddTo(parser);
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

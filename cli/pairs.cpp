// wavelock pairs: the channel pairs of a time-frequency recording, point by point.
#include <fmt/compile.h>
#include <fmt/format.h>

#include <iterator>
#include <string>

#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock pairs coherence.rec | column -t\n"
    "  wavelock pairs coherence.rec | cut -f 1,2 | uniq\n";

struct Options {
  std::string path{};
  OutputOptions output{};
};

// What would break a line into other fields becomes a blank.
std::string FieldOf(const CSetup& setup, std::int32_t channel) {
  const auto channels = setup.Channels();
  const auto index = static_cast<std::size_t>(channel);
  std::string label =
      index < channels.size() ? std::string(channels[index].label.View()) : std::to_string(index + 1);
  for (char& c : label) c = c == '\t' || c == '\n' || c == '\r' ? ' ' : c;
  return label;
}

bool WriteTsv(const CTFDPaired& pairs, const CSetup& setup, Output& output) {
  std::string lines;
  for (std::size_t pair = 0; pair < pairs.real.Rows(); ++pair) {
    const std::string first = FieldOf(setup, pairs.pairIndex[0][pair]);
    const std::string second = FieldOf(setup, pairs.pairIndex[1][pair]);
    lines.clear();
    for (std::size_t point = 0; point < pairs.real.Columns(); ++point) {
      fmt::format_to(std::back_inserter(lines), FMT_COMPILE("{}\t{}\t{}\t{}\t{}\n"), first, second, point,
                     pairs.real[pair][point], pairs.imaginary[pair][point]);
    }
    if (!output.Write(lines)) return false;
  }
  return true;
}

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kTimeFrequency})) return kFailed;
  if (input->HasShown(MessageNumber::kPairMatrixNotRead)) return kFailed;
  // An object that a read of a pair stopped comes with the second call.
  const CTFDPaired* pairs = (*input)->BuildPairedData();
  const bool isWhole = pairs != nullptr;
  if (!isWhole) pairs = (*input)->BuildPairedData();
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  output->Write("first\tsecond\tpoint\treal\timaginary\n");
  if (pairs != nullptr) WriteTsv(*pairs, *(*input)->GetSetup(), *output);
  if (!output->Finish()) return kFailed;
  if (isWhole || pairs == nullptr) return kDone;
  Complain(options.path, "A pair lies outside of the file. From there on the values are zero.");
  return kDoneWithLoss;
}

}  // namespace

Subcommand MakePairs(CLI::App& program) {
  CLI::App* const parser =
      program.add_subcommand("pairs", "Channel pairs of a time-frequency recording, a line for each point");
  const auto options = std::make_shared<Options>();
  AddFile(*parser, options->path);
  options->output.AddTo(*parser);
  parser->footer(kExamples);
  return {parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

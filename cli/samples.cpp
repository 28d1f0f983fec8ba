// wavelock samples: continuous samples as a table.
#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

#include "cli/channel_choice.h"
#include "cli/complaint.h"
#include "cli/counted.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/progress.h"
#include "cli/sample_stream.h"
#include "cli/sample_writer.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock samples night.rec > night.csv\n"
    "  wavelock samples night.rec --channels Fz,Cz,7 --from 5000 --to 10000\n"
    "  wavelock samples night.rec --format npy -o night.npy\n"
    "  wavelock samples night.rec --raw --no-rows --no-polynomials --format bin | sha256sum\n";

const Choices<TableFormat> kFormats = {
    {"csv", TableFormat::kCsv}, {"npy", TableFormat::kNpy}, {"bin", TableFormat::kBin}};

struct Options {
  std::string path{};
  std::uint64_t from = 0;
  std::optional<std::uint64_t> to{};
  SampleForm form{};
  std::vector<std::string> channels{};
  TableFormat format = TableFormat::kCsv;
  OutputOptions output{};
};

std::vector<std::string> LabelsOfChosen(const CSetup& setup, const std::vector<std::size_t>& chosen) {
  const std::vector<std::string> labels = LabelsOf(setup);
  std::vector<std::string> ofChosen;
  ofChosen.reserve(chosen.size());
  for (const std::size_t index : chosen) ofChosen.push_back(labels[index]);
  return ofChosen;
}

// Nothing, with a complaint, for a range that does not lie in the recording.
std::optional<SampleRange> RangeOf(InputRecording& input, const Options& options) {
  const std::uint64_t count = CountSamples(*input);
  const SampleRange range{options.from, options.to.value_or(count)};
  if (range.from <= range.to && range.to <= count) return range;
  Complain(input.Path(), fmt::format("--from {} --to {} does not lie in its {}.", range.from, range.to,
                                     Counted(count, "sample")));
  return std::nullopt;
}

const char* WhyUnreadable(const CRecordingFile& recording, SampleForm form) {
  if (recording.overlay.HasSegments() && !form.skipPolynomials) {
    return "The samples cannot be read to their end, or their corrections leave some out; "
           "--no-polynomials takes them without.";
  }
  return "The samples cannot be read to their end.";
}

ExitCode WriteSamples(InputRecording& input, const Options& options, SampleRange range,
                      const std::vector<std::size_t>& chosen) {
  const auto output = Output::Open(options.output, input.Path());
  if (!output) return kFailed;
  SampleWriter writer(*output, options.format, options.form.raw ? StoredType(*input) : ValueType::kFloat32,
                      input->rawHeader.header.channelCount, chosen);
  Progress progress(input.Path(), range.Count(), *output);
  const auto take = [&](std::span<const std::byte> block, std::uint64_t samples) {
    progress.Advance(samples);
    return writer.WriteBlock(block);
  };
  writer.WriteHead(range.Count(), LabelsOfChosen(*input->GetSetup(), chosen));
  if (StreamSamples(*input, range, options.form, take) == StreamEnd::kUnreadable) {
    Complain(input.Path(), WhyUnreadable(*input, options.form));
    return kFailed;
  }
  return output->Finish() ? kDone : kFailed;
}

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kContinuous}) || !input->RequireChannels()) return kFailed;
  std::string why;
  const auto chosen = ChooseChannels(*(*input)->GetSetup(), options.channels, why);
  if (!chosen) {
    Complain(options.path, why);
    return kUsage;
  }
  const auto range = RangeOf(*input, options);
  if (!range) return kUsage;
  return WriteSamples(*input, options, *range, *chosen);
}

}  // namespace

Subcommand MakeSamples(CLI::App& program) {
  CLI::App& parser = AddSubcommand(
      program, "samples", "Continuous samples as a table: a row for each sample, a column for each channel",
      kExamples);
  const auto options = std::make_shared<Options>();
  AddFile(parser, options->path);
  AddCount(parser, "--from", options->from, "First sample, counted from 0");
  AddCount(parser, "--to", options->to, "The sample behind the last one");
  AddFlag(parser, "--raw", options->form.raw, "Integers as stored instead of microvolts");
  AddFlag(parser, "--no-rows", options->form.skipRows, "Without the recording's own offsets");
  AddFlag(parser, "--no-polynomials", options->form.skipPolynomials,
          "Without the recording's own drift curves");
  AddList(parser, "--channels", options->channels, "Labels, or numbers from 1 on");
  AddChoice(parser, "--format", options->format, kFormats, "csv if nothing is said");
  options->output.AddTo(parser);
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

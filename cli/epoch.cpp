// wavelock epoch: the data of one epoch as a table.
#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

#include "cli/complaint.h"
#include "cli/counted.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/sample_writer.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock epoch trials.rec 0 > first.csv\n"
    "  wavelock epoch trials.rec 12 --raw --format npy -o twelfth.npy\n"
    "\n"
    "A spectrum has two columns for each channel: its real and its imaginary part.\n";

struct Options {
  std::string path{};
  std::uint32_t number = 0;
  bool raw = false;
  TableFormat format = TableFormat::kCsv;
  OutputOptions output{};
};

struct EpochTable {
  ValueType type = ValueType::kFloat32;
  std::vector<std::string> labels{};
  std::vector<std::byte> rows{};
};

std::size_t PointsIn(CRecordingFile& recording) {
  return recording.rawHeader.header.pointCount;
}

std::optional<EpochTable> Counts(InputRecording& input, std::uint32_t number) {
  EpochTable table{.type = StoredType(*input), .labels = LabelsOf(*input->GetSetup())};
  table.rows.resize(PointsIn(*input) * table.labels.size() * BytesOf(table.type));
  const auto bytes = static_cast<std::uint32_t>(table.rows.size());
  return input->ReadEpochRaw(number, table.rows.data(), bytes) ? std::optional(table) : std::nullopt;
}

std::optional<EpochTable> Microvolts(InputRecording& input, std::uint32_t number) {
  const CTFDEpoch* const data = input->LoadDataObject(number);
  if (data == nullptr) return std::nullopt;
  EpochTable table{.labels = LabelsOf(*input->GetSetup())};
  const auto values = std::as_bytes(data->main.All());
  table.rows.assign(values.begin(), values.end());
  return table;
}

std::optional<EpochTable> Spectrum(InputRecording& input, std::uint32_t number) {
  CTFDEpoch* const data = input->LoadDataObject(number);
  if (data == nullptr || !data->Multiplex()) return std::nullopt;
  EpochTable table;
  for (const std::string& label : LabelsOf(*input->GetSetup())) {
    table.labels.push_back(label + " real");
    table.labels.push_back(label + " imaginary");
  }
  std::vector<float> pairs;
  for (std::size_t i = 0; i < data->main.All().size(); ++i) {
    pairs.push_back(data->main.All()[i]);
    pairs.push_back(data->imaginary.All()[i]);
  }
  const auto values = std::as_bytes(std::span(pairs));
  table.rows.assign(values.begin(), values.end());
  return table;
}

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kEpochs}) || !input->RequireChannels()) return kFailed;
  const bool isSpectrum = (*input)->rawHeader.header.frequencyDomain != 0;
  if (options.number >= (*input)->GetEpochCount()) {
    Complain(options.path, fmt::format("Of its {}, counted from 0, none is number {}.",
                                       Counted((*input)->GetEpochCount(), "epoch"), options.number));
    return kUsage;
  }
  if (options.raw && isSpectrum) {
    Complain(options.path, "Its epochs are spectra, which are not stored as integers: --raw has no meaning.");
    return kUsage;
  }
  const auto read = options.raw ? Counts : isSpectrum ? Spectrum : Microvolts;
  const auto table = read(*input, options.number);
  if (!table) {
    Complain(options.path, "The epoch cannot be read.");
    return kFailed;
  }
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  WriteTable(*output, options.format, table->type, table->labels, table->rows);
  return output->Finish() ? kDone : kFailed;
}

}  // namespace

Subcommand MakeEpoch(CLI::App& program) {
  CLI::App& parser = AddSubcommand(
      program, "epoch", "The data of one epoch: a row for each point, a column for each channel", kExamples);
  const auto options = std::make_shared<Options>();
  AddFile(parser, options->path);
  AddCount(parser, "N", options->number, "Number of the epoch, counted from 0", {}, Need::kRequired);
  AddFlag(parser, "--raw", options->raw, "Integers as stored instead of microvolts");
  AddChoice(parser, "--format", options->format, kTableFormats, "csv if nothing is said");
  options->output.AddTo(parser);
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

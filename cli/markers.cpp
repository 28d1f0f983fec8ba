// wavelock markers: the named points of a recording.
#include <fmt/format.h>

#include <cmath>
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
    "  wavelock markers night.rec | column -t -s \"$(printf '\\t')\"\n"
    "  wavelock markers night.rec --format json | jq '.[] | select(.locked)'\n"
    "\n"
    "Points, epochs and channels count from 0.\n";

struct Options {
  std::string path{};
  RowFormat format = RowFormat::kTsv;
  OutputOptions output{};
};

RowWriter::Value NullBelowZero(std::int32_t index) {
  return index >= 0 ? RowWriter::Value(index) : RowWriter::Value();
}

RowWriter::Value Finite(double value) {
  return std::isfinite(value) ? RowWriter::Value(value) : RowWriter::Value();
}

std::string ColourText(std::uint32_t colour) {
  return fmt::format("#{:02x}{:02x}{:02x}", colour & 0xFF, colour >> 8 & 0xFF, colour >> 16 & 0xFF);
}

void WriteMarkers(const CMarkerList& markers, RowWriter& rows) {
  for (std::int32_t i = 0; i < markers.GetCount(); ++i) {
    const CMarker& marker = *markers.GetAt(i);
    if (!rows.Add({NullBelowZero(marker.sampleIndex), NullBelowZero(marker.epoch),
                   NullBelowZero(marker.channel), marker.name, marker.text, Finite(marker.secondValue),
                   marker.locked != 0, ColourText(marker.colour)})) {
      return;
    }
  }
}

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input) return kFailed;
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  RowWriter rows(*output, options.format,
                 {"point", "epoch", "channel", "name", "text", "value", "locked", "colour"});
  WriteMarkers((*input)->markerList, rows);
  rows.Finish();
  return output->Finish() ? kDone : kFailed;
}

}  // namespace

Subcommand MakeMarkers(CLI::App& program) {
  CLI::App* const parser = program.add_subcommand("markers", "Markers: named points of the recording");
  const auto options = std::make_shared<Options>();
  AddFile(*parser, options->path);
  AddChoice(*parser, "--format", options->format, kRowFormats, "tsv if nothing is said");
  options->output.AddTo(*parser);
  parser->footer(kExamples);
  return {parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

// wavelock events: what happened when, of a continuous recording.
#include <fmt/compile.h>
#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <string>

#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock events night.rec | column -t\n"
    "  wavelock events night.rec --format json -o night_events.json\n";

enum class EventFormat { kTsv, kJson };

const Choices<EventFormat> kFormats = {{"tsv", EventFormat::kTsv}, {"json", EventFormat::kJson}};

struct Options {
  std::string path{};
  EventFormat format = EventFormat::kTsv;
  OutputOptions output{};
};

// Seconds from the first sample; `otherwise` for a recording without a rate.
std::string Onset(std::uint32_t sample, double rate, const char* otherwise) {
  const double seconds = sample / rate;
  return std::isfinite(seconds) ? fmt::format("{}", seconds) : otherwise;
}

bool WriteTsv(std::span<const EventRecord> events, double rate, Output& output) {
  if (!output.Write("onset\tsample\tstimulus\tkeyboard\tkeypad\tclass\n")) return false;
  std::string line;
  for (const EventRecord& event : events) {
    line.clear();
    fmt::format_to(std::back_inserter(line), FMT_COMPILE("{}\t{}\t{}\t{}\t{}\t{}\n"),
                   Onset(event.point, rate, "n/a"), std::uint32_t{event.point}, std::uint16_t{event.stimType},
                   std::uint8_t{event.keyboard}, event.Keypad(), event.SegmentClass());
    if (!output.Write(line)) return false;
  }
  return true;
}

// One array with a line for each event.
bool WriteJson(std::span<const EventRecord> events, double rate, Output& output) {
  std::string line = "[";
  const char* separator = "\n";
  for (const EventRecord& event : events) {
    fmt::format_to(
        std::back_inserter(line),
        FMT_COMPILE(R"({}{{"onset":{},"sample":{},"stimulus":{},"keyboard":{},"keypad":{},"class":{}}})"),
        separator, Onset(event.point, rate, "null"), std::uint32_t{event.point},
        std::uint16_t{event.stimType}, std::uint8_t{event.keyboard}, event.Keypad(), event.SegmentClass());
    if (!output.Write(line)) return false;
    line.clear();
    separator = ",\n";
  }
  return output.Write(line + "\n]\n");
}

ExitCode Run(const Options& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input || !input->Require({kContinuous})) return kFailed;
  if (input->HasShown(MessageNumber::kEventsNotRead)) return kFailed;
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  const auto write = options.format == EventFormat::kTsv ? WriteTsv : WriteJson;
  write((*input)->GetEventTable().Elements(), (*input)->GetSetup()->Rate(), *output);
  return output->Finish() ? kDone : kFailed;
}

}  // namespace

Subcommand MakeEvents(CLI::App& program) {
  CLI::App* const parser =
      program.add_subcommand("events", "Events of a continuous recording, with seconds and samples");
  const auto options = std::make_shared<Options>();
  AddFile(*parser, options->path);
  AddChoice(*parser, "--format", options->format, kFormats, "tsv if nothing is said");
  options->output.AddTo(*parser);
  parser->footer(kExamples);
  return {parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

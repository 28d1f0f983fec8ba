// wavelock info: what recordings are, in one table or as JSON.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/counted.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/sample_stream.h"
#include "cli/subcommands.h"
#include "cli/subject.h"
#include "cli/table.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock info *.rec\n"
    "  wavelock info --json night.rec | jq .rate\n"
    "  wavelock info --subject night.rec\n"
    "\n"
    "The table leaves out what identifies the subject and the session; --subject adds it.\n";

struct Options {
  std::vector<std::string> paths{};
  bool json = false;
  bool subject = false;
};

// What only averages have. Noise and ratio are there where they could be worked out.
struct AverageFacts {
  std::int32_t accepted = 0;
  std::int32_t rejected = 0;
  std::optional<float> noise{};
  std::optional<float> ratio{};
};

struct Facts {
  std::string path;
  std::string kind;
  std::vector<std::string> channels{};  // labels
  double rate = 0;
  std::uint64_t points = 0;  // per channel and epoch
  std::uint64_t epochs = 1;
  std::optional<int> events{};  // of a continuous recording whose events could be read
  std::size_t correctionRows = 0;
  std::size_t correctionSegments = 0;
  std::string generation{};
  int sampleBits = 0;
  std::uint64_t fileBytes = 0;
  std::optional<double> seconds{};
  std::optional<AverageFacts> average{};
  SubjectTexts subject{};
};

// The layout before all revisions is told by the first byte alone.
std::string GenerationOf(const CRecordingFile& recording) {
  if (std::ifstream(recording.GetFilePath(), std::ios::binary).get() != 'V') return "oldest";
  return fmt::format("revision {}", recording.headerRevision);
}

std::optional<double> Seconds(const Facts& facts) {
  const double seconds = static_cast<double>(facts.points) * static_cast<double>(facts.epochs) / facts.rate;
  return std::isfinite(seconds) ? std::optional(seconds) : std::nullopt;
}

std::optional<float> Known(float figure) {
  return figure > 0 && std::isfinite(figure) ? std::optional(figure) : std::nullopt;
}

AverageFacts AverageFactsOf(const CSetup& setup) {
  return {setup.acceptedSweeps, setup.rejectedSweeps, Known(setup.mainField8164), Known(setup.mainField8168)};
}

Facts Gather(InputRecording& input) {
  CSetup& setup = *input->GetSetup();
  const int kind = input->GetFileClass(&input->rawHeader);
  Facts facts{.path = input.Path(), .kind = std::string(NameOfKind(kind))};
  facts.channels = LabelsOf(setup);
  facts.rate = setup.Rate();
  facts.points =
      kind == kContinuous ? CountSamples(*input) : static_cast<std::uint64_t>(std::max(0, setup.GetPoints()));
  facts.epochs = input->GetEpochCount();
  if (kind == kContinuous && !input.HasShown(MessageNumber::kEventsNotRead)) {
    facts.events = input->GetEventCount();
  }
  facts.correctionRows = input->overlay.Rows().size();
  facts.correctionSegments = input->overlay.Segments().size();
  facts.generation = GenerationOf(*input);
  facts.sampleBits = 8 * input->sampleWidth;
  facts.fileBytes = input->fileSize;
  if (setup.frequencyDomain == 0) facts.seconds = Seconds(facts);
  if (kind == kAverage || kind == kAverageWithStatistics) facts.average = AverageFactsOf(setup);
  facts.subject = SubjectTextsOf(*setup.subject);
  return facts;
}

// ---- for people

std::string Duration(const std::optional<double>& seconds) {
  if (!seconds) return "-";
  const auto milliseconds = static_cast<std::uint64_t>(std::llround(*seconds * 1000));
  const std::uint64_t minutes = milliseconds / 60000;
  return fmt::format("{}:{:02}:{:02}.{:03}", minutes / 60, minutes % 60, milliseconds / 1000 % 60,
                     milliseconds % 1000);
}

std::string Size(std::uint64_t bytes) {
  constexpr const char* kUnits[] = {"B", "KB", "MB", "GB", "TB"};
  auto size = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; size >= 1000 && unit + 1 < std::size(kUnits); ++unit) size /= 1000;
  return fmt::format("{:.{}f} {}", size, unit == 0 ? 0 : 1, kUnits[unit]);
}

// What is laid over the samples on each read.
std::string Corrections(const Facts& facts) {
  std::vector<std::string> words;
  if (facts.correctionRows > 0) words.push_back(Counted(facts.correctionRows, "row"));
  if (facts.correctionSegments > 0) words.push_back(Counted(facts.correctionSegments, "segment"));
  return words.empty() ? "-" : fmt::format("{}", fmt::join(words, ", "));
}

std::string TableOf(const std::vector<Facts>& all, bool bold) {
  Table table({{"FILE"},
               {"KIND"},
               {"CHANNELS", Align::kRight},
               {"RATE", Align::kRight},
               {"DURATION", Align::kRight},
               {"POINTS", Align::kRight},
               {"EPOCHS", Align::kRight},
               {"EVENTS", Align::kRight},
               {"CORRECTED"},
               {"GENERATION"},
               {"WIDTH", Align::kRight},
               {"SIZE", Align::kRight}});
  for (const Facts& facts : all) {
    table.Add({facts.path, facts.kind, std::to_string(facts.channels.size()),
               fmt::format("{} Hz", static_cast<float>(facts.rate)), Duration(facts.seconds),
               std::to_string(facts.points), std::to_string(facts.epochs),
               facts.events ? std::to_string(*facts.events) : "-", Corrections(facts), facts.generation,
               fmt::format("{} bit", facts.sampleBits), Size(facts.fileBytes)});
  }
  return table.Text(bold);
}

std::string Figure(const std::optional<float>& figure) {
  return figure ? fmt::format("{:.4g}", *figure) : "-";
}

// Nothing for files without averages.
std::string AverageTableOf(const std::vector<Facts>& all, bool bold) {
  const auto isAverage = [](const Facts& facts) { return facts.average.has_value(); };
  if (std::none_of(all.begin(), all.end(), isAverage)) return {};
  Table table({{"FILE"},
               {"ACCEPTED", Align::kRight},
               {"REJECTED", Align::kRight},
               {"NOISE", Align::kRight},
               {"BEST RATIO", Align::kRight}});
  for (const Facts& facts : all) {
    if (!isAverage(facts)) continue;
    table.Add({facts.path, std::to_string(facts.average->accepted), std::to_string(facts.average->rejected),
               Figure(facts.average->noise), Figure(facts.average->ratio)});
  }
  return "\n" + table.Text(bold);
}

std::string SubjectTableOf(const std::vector<Facts>& all, bool bold) {
  Table table({{"FILE"}, {"FIELD"}, {"VALUE"}});
  for (const Facts& facts : all) {
    for (const auto& [field, value] : facts.subject) table.Add({facts.path, field, value});
  }
  return "\n" + table.Text(bold);
}

// ---- for programs

std::string JsonLine(const Facts& facts, bool withSubject) {
  nlohmann::ordered_json json;
  json["file"] = facts.path;
  json["kind"] = facts.kind;
  json["channels"] = facts.channels.size();
  json["labels"] = facts.channels;
  json["rate"] = facts.rate;
  json["duration"] = facts.seconds ? nlohmann::ordered_json(*facts.seconds) : nlohmann::ordered_json();
  json["points"] = facts.points;
  json["epochs"] = facts.epochs;
  json["events"] = facts.events ? nlohmann::ordered_json(*facts.events) : nlohmann::ordered_json();
  json["corrections"] = {{"rows", facts.correctionRows}, {"segments", facts.correctionSegments}};
  json["generation"] = facts.generation;
  json["bits"] = facts.sampleBits;
  json["bytes"] = facts.fileBytes;
  if (facts.average) {
    json["acceptedSweeps"] = facts.average->accepted;
    json["rejectedSweeps"] = facts.average->rejected;
    if (facts.average->noise) json["noise"] = *facts.average->noise;
    if (facts.average->ratio) json["bestRatio"] = *facts.average->ratio;
  }
  if (withSubject) {
    for (const auto& [field, value] : facts.subject) json["subject"][field] = value;
  }
  // Texts of a file can be in any encoding.
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool Write(const std::vector<Facts>& all, const Options& options, Output& output) {
  if (options.json) {
    for (const Facts& facts : all) {
      if (!output.Write(JsonLine(facts, options.subject))) return false;
    }
    return true;
  }
  const bool bold = output.TakesStyles();
  return all.empty() || output.WriteStyled(TableOf(all, bold) + AverageTableOf(all, bold) +
                                           (options.subject ? SubjectTableOf(all, bold) : std::string()));
}

ExitCode Run(const Options& options) {
  std::vector<Facts> all;
  ExitCode outcome = kDone;
  for (const std::string& path : options.paths) {
    const auto input = InputRecording::Open(path);
    if (input) all.push_back(Gather(*input));
    outcome = Worse(outcome, !input ? kFailed : input->HasLoss() ? kDoneWithLoss : kDone);
  }
  const auto output = Output::Open({}, {});
  Write(all, options, *output);
  return output->Finish() ? outcome : kFailed;
}

}  // namespace

Subcommand MakeInfo(CLI::App& program) {
  CLI::App& parser = AddSubcommand(
      program, "info", "What recordings are: kind, channels, rate, duration, events ...", kExamples);
  const auto options = std::make_shared<Options>();
  AddFiles(parser, options->paths, "The recordings");
  AddFlag(parser, "--json", options->json, "One line of JSON for each file");
  AddFlag(parser, "--subject", options->subject, "Also what identifies the subject and the session");
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

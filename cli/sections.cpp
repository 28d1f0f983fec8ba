// wavelock sections: the records of a setup file or of a recording's tail, as they stand in the file.
#include <string>

#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/row_writer.h"
#include "cli/section_list.h"
#include "cli/subcommands.h"
#include "cli/table.h"
#include "wavelock/platform/memory_profile_store.h"
#include "wavelock/platform/silent_modal_interface.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock sections night.rec\n"
    "  wavelock sections default.ast --json | jq '.[] | select(.tag == 1000)'\n";

struct Options {
  std::string path{};
  bool json = false;
  OutputOptions output{};
};

// Where the tail of a recording begins, also of one that cannot be opened because of its tail.
std::uint64_t TailOf(const std::string& path) {
  ReadOnlyFiles files(Host::Default().files);
  MemoryProfileStore profile;
  SilentModalInterface modal;
  Host quiet{files, profile, modal, Host::Default().process};
  CRecordingFile recording(1, quiet);
  recording.OpenFile(path);
  return recording.TailPosition();
}

std::string TableOf(const std::vector<CTffFile::Entry>& records, bool bold) {
  Table table({{"TAG", Align::kRight},
               {"NAME"},
               {"VERSION", Align::kRight},
               {"LENGTH", Align::kRight},
               {"POSITION", Align::kRight}});
  for (const auto& [position, record] : records) {
    table.Add({std::to_string(record.tag), std::string(NameOfTag(record.tag)), std::to_string(record.version),
               std::to_string(record.length), std::to_string(position)});
  }
  return table.Text(bold);
}

void WriteJson(const std::vector<CTffFile::Entry>& records, Output& output) {
  RowWriter rows(output, RowFormat::kJson, {"tag", "name", "version", "length", "position"});
  for (const auto& [position, record] : records) {
    const std::uint32_t tag = record.tag;
    if (!rows.Add(tag, NameOfTag(tag), std::uint16_t{record.version}, std::uint32_t{record.length}, position))
      return;
  }
  rows.Finish();
}

bool EndsBehind(const std::vector<CTffFile::Entry>& records, std::uint64_t fileSize) {
  if (records.empty()) return false;
  const CTffFile::Entry& last = records.back();
  return last.position + sizeof(TffRecord) + last.record.length > fileSize;
}

ExitCode Run(const Options& options) {
  std::string why;
  const auto file = Host::Default().files.Open(options.path, OpenMode::kReadOnly, &why);
  if (!file) {
    Complain(options.path, why);
    return kFailed;
  }
  CTffFile container(*file, 0);
  if (container.ReadHeader() == CTffFile::kNoContainer) container.startPosition = TailOf(options.path);
  if (!file->SeekTo(container.startPosition) || container.ReadHeader() == CTffFile::kNoContainer) {
    Complain(options.path, "There is no tagged container in it.");
    return kFailed;
  }
  const auto& records = container.Entries();
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  if (options.json) {
    WriteJson(records, *output);
  } else {
    output->WriteStyled(TableOf(records, output->TakesStyles()));
  }
  if (!output->Finish()) return kFailed;
  if (!EndsBehind(records, container.Length())) return kDone;
  Complain(options.path, "The file ends inside its last record.");
  return kDoneWithLoss;
}

}  // namespace

Subcommand MakeSections(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "sections", "The records of a setup file or of a recording's tail", kExamples);
  const auto options = std::make_shared<Options>();
  AddFile(parser, options->path, "A recording or a setup file");
  AddFlag(parser, "--json", options->json, "One array with an object for each record");
  options->output.AddTo(parser);
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

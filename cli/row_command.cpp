#include "cli/row_command.h"

#include <memory>

#include "cli/options.h"

namespace wavelock::command {
namespace {

const Choices<RowFormat> kFormats = {{"tsv", RowFormat::kTsv}, {"json", RowFormat::kJson}};

}  // namespace

Subcommand MakeRowCommand(CLI::App& program, const std::string& name, const std::string& description,
                          const std::string& examples, RunRows* run) {
  CLI::App& parser = AddSubcommand(program, name, description, examples);
  const auto options = std::make_shared<RowOptions>();
  AddFile(parser, options->path);
  AddChoice(parser, "--format", options->format, kFormats, "tsv if nothing is said");
  options->output.AddTo(parser);
  return {&parser, [options, run] { return run(*options); }};
}

ExitCode WriteRows(const RowOptions& options, const std::vector<std::string>& columns,
                   const std::function<void(RowWriter&)>& add) {
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  RowWriter rows(*output, options.format, columns);
  add(rows);
  rows.Finish();
  return output->Finish() ? kDone : kFailed;
}

}  // namespace wavelock::command

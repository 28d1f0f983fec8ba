// Subcommands that take rows out of a recording.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/output.h"
#include "cli/row_writer.h"
#include "cli/subcommand.h"

namespace wavelock::command {

struct RowOptions {
  std::string path{};
  RowFormat format = RowFormat::kTsv;
  OutputOptions output{};
};

using RunRows = ExitCode(const RowOptions& options);

// A subcommand with these options.
Subcommand MakeRowCommand(CLI::App& program, const std::string& name, const std::string& description,
                          const std::string& examples, RunRows* run);

// Opens the output, lets `add` add the rows, which ends when a row is not taken, and finishes.
ExitCode WriteRows(const RowOptions& options, const std::vector<std::string>& columns,
                   const std::function<void(RowWriter&)>& add);

}  // namespace wavelock::command

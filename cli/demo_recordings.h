// The recordings of a made-up session, one of every kind, made as any program makes them: create, append,
// save.
#pragma once

#include <string>
#include <vector>

#include "cli/demo_signals.h"
#include "wavelock/platform/file_service.h"

namespace wavelock::command {

// Names of the files, in the order in which they are made.
std::vector<std::string> DemoFileNames();

// Makes them in a folder, over whatever stands there. The name of the one that could not be made, or nothing
// when all could.
std::string MakeDemoFiles(FileService& files, const std::string& folder, const DemoPlan& plan);

}  // namespace wavelock::command

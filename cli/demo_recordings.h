// The recordings of a made-up session, one of every kind, made as any program makes them: create, append,
// save.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wavelock::command {

// Names of the files, in the order in which they are made.
std::vector<std::string> DemoFileNames();

// Makes them in a folder, over whatever stands there. The name of the one that could not be made, or nothing
// when all could.
std::string MakeDemoFiles(const std::string& folder, std::uint64_t seed);

}  // namespace wavelock::command

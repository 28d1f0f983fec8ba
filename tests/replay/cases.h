// Frozen cases: a recording, a setup or a run of calls, and all that came of it when it was found to be
// right.
#pragma once

#include <filesystem>

namespace wavelock::replay {

// Carries out the script of a case in the folder that the case stands in, with whatever is saved in a folder
// of its own, and compares the answer with the one that the case holds. Differences go to stderr.
bool CheckCase(const std::filesystem::path& path);

// Puts what the script gives now in place of the answer. Nothing else says whether that is right.
void FreezeCase(const std::filesystem::path& path);

}  // namespace wavelock::replay

// What a recording's file holds and no reader of it hands out.
#pragma once

#include <string>
#include <vector>

#include "wavelock/recording/recording_file.h"

namespace wavelock::command {

// In words, one for each. The recording is one that was opened; its file is looked at once more.
std::vector<std::string> UnreadParts(CRecordingFile& recording);

// Records of the tail of `before` that the tail of `after` has no more, or has shorter.
std::vector<std::string> LostRecords(const CRecordingFile& before, const CRecordingFile& after);

}  // namespace wavelock::command

// Two recordings beside each other: whether they hold the same data, and what of the one is not in the other.
#pragma once

#include <string>
#include <vector>

#include "wavelock/recording/recording_file.h"

namespace wavelock::command {

// Every stored integer, event, correction, label and marker, every epoch's head, every value of a data set or
// a pair. Markers of a continuous recording do not count.
bool HoldSameData(CRecordingFile& before, CRecordingFile& after);

// In words, one for each: fields that have another value afterwards, and what has no place in the new file.
std::vector<std::string> Losses(CRecordingFile& before, CRecordingFile& after);

}  // namespace wavelock::command

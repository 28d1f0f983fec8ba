// All that an open recording delivers, to compare one file with another bit by bit.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "wavelock/recording/recording_file.h"

namespace wavelock {

// By what it is: "samples", "events", "epoch 3", "pair 0" ...
using Delivered = std::map<std::string, std::vector<std::byte>>;

// What cannot be read is missing.
Delivered EverythingIn(CRecordingFile& recording);

}  // namespace wavelock

// Which channels a person asks for.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "wavelock/setup/setup.h"

namespace wavelock::command {

// Indexes of the channels, in the order asked for; all channels when none are named. A name is a label or,
// where no label reads like it, a number that counts from 1. Nothing, and `why` tells, when a name fits no
// channel or several.
std::optional<std::vector<std::size_t>> ChooseChannels(const CSetup& setup,
                                                       const std::vector<std::string>& names,
                                                       std::string& why);

}  // namespace wavelock::command

// Scripts that load one setup file and save what came of it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "wavelock/setup/setup.h"

namespace wavelock::replay {

nlohmann::json RunSetupScript(const nlohmann::json& script);

// Saves the setup under another name than its own.
void SaveSetupTo(CSetup& setup, const std::string& path);

}  // namespace wavelock::replay

// What can be replayed.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "wavelock/setup/setup.h"

namespace wavelock::replay {

// Scripts that open recordings, one after the other, and call their operations.
nlohmann::json RunOpenScript(const nlohmann::json& script);

// Scripts that fill a fresh recording, create its file, append to it and save it.
nlohmann::json RunSaveScript(const nlohmann::json& script);

// Scripts that load one setup file and save what came of it.
nlohmann::json RunSetupScript(const nlohmann::json& script);

// Any of these, by the script's kind. Throws what says why a script cannot be carried out.
nlohmann::json RunScript(const nlohmann::json& script);

// Saves the setup under another name than its own.
void SaveSetupTo(CSetup& setup, const std::string& path);

}  // namespace wavelock::replay

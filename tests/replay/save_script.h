// Scripts that fill a fresh recording, create its file, append to it and save it.
#pragma once

#include <nlohmann/json.hpp>

namespace wavelock::replay {

nlohmann::json RunSaveScript(const nlohmann::json& script);

}  // namespace wavelock::replay

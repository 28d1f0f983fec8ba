// Scripts that open one recording after the other on one object and call its reading operations.
#pragma once

#include <nlohmann/json.hpp>

namespace wavelock::replay {

nlohmann::json RunOpenScript(const nlohmann::json& script);

}  // namespace wavelock::replay

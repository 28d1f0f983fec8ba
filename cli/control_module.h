// Where the control that clients load comes from.
#pragma once

#include <memory>
#include <string>

#include "wavelock/platform/registry.h"

namespace wavelock::command {

// The module that belongs to this command.
std::string ShippedModule();

// The user's registry where the control is entered in it; else one of this process alone, in which the
// module that belongs to this command is.
std::unique_ptr<Registry> RegistryWithControl();

}  // namespace wavelock::command

// What the module enters into a registry, and how it is taken out again.
#pragma once

#include <string>

#include "wavelock/platform/registry.h"

namespace wavelock {

// `path` is the module's file. Entering again brings the entries up to date.
void EnterTypeLibrary(RegistryTree& tree, const std::string& path);
void EnterClasses(RegistryTree& tree, const std::string& path);

void RemoveTypeLibrary(RegistryTree& tree, const std::string& path);
void RemoveClasses(RegistryTree& tree, const std::string& path);

}  // namespace wavelock

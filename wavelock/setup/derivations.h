// The derivation files that a setup names.
#pragma once

#include "wavelock/platform/host.h"
#include "wavelock/setup/setup.h"

namespace wavelock {

// Reads the enabled ones, in order, and sets derivedCount from those that fit the channels. Tells the person
// about a file that is missing, and forgets its name, or that cannot be used. False when the first one cannot
// be used: the others are then not looked at.
bool LoadDerivationFiles(CSetup& setup, Host& host);

}  // namespace wavelock

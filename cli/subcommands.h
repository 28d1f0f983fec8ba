// Every subcommand: its maker, found in the file of its name, and its place in the help.
#pragma once

#include "cli/subcommand.h"

namespace wavelock::command {

MakeSubcommand MakeCall;
MakeSubcommand MakeEvents;
MakeSubcommand MakeInfo;
MakeSubcommand MakeRegister;
MakeSubcommand MakeSamples;

inline constexpr MakeSubcommand* kSubcommands[] = {
    MakeInfo, MakeSamples, MakeEvents, MakeCall, MakeRegister,
};

}  // namespace wavelock::command

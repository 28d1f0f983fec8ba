// Every subcommand: its maker, found in the file of its name, and its place in the help.
#pragma once

#include "cli/subcommand.h"

namespace wavelock::command {

MakeSubcommand MakeCall;
MakeSubcommand MakeEvents;
MakeSubcommand MakeFormat;
MakeSubcommand MakeInfo;
MakeSubcommand MakeRegister;
MakeSubcommand MakeSamples;
MakeSubcommand MakeSections;
MakeSubcommand MakeSetup;

inline constexpr MakeSubcommand* kSubcommands[] = {
    MakeInfo, MakeSamples, MakeEvents, MakeSetup, MakeSections, MakeFormat, MakeCall, MakeRegister,
};

}  // namespace wavelock::command

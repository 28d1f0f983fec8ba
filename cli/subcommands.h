// Every subcommand: its maker, found in the file of its name, and its place in the help.
#pragma once

#include "cli/subcommand.h"

namespace wavelock::command {

MakeSubcommand MakeAverage;
MakeSubcommand MakeCall;
MakeSubcommand MakeDemo;
MakeSubcommand MakeEpoch;
MakeSubcommand MakeEpochs;
MakeSubcommand MakeEvents;
MakeSubcommand MakeFormat;
MakeSubcommand MakeInfo;
MakeSubcommand MakeLabels;
MakeSubcommand MakeMarkers;
MakeSubcommand MakePairs;
MakeSubcommand MakeRegister;
MakeSubcommand MakeSamples;
MakeSubcommand MakeSections;
MakeSubcommand MakeSetup;
MakeSubcommand MakeUpgrade;

inline constexpr MakeSubcommand* kSubcommands[] = {
    MakeInfo,  MakeSamples, MakeEvents,   MakeMarkers, MakeLabels, MakeEpochs,   MakeEpoch,   MakeAverage,
    MakePairs, MakeSetup,   MakeSections, MakeFormat,  MakeCall,   MakeRegister, MakeUpgrade, MakeDemo,
};

}  // namespace wavelock::command

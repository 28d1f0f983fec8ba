// What the command asks of the terminal it runs on: the only file that knows the operating system.
#pragma once

#include <cstdio>

namespace wavelock::command {

bool IsTerminal(std::FILE* stream);

// A terminal whose user has not asked for plain text by NO_COLOR.
bool TakesColor(std::FILE* stream);

}  // namespace wavelock::command

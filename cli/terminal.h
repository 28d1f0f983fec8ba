// What the command asks of the terminal it runs on: the only file that knows the operating system.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace wavelock::command {

bool IsTerminal(std::FILE* stream);

// A terminal whose user has not asked for plain text by NO_COLOR.
bool TakesColor(std::FILE* stream);

// Text from a file with its control characters replaced, so that it does not steer a terminal.
std::string Printable(std::string_view text);

}  // namespace wavelock::command

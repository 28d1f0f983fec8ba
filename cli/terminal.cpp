#include "cli/terminal.h"

#include <cstdlib>
#include <string_view>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace wavelock::command {
namespace {

std::string_view Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : std::string_view();
}

}  // namespace

bool IsTerminal(std::FILE* stream) {
#ifdef _WIN32
  return _isatty(_fileno(stream)) != 0;
#else
  return isatty(fileno(stream)) != 0;
#endif
}

bool TakesColor(std::FILE* stream) {
  return IsTerminal(stream) && Variable("NO_COLOR").empty() && Variable("TERM") != "dumb";
}

}  // namespace wavelock::command

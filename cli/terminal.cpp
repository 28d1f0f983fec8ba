#include "cli/terminal.h"

#include <algorithm>
#include <cstdlib>

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

std::string Printable(std::string_view text) {
  std::string printable(text);
  const auto steers = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  std::replace_if(printable.begin(), printable.end(), steers, '?');
  return printable;
}

}  // namespace wavelock::command

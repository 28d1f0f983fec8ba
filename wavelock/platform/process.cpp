#include "wavelock/platform/process.h"

#include <cstddef>

namespace wavelock {
namespace {

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::size_t DriveLength(std::string_view path) {
  return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':' ? 2 : 0;
}

}  // namespace

PathParts SplitPath(std::string_view path) {
  const std::string_view rest = path.substr(DriveLength(path));
  const std::size_t separator = rest.find_last_of("/\\");
  const std::size_t nameStart = separator == std::string_view::npos ? 0 : separator + 1;
  const std::string_view file = rest.substr(nameStart);
  const std::size_t nameLength = file.rfind('.') == std::string_view::npos ? file.size() : file.rfind('.');
  return {.drive = std::string(path.substr(0, DriveLength(path))),
          .directory = std::string(rest.substr(0, nameStart)),
          .name = std::string(file.substr(0, nameLength)),
          .extension = std::string(file.substr(nameLength))};
}

}  // namespace wavelock

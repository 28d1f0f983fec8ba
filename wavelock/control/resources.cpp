#include "wavelock/control/resources.h"

namespace wavelock {
namespace {

struct Entry {
  StringNumber number;
  std::string_view text;
};

constexpr Entry kStrings[] = {
    {kControlTypeName, "Wavelock Control"},
    {kPropertyPageTypeName, "Wavelock Property Page"},
    {kPropertyPageCaption, "General"},
};

}  // namespace

std::string_view StringResource(int number) {
  for (const Entry& entry : kStrings) {
    if (entry.number == number) return entry.text;
  }
  return {};
}

}  // namespace wavelock

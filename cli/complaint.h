// What the command has to say to a person, on standard error.
#pragma once

#include <string>
#include <string_view>

#include "wavelock/platform/host.h"

namespace wavelock::command {

inline void Complain(std::string text) {
  Host::Default().modal.ShowMessage({.text = std::move(text)});
}

inline void Complain(std::string_view path, std::string_view text) {
  Complain(std::string(path) + ": " + std::string(text));
}

}  // namespace wavelock::command

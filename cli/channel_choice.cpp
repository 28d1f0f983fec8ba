#include "cli/channel_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <numeric>
#include <span>

namespace wavelock::command {
namespace {

// The number that the whole name is, else 0.
std::size_t NumberIn(const std::string& name) {
  std::size_t number = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

std::optional<std::size_t> FindChannel(std::span<const SetupChannel> channels, const std::string& name,
                                       std::string& why) {
  const auto isNamed = [&](const SetupChannel& channel) { return channel.label == name; };
  const auto found = std::find_if(channels.begin(), channels.end(), isNamed);
  if (found == channels.end()) {
    const std::size_t number = NumberIn(name);
    if (number >= 1 && number <= channels.size()) return number - 1;
    why = fmt::format("There is no channel \"{}\" among the {}.", name, channels.size());
    return std::nullopt;
  }
  if (std::find_if(found + 1, channels.end(), isNamed) != channels.end()) {
    why = fmt::format("More than one channel is called \"{}\". Choose by number.", name);
    return std::nullopt;
  }
  return static_cast<std::size_t>(found - channels.begin());
}

}  // namespace

std::optional<std::vector<std::size_t>> ChooseChannels(const CSetup& setup,
                                                       const std::vector<std::string>& names,
                                                       std::string& why) {
  const std::span<const SetupChannel> channels = setup.Channels();
  std::vector<std::size_t> chosen;
  if (names.empty()) {
    chosen.resize(channels.size());
    std::iota(chosen.begin(), chosen.end(), std::size_t{0});
  }
  for (const std::string& name : names) {
    const auto index = FindChannel(channels, name, why);
    if (!index) return std::nullopt;
    chosen.push_back(*index);
  }
  return chosen;
}

}  // namespace wavelock::command

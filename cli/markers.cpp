// wavelock markers: the named points of a recording.
#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <string>

#include "cli/input_recording.h"
#include "cli/row_command.h"
#include "cli/subcommands.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock markers night.rec | column -t -s \"$(printf '\\t')\"\n"
    "  wavelock markers night.rec --format json | jq '.[] | select(.locked)'\n"
    "\n"
    "Points, epochs and channels count from 0.\n";

std::optional<std::int32_t> IndexFrom0(std::int32_t index) {
  return index >= 0 ? std::optional(index) : std::nullopt;
}

// With a point also where it is whole; missing where it is no number.
nlohmann::ordered_json Number(double value) {
  return std::isfinite(value) ? nlohmann::ordered_json(value) : nlohmann::ordered_json();
}

std::string ColourText(std::uint32_t colour) {
  return fmt::format("#{:02x}{:02x}{:02x}", colour & 0xFF, colour >> 8 & 0xFF, colour >> 16 & 0xFF);
}

void AddMarkers(const CMarkerList& markers, RowWriter& rows) {
  for (std::int32_t i = 0; i < markers.GetCount(); ++i) {
    const CMarker& marker = *markers.GetAt(i);
    if (!rows.Add(IndexFrom0(marker.sampleIndex), IndexFrom0(marker.epoch), IndexFrom0(marker.channel),
                  marker.name, marker.text, Number(marker.secondValue), marker.locked != 0,
                  ColourText(marker.colour)))
      return;
  }
}

ExitCode Run(const RowOptions& options) {
  const auto input = InputRecording::Open(options.path);
  if (!input) return kFailed;
  return WriteRows(options, {"point", "epoch", "channel", "name", "text", "value", "locked", "colour"},
                   [&](RowWriter& rows) { AddMarkers((*input)->markerList, rows); });
}

}  // namespace

Subcommand MakeMarkers(CLI::App& program) {
  return MakeRowCommand(program, "markers", "Markers: named points of the recording", kExamples, Run);
}

}  // namespace wavelock::command

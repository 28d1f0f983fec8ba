// wavelock setup: every field of the setup in a recording or a setup file, and that setup as a file.
#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/complaint.h"
#include "cli/input_recording.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/subcommands.h"
#include "wavelock/platform/printable.h"
#include "wavelock/setup/tff_file.h"
#include "wavelock/setup/visit_fields.h"

namespace wavelock::command {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock setup night.rec | grep channels\n"
    "  wavelock setup night.rec --json | jq '.channels[].label'\n"
    "  wavelock setup night.rec --save night.ast\n"
    "\n"
    "Fields are told by the names and in the units of the library; subject and institution are among them.\n";

struct Options {
  std::string path{};
  bool json = false;
  std::string saveTo{};
  OutputOptions output{};
};

// ---- fields by their type

// Texts in files are Latin-1.
std::string Utf8(std::string_view latin1) {
  std::string text;
  for (const char c : latin1) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x80) text += static_cast<char>(0xC0 | (code >> 6));
    text += code < 0x80 ? c : static_cast<char>(0x80 | (code & 0x3F));
  }
  return text;
}

// The shortest number that reads back as the same single; null for what is none.
ordered_json Value(float value) {
  return std::isfinite(value) ? ordered_json::parse(fmt::format("{}", value)) : ordered_json();
}
ordered_json Value(std::int32_t value) {
  return value;
}
ordered_json Value(const std::string& text) {
  return Utf8(text);
}
template <std::size_t N>
ordered_json Value(const FixedText<N>& text) {
  return Utf8(text.View());
}
template <std::size_t N>
ordered_json Value(const std::array<std::uint8_t, N>& bytes) {
  return fmt::format("{:02x}", fmt::join(bytes, ""));
}
template <HasFields Object>
ordered_json Value(const Object& object);
template <HasElements Object>
ordered_json Value(const Object& object);
template <class T, std::size_t N>
ordered_json Value(const std::array<T, N>& values);
template <class T>
ordered_json Value(std::span<const T> values);

ordered_json Value(const std::optional<std::span<const SetupChannel>>& channels) {
  return channels ? Value(*channels) : ordered_json();
}

template <class T>
ordered_json Value(std::span<const T> values) {
  ordered_json list = ordered_json::array();
  for (const T& value : values) list.push_back(Value(value));
  return list;
}

template <class T, std::size_t N>
ordered_json Value(const std::array<T, N>& values) {
  return Value(std::span<const T>(values));
}

template <HasFields Object>
ordered_json Value(const Object& object) {
  ordered_json fields = ordered_json::object();
  VisitFields(object, [&fields](const char* name, const auto& value) { fields[name] = Value(value); });
  return fields;
}

template <HasElements Object>
ordered_json Value(const Object& object) {
  ordered_json parts = ordered_json::array();
  VisitElements(object, [&parts](std::size_t, const auto& value) { parts.push_back(Value(value)); });
  return parts;
}

// ---- for people: a line for each field

bool HasObjects(const ordered_json& value) {
  if (value.is_object()) return true;
  return value.is_array() && !value.empty() && HasObjects(value.front());
}

void AddLines(const std::string& path, const ordered_json& value, std::string& text) {
  if (!HasObjects(value)) {
    const std::string shown = value.is_string() ? Printable(value.get<std::string>()) : value.dump();
    text += fmt::format("{}\t{}\n", path, shown);
  } else if (value.is_object()) {
    for (const auto& [name, field] : value.items())
      AddLines(path.empty() ? name : fmt::format("{}.{}", path, name), field, text);
  } else {
    std::size_t index = 0;
    for (const ordered_json& element : value) AddLines(fmt::format("{}[{}]", path, index++), element, text);
  }
}

std::string LinesOf(const ordered_json& setup) {
  std::string text;
  AddLines("", setup, text);
  return text;
}

// ---- the command

bool IsSetupFile(const std::string& path) {
  CTffFile file;
  return file.Open(path, OpenMode::kReadOnly) && file.ReadHeader() != CTffFile::kNoContainer;
}

bool MaySaveTo(const Options& options) {
  std::error_code error;
  if (options.saveTo.empty()) return true;
  if (std::filesystem::equivalent(options.saveTo, options.path, error)) {
    Complain(options.saveTo, "The setup would overwrite the file that it comes from.");
    return false;
  }
  return IsFree(options.saveTo, options.output.force);
}

bool Save(CSetup& setup, const std::string& path) {
  if (setup.SaveTo(path, Host::Default().files)) return true;
  Complain(path, "The setup cannot be written there.");
  return false;
}

ExitCode Show(CSetup& setup, const Options& options) {
  if (!options.saveTo.empty()) return Save(setup, options.saveTo) ? kDone : kFailed;
  const auto output = Output::Open(options.output, options.path);
  if (!output) return kFailed;
  const ordered_json fields = Value(static_cast<const CSetup&>(setup));
  output->Write(options.json ? fields.dump(2) + "\n" : LinesOf(fields));
  return output->Finish() ? kDone : kFailed;
}

ExitCode Run(const Options& options) {
  if (!MaySaveTo(options)) return kFailed;
  if (!IsSetupFile(options.path)) {
    const auto input = InputRecording::Open(options.path);
    if (!input) return kFailed;
    return Worse(Show(*(*input)->GetSetup(), options), input->HasLoss() ? kDoneWithLoss : kDone);
  }
  const auto setup = std::make_unique<CSetup>(0);
  setup->ResetToDefaults();
  setup->setupFileName = options.path;
  if (setup->LoadFile()) return Show(*setup, options);
  Complain(options.path, "The setup is not complete enough to be read.");
  return kFailed;
}

}  // namespace

Subcommand MakeSetup(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "setup", "Every field of the setup in a recording or a setup file", kExamples);
  const auto options = std::make_shared<Options>();
  AddFile(parser, options->path, "A recording or a setup file");
  AddFlag(parser, "--json", options->json, "One object");
  AddText(parser, "--save", options->saveTo, "OUT.ast", "Write the setup to this setup file instead");
  options->output.AddTo(parser);
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

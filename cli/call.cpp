// wavelock call: one method of the control, called as its clients call it.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "cli/complaint.h"
#include "cli/control_module.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/subcommands.h"
#include "wavelock/control/dispatch.h"
#include "wavelock/control/identifiers.h"
#include "wavelock/platform/component_loader.h"
#include "wavelock/platform/printable.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock call night.rec GetRate\n"
    "  wavelock call night.rec GetEvent 3\n"
    "  wavelock call --json night.rec GetContinuousFloatBlock 0 10 1280\n"
    "\n"
    "ARGS are the numbers that the method takes, in the order of its parameters; an array is made as large "
    "as\n"
    "nBlockSize says, in bytes. The control is the one that is registered, or else the one that came with\n"
    "this command. A method that answers FALSE is a failure.\n";

struct Options {
  std::string path{};
  std::string method{};
  std::vector<std::string> words{};
  bool json = false;
};

// ---- arguments

// One parameter of a call. A single number is an array of one.
struct Argument {
  ParameterInfo parameter;
  std::variant<std::vector<std::int16_t>, std::vector<std::int32_t>, std::vector<float>, std::string> value;
};

bool Parse(const std::string& word, float& number) {
  char* end = nullptr;
  number = std::strtof(word.c_str(), &end);
  return !word.empty() && *end == '\0';
}

template <class T>
bool Parse(const std::string& word, T& number) {
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  return error == std::errc() && stop == end;
}

bool Parse(const std::string& word, Argument& argument) {
  return std::visit(
      [&](auto& value) {
        if constexpr (std::is_same_v<decltype(value), std::string&>) {
          value = word;
          return true;
        } else {
          return Parse(word, value.front());
        }
      },
      argument.value);
}

Argument Empty(const ParameterInfo& parameter) {
  switch (parameter.type) {
    case ValueType::kI2:
      return {parameter, std::vector<std::int16_t>(1)};
    case ValueType::kR4:
      return {parameter, std::vector<float>(1)};
    case ValueType::kString:
      return {parameter, std::string()};
    default:
      return {parameter, std::vector<std::int32_t>(1)};
  }
}

// Blocks are as large as the arguments behind them say.
void MakeRoom(std::vector<Argument>& arguments) {
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
    if (arguments[i].parameter.passing != Passing::kBlock) continue;
    const auto bytes = static_cast<std::size_t>(
        std::max(0, std::get<std::vector<std::int32_t>>(arguments[i + 1].value).front()));
    std::visit(
        [&](auto& value) {
          constexpr std::size_t kElement = sizeof(value[0]);
          value.resize((bytes + kElement - 1) / kElement);
        },
        arguments[i].value);
  }
}

// Words fill the parameters in their order, blocks left out; references behind the last word start at 0.
// Nothing when words are missing, left over, or no numbers.
std::optional<std::vector<Argument>> ParseArguments(const MethodInfo& method,
                                                    const std::vector<std::string>& words) {
  std::vector<Argument> arguments;
  auto word = words.begin();
  for (std::uint32_t i = 0; i < method.parameterCount; ++i) {
    Argument& argument = arguments.emplace_back(Empty(method.parameters[i]));
    if (argument.parameter.passing == Passing::kBlock) continue;
    const bool isNeeded = i == 0 || argument.parameter.passing == Passing::kByValue;
    if (word == words.end() && !isNeeded) continue;
    if (word == words.end() || !Parse(*word++, argument)) return std::nullopt;
  }
  if (word != words.end()) return std::nullopt;
  MakeRoom(arguments);
  return arguments;
}

Variant Passed(Argument& argument) {
  return std::visit(
      [&](auto& value) -> Variant {
        if constexpr (std::is_same_v<decltype(value), std::string&>) {
          return std::string_view(value);
        } else {
          if (argument.parameter.passing == Passing::kByValue) return value.front();
          if (argument.parameter.passing == Passing::kBlock) return Variant::Block(std::span(value));
          return Variant::ByReference(value.data());
        }
      },
      argument.value);
}

// ---- what comes back

using Json = nlohmann::ordered_json;

// With as few digits as tell the number from its neighbours.
Json ToJson(float value) {
  return std::strtod(fmt::format("{}", value).c_str(), nullptr);
}
Json ToJson(std::int16_t value) {
  return value;
}
Json ToJson(std::int32_t value) {
  return value;
}

Json ToJson(const Variant& value) {
  switch (value.Type()) {
    case ValueType::kI2:
      return value.I2();
    case ValueType::kI4:
      return value.I4();
    case ValueType::kR4:
      return ToJson(value.R4());
    case ValueType::kBool:
      return value.Bool();
    case ValueType::kString:
      return value.IsNullString() ? Json() : Json(value.Text());
    default:
      return {};
  }
}

Json ToJson(const Argument& argument) {
  return std::visit(
      [&](const auto& value) -> Json {
        if constexpr (std::is_same_v<decltype(value), const std::string&>) {
          return value;
        } else {
          if (argument.parameter.passing != Passing::kBlock) return ToJson(value.front());
          Json numbers = Json::array();
          for (const auto number : value) numbers.push_back(ToJson(number));
          return numbers;
        }
      },
      argument.value);
}

std::string Line(const Json& value) {
  if (value.is_string()) return Printable(value.get<std::string>()) + "\n";
  if (value.is_number_float()) return fmt::format("{}\n", value.get<double>());
  return value.dump() + "\n";
}

// The result, then what the call left in the caller's variables: a line for each, and for each value of a
// block.
std::string Text(const Json& answer) {
  std::string text;
  for (const auto& [name, value] : answer.items()) {
    if (value.is_array()) {
      for (const Json& element : value) text += Line(element);
    } else {
      text += (name == "result" ? std::string() : name + "\t") + Line(value);
    }
  }
  return text;
}

Json AnswerOf(const Variant& result, const std::vector<Argument>& arguments) {
  Json answer;
  const Json outcome = ToJson(result);
  if (!outcome.is_null()) answer["result"] = outcome;
  if (outcome == Json(false)) return answer;  // nothing was written
  for (const Argument& argument : arguments) {
    if (argument.parameter.passing != Passing::kByValue) answer[argument.parameter.name] = ToJson(argument);
  }
  return answer;
}

// ---- the call

std::string_view NameOf(ValueType type) {
  switch (type) {
    case ValueType::kI2:
      return "I2";
    case ValueType::kR4:
      return "R4";
    case ValueType::kString:
      return "BSTR";
    default:
      return "I4";
  }
}

std::string Declaration(const MethodInfo& method) {
  std::string text = std::string(method.name) + "(";
  for (std::uint32_t i = 0; i < method.parameterCount; ++i) {
    constexpr const char* kMarks[] = {"", "*", "[]"};
    const ParameterInfo& parameter = method.parameters[i];
    text += fmt::format("{}{}{} {}", i == 0 ? "" : ", ", NameOf(parameter.type),
                        kMarks[static_cast<int>(parameter.passing)], parameter.name);
  }
  return text + ")";
}

std::span<const MethodInfo> MethodsOf(Dispatch& control) {
  const InterfaceInfo& info = *control.GetTypeInfo();
  return {info.methods, info.methodCount};
}

// Null, with a complaint, for a name that is none.
const MethodInfo* FindMethod(Dispatch& control, const std::string& name) {
  std::int32_t id = 0;
  if (control.GetIdOfName(name.c_str(), &id) == Result::kDone) {
    for (const MethodInfo& method : MethodsOf(control)) {
      if (method.id == id) return &method;
    }
  }
  std::string names;
  for (const MethodInfo& method : MethodsOf(control)) names += std::string("\n  ") + method.name;
  Complain("The control has no method \"" + name + "\". It has:" + names);
  return nullptr;
}

bool OpenFile(Dispatch& control, const std::string& path) {
  std::int32_t id = 0;
  Variant opened;
  const Variant name(path);
  return control.GetIdOfName("OpenInputDataFile", &id) == Result::kDone &&
         control.Invoke(id, &name, 1, &opened, nullptr) == Result::kDone && opened.Bool();
}

ExitCode CallMethod(Dispatch& control, const MethodInfo& method, std::vector<Argument>& arguments,
                    bool asJson) {
  std::vector<Variant> passed;
  passed.reserve(arguments.size());
  for (Argument& argument : arguments) passed.push_back(Passed(argument));
  Variant result;
  const Result called = control.Invoke(method.id, passed.data(), method.parameterCount, &result, nullptr);
  if (called != Result::kDone) {
    Complain(fmt::format("The call was refused (0x{:08X}): {}", static_cast<std::uint32_t>(called),
                         Declaration(method)));
    return called == Result::kException ? kFailed : kUsage;
  }
  const Json answer = AnswerOf(result, arguments);
  const auto output = Output::Open({}, {});
  output->Write(asJson ? answer.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n" : Text(answer));
  const bool isRefused = result.Type() == ValueType::kBool && !result.Bool();
  return output->Finish() && !isRefused ? kDone : kFailed;
}

ExitCode Run(const Options& options) {
  const auto registry = RegistryWithControl();
  SystemLibraries libraries;
  ComponentLoader loader(*registry, libraries);
  Reference<Dispatch> control;
  const Result created = loader.Create(kControlProgrammaticId, control);
  if (created != Result::kDone) {
    Complain(fmt::format("The control cannot be loaded (0x{:08X}). {}", static_cast<std::uint32_t>(created),
                         loader.ErrorText()));
    return kFailed;
  }
  const MethodInfo* const method = FindMethod(*control, options.method);
  if (method == nullptr) return kUsage;
  auto arguments = ParseArguments(*method, options.words);
  if (!arguments) {
    Complain("The arguments do not fit " + Declaration(*method));
    return kUsage;
  }
  if (!OpenFile(*control, options.path)) return kFailed;
  return CallMethod(*control, *method, *arguments, options.json);
}

}  // namespace

Subcommand MakeCall(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "call", "One method of the control, called as its clients call it", kExamples);
  const auto options = std::make_shared<Options>();
  AddFile(parser, options->path);
  AddArgument(parser, "METHOD", options->method, "Its name, in either case", Need::kRequired);
  AddArguments(parser, "ARGS", options->words, "What it takes");
  AddFlag(parser, "--json", options->json, "One line of JSON");
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command

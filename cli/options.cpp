#include "cli/options.h"

#include <fmt/format.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <charconv>

namespace wavelock::command {
namespace {

std::optional<std::uint64_t> NumberIn(const std::string& text, Limits limits) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < limits.least || number > limits.most)
    return std::nullopt;
  return number;
}

std::string Told(Limits limits) {
  const bool isOpen = limits.most == Limits().most;
  return isOpen ? fmt::format("from {} on", limits.least)
                : fmt::format("from {} to {}", limits.least, limits.most);
}

}  // namespace

CLI::App& AddSubcommand(CLI::App& program, const std::string& name, const std::string& description,
                        const std::string& examples) {
  CLI::App& parser = *program.add_subcommand(name, description);
  parser.footer(examples);
  return parser;
}

void AddFile(CLI::App& parser, std::string& path, const std::string& description) {
  AddArgument(parser, "FILE", path, description, Need::kRequired);
}

void AddFiles(CLI::App& parser, std::vector<std::string>& paths, const std::string& description) {
  parser.add_option("FILE", paths, description)->type_name("")->required();
}

void AddArgument(CLI::App& parser, const std::string& name, std::string& word, const std::string& description,
                 Need need) {
  parser.add_option(name, word, description)->type_name("")->required(need == Need::kRequired);
}

void AddArguments(CLI::App& parser, const std::string& name, std::vector<std::string>& words,
                  const std::string& description) {
  parser.add_option(name, words, description)->type_name("");
}

void AddFlag(CLI::App& parser, const std::string& name, bool& value, const std::string& description) {
  parser.add_flag(name, value, description);
}

void AddText(CLI::App& parser, const std::string& name, std::string& text, const std::string& kind,
             const std::string& description) {
  parser.add_option(name, text, description)->type_name(kind);
}

void AddList(CLI::App& parser, const std::string& name, std::vector<std::string>& texts,
             const std::string& description) {
  parser.add_option(name, texts, description)->type_name("A,B")->delimiter(',')->allow_extra_args(false);
}

void AddWord(CLI::App& parser, const std::string& name, const std::vector<std::string>& words,
             const std::string& description, std::function<void(std::size_t)> store) {
  std::string all;
  for (const std::string& word : words) all.append(all.empty() ? "" : "|").append(word);
  const auto placeOf = [words](const std::string& word) {
    return static_cast<std::size_t>(std::find(words.begin(), words.end(), word) - words.begin());
  };
  const auto check = [placeOf, all, count = words.size()](const std::string& word) {
    return placeOf(word) < count ? std::string() : fmt::format("\"{}\" is none of {}", word, all);
  };
  const auto take = [placeOf, store](const std::string& word) { store(placeOf(word)); };
  parser.add_option_function<std::string>(name, take, description)->type_name(all)->check(check);
}

void AddNumber(CLI::App& parser, const std::string& name, const std::string& description, Limits limits,
               Need need, std::function<void(std::uint64_t)> store) {
  const auto check = [limits](const std::string& text) {
    return NumberIn(text, limits) ? std::string() : fmt::format("\"{}\" is no number {}", text, Told(limits));
  };
  const auto take = [store, limits](const std::string& text) { store(NumberIn(text, limits).value_or(0)); };
  parser.add_option_function<std::string>(name, take, description)
      ->type_name(name.front() == '-' ? "N" : "")
      ->required(need == Need::kRequired)
      ->check(check);
}

}  // namespace wavelock::command

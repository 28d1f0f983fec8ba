// Kinds of options that several subcommands have, each told the same way in the help.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <string>
#include <utility>
#include <vector>

namespace wavelock::command {

// Words and what they stand for, in the order of the help.
template <class T>
using Choices = std::vector<std::pair<std::string, T>>;

// The recording, or the recordings, that a subcommand works on. `Paths` is a string or a vector of them.
template <class Paths>
void AddFile(CLI::App& parser, Paths& paths, const std::string& description = "The recording") {
  parser.add_option("FILE", paths, description)->type_name("")->required();
}

// One word out of several. `value` and `choices` outlive the parser.
template <class T>
void AddChoice(CLI::App& parser, const std::string& name, T& value, const Choices<T>& choices,
               const std::string& description) {
  std::string words;
  for (const auto& choice : choices) words += (words.empty() ? "" : "|") + choice.first;
  const auto check = [&choices, words](const std::string& word) {
    for (const auto& choice : choices) {
      if (choice.first == word) return std::string();
    }
    return "\"" + word + "\" is none of " + words;
  };
  const auto store = [&value, &choices](const std::string& word) {
    for (const auto& choice : choices) {
      if (choice.first == word) value = choice.second;
    }
  };
  parser.add_option_function<std::string>(name, store, description)->type_name(words)->check(check);
}

// A whole number from 0 on. `Number` is an unsigned type or an optional one.
template <class Number>
CLI::Option* AddCount(CLI::App& parser, const std::string& name, Number& value,
                      const std::string& description) {
  const auto check = [](const std::string& text) {
    const bool isCount = text.find_first_not_of("0123456789") == std::string::npos;
    return isCount ? std::string() : "\"" + text + "\" is no number from 0 on";
  };
  return parser.add_option(name, value, description)->type_name("N")->check(check);
}

// Texts with commas between them.
inline void AddList(CLI::App& parser, const std::string& name, std::vector<std::string>& values,
                    const std::string& description) {
  parser.add_option(name, values, description)->type_name("A,B")->delimiter(',')->allow_extra_args(false);
}

}  // namespace wavelock::command

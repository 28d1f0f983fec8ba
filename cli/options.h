// What subcommands take from the command line, each kind told the same way in the help. What is filled
// outlives the parser, whose own headers are left to options.cpp and main.cpp: they take longer to compile
// than most subcommands.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
}

namespace wavelock::command {

enum class Need { kOptional, kRequired };

// A subcommand of the program, with examples at the end of its help.
CLI::App& AddSubcommand(CLI::App& program, const std::string& name, const std::string& description,
                        const std::string& examples);

// The recording, or the recordings, that a subcommand works on.
void AddFile(CLI::App& parser, std::string& path, const std::string& description = "The recording");
void AddFiles(CLI::App& parser, std::vector<std::string>& paths, const std::string& description);

// A word in its place, and all words from there on.
void AddArgument(CLI::App& parser, const std::string& name, std::string& word, const std::string& description,
                 Need need);
void AddArguments(CLI::App& parser, const std::string& name, std::vector<std::string>& words,
                  const std::string& description);

// True when it is there.
void AddFlag(CLI::App& parser, const std::string& name, bool& value, const std::string& description);

// Any text; `kind` says in the help what it is.
void AddText(CLI::App& parser, const std::string& name, std::string& text, const std::string& kind,
             const std::string& description);

// Texts with commas between them.
void AddList(CLI::App& parser, const std::string& name, std::vector<std::string>& texts,
             const std::string& description);

// ---- one word out of several

// Words and what they stand for, in the order of the help.
template <class T>
using Choices = std::vector<std::pair<std::string, T>>;

// Hands the place of the word among `words` to `store`.
void AddWord(CLI::App& parser, const std::string& name, const std::vector<std::string>& words,
             const std::string& description, std::function<void(std::size_t)> store);

// `choices` outlives the parser too.
template <class T>
void AddChoice(CLI::App& parser, const std::string& name, T& value, const Choices<T>& choices,
               const std::string& description) {
  std::vector<std::string> words;
  for (const auto& choice : choices) words.push_back(choice.first);
  AddWord(parser, name, words, description, [&](std::size_t i) { value = choices[i].second; });
}

// ---- whole numbers

struct Limits {
  std::uint64_t least = 0;
  std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
};

// An option, or, with a name that begins with no dash, an argument.
void AddNumber(CLI::App& parser, const std::string& name, const std::string& description, Limits limits,
               Need need, std::function<void(std::uint64_t)> store);

template <class Number>
void AddCount(CLI::App& parser, const std::string& name, Number& value, const std::string& description,
              Limits limits = {}, Need need = Need::kOptional) {
  limits.most = std::min<std::uint64_t>(limits.most, std::numeric_limits<Number>::max());
  AddNumber(parser, name, description, limits, need,
            [&value](std::uint64_t number) { value = static_cast<Number>(number); });
}

template <class Number>
void AddCount(CLI::App& parser, const std::string& name, std::optional<Number>& value,
              const std::string& description) {
  AddNumber(parser, name, description, {.most = std::numeric_limits<Number>::max()}, Need::kOptional,
            [&value](std::uint64_t number) { value = static_cast<Number>(number); });
}

}  // namespace wavelock::command

#include "wavelock/platform/console_modal_interface.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <istream>
#include <ostream>
#include <system_error>

#include "wavelock/platform/ascii_case.h"
#include "wavelock/platform/printable.h"

namespace wavelock {
namespace {

constexpr std::string_view kSpeaker = "wavelock: ";
constexpr std::string_view kCancel = "q";

// Messages may have several lines.
std::string Shown(std::string_view text) {
  return Printable(text, "\n\t");
}

std::string WithoutBlanksAround(const std::string& line) {
  constexpr char kBlanks[] = " \t\r";
  const std::size_t first = line.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

std::string WithExtension(std::filesystem::path path, const std::string& extension) {
  if (!path.has_extension() && !extension.empty()) path.replace_extension(extension);
  return path.string();
}

bool Exists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

bool IsOneOf(int choice, const std::vector<std::string>& choices) {
  return choice >= 0 && static_cast<std::size_t>(choice) < choices.size();
}

// The index of the choice that a person counts from 1; -1 when the answer is no number.
int ChoiceFrom(const std::string& answer) {
  int number = 0;
  const char* const end = answer.data() + answer.size();
  const auto [stop, error] = std::from_chars(answer.data(), end, number);
  return error == std::errc() && stop == end && number > 0 ? number - 1 : -1;
}

// A colour has red in its low byte; people write red first.
std::uint32_t RedAndBlueSwapped(std::uint32_t colour) {
  return (colour & 0x00FF00) | (colour & 0x0000FF) << 16 | (colour & 0xFF0000) >> 16;
}

std::string ColourText(std::uint32_t colour) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[RedAndBlueSwapped(colour) >> shift & 15];
  return text;
}

std::optional<std::uint32_t> ColourFrom(std::string_view text) {
  constexpr std::size_t kDigits = 6;
  std::uint32_t colour = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), colour, 16);
  const bool isWhole = error == std::errc() && stop == text.data() + text.size() && text.size() == kDigits;
  return isWhole ? std::optional(RedAndBlueSwapped(colour)) : std::nullopt;
}

// What becomes of a dialog that nobody can answer.
std::string UnaskedOutcome(const ModalDialog& dialog) {
  if (dialog.choices.empty()) return "No terminal to ask on: taken as read.";
  if (!IsOneOf(dialog.choice, dialog.choices)) return "No terminal to ask on: cancelled.";
  return "No terminal to ask on: it stays at " + dialog.choices[static_cast<std::size_t>(dialog.choice)] +
         ".";
}

}  // namespace

ConsoleModalInterface::ConsoleModalInterface(std::istream& answers, std::ostream& words, bool asks)
    : answers_(answers), words_(words), asks_(asks) {}

void ConsoleModalInterface::ShowMessage(const ModalText& message) {
  const std::lock_guard lock(mutex_);
  Say(message.text);
}

bool ConsoleModalInterface::AskYesNo(const ModalText& question) {
  const std::lock_guard lock(mutex_);
  Say(question.text);
  if (asks_) return AskWhether("Yes or no?", false).value_or(false);
  Say("No terminal to ask on: the answer is no.");
  return false;
}

bool ConsoleModalInterface::RunDialog(ModalDialog& dialog) {
  const std::lock_guard lock(mutex_);
  Say(dialog.caption);
  for (const std::string& text : dialog.texts) Say(text);
  if (!asks_) {
    Say(UnaskedOutcome(dialog));
    return false;
  }
  const bool hasBox = !dialog.checkBox.empty();
  const auto choice = dialog.choices.empty() ? dialog.choice : AskWhich(dialog.choices, dialog.choice);
  if (!choice) return false;
  const auto checked = hasBox ? AskWhether(dialog.checkBox + "?", dialog.checked) : dialog.checked;
  if (!checked) return false;
  dialog.choice = *choice;
  dialog.checked = *checked;
  return true;
}

void ConsoleModalInterface::Say(std::string_view text) {
  words_ << std::string(kSpeaker) + Shown(text) + "\n" << std::flush;
}

std::optional<std::string> ConsoleModalInterface::AskSavePath(const SavePathDialog& dialog) {
  const std::lock_guard lock(mutex_);
  if (!asks_) {
    Say("Save as: no terminal to ask on: cancelled.");
    return std::nullopt;
  }
  const std::string usual = dialog.initialFolder + dialog.initialFile;
  const std::string prompt = "Save as, or q to cancel" + (usual.empty() ? ": " : " [" + usual + "]: ");
  while (const auto answer = ReadLine(prompt)) {
    if (answer->empty() && dialog.initialFile.empty()) continue;
    const std::string path = WithExtension(answer->empty() ? usual : *answer, dialog.defaultExtension);
    if (!Exists(path)) return path;
    const auto replaces = AskWhether(path + " exists. Replace it?", false);
    if (!replaces) return std::nullopt;
    if (*replaces) return path;
  }
  return std::nullopt;
}

std::optional<std::uint32_t> ConsoleModalInterface::AskColour(std::uint32_t usual) {
  const std::lock_guard lock(mutex_);
  if (!asks_) {
    Say("Colour: no terminal to ask on: cancelled.");
    return std::nullopt;
  }
  while (const auto answer = ReadAnswer("Colour as RRGGBB, or q to cancel [" + ColourText(usual) + "]: ")) {
    if (answer->empty()) return usual;
    if (const auto colour = ColourFrom(*answer)) return colour;
  }
  return std::nullopt;
}

// Nothing when the person cancels or the input is at its end.
std::optional<std::string> ConsoleModalInterface::ReadLine(std::string_view prompt) {
  words_ << Shown(prompt) << std::flush;
  answers_.clear();  // a terminal can go on after its end was typed
  std::string line;
  if (!std::getline(answers_, line)) {
    words_ << "\n" << std::flush;
    return std::nullopt;
  }
  std::string answer = WithoutBlanksAround(line);
  if (InLowerCase(answer) == kCancel) return std::nullopt;
  return answer;
}

std::optional<std::string> ConsoleModalInterface::ReadAnswer(std::string_view prompt) {
  auto answer = ReadLine(prompt);
  if (answer) answer = InLowerCase(*answer);
  return answer;
}

std::optional<bool> ConsoleModalInterface::AskWhether(std::string_view prompt, bool usual) {
  const std::string asked = std::string(prompt) + (usual ? " [Y/n] " : " [y/N] ");
  while (const auto answer = ReadAnswer(asked)) {
    if (answer->empty()) return usual;
    if (answer == "y" || answer == "yes") return true;
    if (answer == "n" || answer == "no") return false;
  }
  return std::nullopt;
}

std::optional<int> ConsoleModalInterface::AskWhich(const std::vector<std::string>& choices, int usual) {
  for (std::size_t i = 0; i < choices.size(); ++i) {
    words_ << "  " << i + 1 << ") " << Shown(choices[i]) << "\n";
  }
  const bool hasUsual = IsOneOf(usual, choices);
  const std::string asked =
      "Number, or q to cancel" + (hasUsual ? " [" + std::to_string(usual + 1) + "]: " : std::string(": "));
  while (const auto answer = ReadAnswer(asked)) {
    if (answer->empty() && hasUsual) return usual;
    if (const int choice = ChoiceFrom(*answer); IsOneOf(choice, choices)) return choice;
  }
  return std::nullopt;
}

}  // namespace wavelock

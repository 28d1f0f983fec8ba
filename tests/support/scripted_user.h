// A person who answers what the test told them to expect, in that order, and fails the test when asked
// anything else, when a question never comes, or when a wait cursor is left standing.
#pragma once

#include <deque>
#include <optional>

#include "wavelock/platform/modal_interface.h"

namespace wavelock {

class ScriptedUser : public ModalInterface {
 public:
  struct DialogAnswer {
    bool accept = true;
    int choice = 0;        // taken only where the dialog offers choices
    bool checked = false;  // taken only where the dialog has a box
  };

  ~ScriptedUser() override;

  // The number of a question's text, 0 for one without.
  void ExpectQuestion(int number, bool yes);
  void ExpectDialog(const std::string& name, DialogAnswer answer);
  void ExpectSavePath(std::optional<std::string> chosen);
  void ExpectColour(std::optional<std::uint32_t> chosen);
  bool saysYesToAll = false;  // to questions that nobody expected

  void ShowMessage(const ModalText& message) override { messages.push_back(message); }
  bool AskYesNo(const ModalText& question) override;
  bool RunDialog(ModalDialog& dialog) override;
  std::optional<std::string> AskSavePath(const SavePathDialog& dialog) override;
  std::optional<std::uint32_t> AskColour(std::uint32_t usual) override;
  void BeginWaitCursor() override;
  void EndWaitCursor() override;

  // What was shown, in order; dialogs as they came up.
  std::vector<ModalText> messages;
  std::vector<ModalText> questions;
  std::vector<ModalDialog> dialogs;
  std::vector<SavePathDialog> savePaths;

  int waitCursors = 0;        // that stand now
  int deepestWaitCursor = 0;  // that ever stood at once

 private:
  struct Expected {
    std::string what;
    DialogAnswer answer;
    std::optional<std::string> path{};
    std::optional<std::uint32_t> colour{};
  };

  // What was to come next, if it is this.
  std::optional<Expected> Take(const std::string& what);

  std::deque<Expected> expected_;
};

// The numbers of the texts, to compare in one line.
std::vector<int> NumbersOf(const std::vector<ModalText>& texts);

}  // namespace wavelock

// Speaks to a person in lines of text.
#pragma once

#include <iosfwd>
#include <mutex>
#include <optional>
#include <string_view>

#include "wavelock/platform/modal_interface.h"

namespace wavelock {

// Where nobody can answer, a question is answered no and a dialog cancelled, and a line says so. One object
// serves many threads: what belongs together stays together.
class ConsoleModalInterface : public ModalInterface {
 public:
  // Borrows both streams. `asks`: both of them lead to a person.
  ConsoleModalInterface(std::istream& answers, std::ostream& words, bool asks);

  void ShowMessage(const ModalText& message) override;
  bool AskYesNo(const ModalText& question) override;
  bool RunDialog(ModalDialog& dialog) override;
  std::optional<std::string> AskSavePath(const SavePathDialog& dialog) override;
  std::optional<std::uint32_t> AskColour(std::uint32_t usual) override;
  void BeginWaitCursor() override {}
  void EndWaitCursor() override {}

 private:
  void Say(std::string_view text);
  std::optional<std::string> ReadLine(std::string_view prompt);
  std::optional<std::string> ReadAnswer(std::string_view prompt);
  std::optional<bool> AskWhether(std::string_view prompt, bool usual);
  std::optional<int> AskWhich(const std::vector<std::string>& choices, int usual);

  std::mutex mutex_;
  std::istream& answers_;
  std::ostream& words_;
  const bool asks_;
};

}  // namespace wavelock

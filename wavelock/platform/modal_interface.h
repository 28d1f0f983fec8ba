// How the library speaks to a person: messages, questions and small dialogs, each of which returns when the
// person is done with it. What a dialog looks like is the implementation's; the library states what it says
// and asks.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wavelock {

enum class ModalSource {
  kNumbered,  // from the table of numbered messages; `number` says which
  kSystem,    // the operating system's own words
  kNotice,    // text that stands where it is raised
};

struct ModalText {
  ModalSource source = ModalSource::kNotice;
  int number = 0;           // 0 when the text has none
  std::string text{};       // as shown, with everything inserted
  std::string insertion{};  // the name or path that was inserted, if any
};

// A dialog of at most one text block, one group of choices and one box to tick.
struct ModalDialog {
  int templateNumber = 0;
  std::string name{};  // of the class that raises it
  std::string caption{};
  std::vector<std::string> texts{};
  std::vector<std::string> choices{};  // empty for none
  int choice = 0;                      // index of the chosen one
  std::string checkBox{};              // its label; empty for none
  bool checked = false;
  int icon = 0;  // resource number of the picture beside the texts; 0 for none
};

// A dialog that asks where to save, and asks again before it names a file that exists.
struct SavePathDialog {
  std::string defaultExtension{};  // added to a name without one; without its dot
  std::string initialFile{};       // a name; empty for none
  std::string initialFolder{};     // empty for the current one
  std::string filter{};            // "words|pattern|" for each choice, and a last "|"
};

class ModalInterface {
 public:
  virtual ~ModalInterface() = default;

  virtual void ShowMessage(const ModalText& message) = 0;

  // True only for yes.
  virtual bool AskYesNo(const ModalText& question) = 0;

  // Shows the dialog and stores what the person left in `choice` and `checked`. True when it was accepted;
  // after a cancel the fields of `dialog` are as they were.
  virtual bool RunDialog(ModalDialog& dialog) = 0;

  // The path that was chosen, or nothing after a cancel.
  virtual std::optional<std::string> AskSavePath(const SavePathDialog& dialog) = 0;

  // The colour that was chosen, or nothing after a cancel. Red is in the low byte, then green, then blue.
  virtual std::optional<std::uint32_t> AskColour(std::uint32_t usual) = 0;

  // In pairs; they may nest.
  virtual void BeginWaitCursor() = 0;
  virtual void EndWaitCursor() = 0;
};

// A wait cursor for as long as it lives.
class WaitCursor {
 public:
  explicit WaitCursor(ModalInterface& modal) : modal_(modal) { modal_.BeginWaitCursor(); }
  ~WaitCursor() { modal_.EndWaitCursor(); }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;

 private:
  ModalInterface& modal_;
};

}  // namespace wavelock

// On a terminal a person is asked; anywhere else the safe answer is taken and told.
#include <gtest/gtest.h>

#include <sstream>

#include "wavelock/platform/console_modal_interface.h"

namespace wavelock {
namespace {

ModalText Text(const std::string& text) {
  return {.text = text};
}

ModalDialog KindDialog() {
  ModalDialog dialog{.name = "Kind", .caption = "Kind of recording"};
  dialog.texts = {"Which is right?"};
  dialog.choices = {"AVG", "CNT"};
  return dialog;
}

ModalDialog BoxDialog() {
  ModalDialog dialog{.name = "Box", .caption = "Newer version"};
  dialog.checkBox = "Don't show this again";
  return dialog;
}

struct Console {
  explicit Console(const std::string& typed, bool asks = true)
      : answers(typed), modal(answers, words, asks) {}

  std::istringstream answers;
  std::ostringstream words;
  ConsoleModalInterface modal;
};

TEST(ConsolePrompt, OnlyYesIsYes) {
  EXPECT_TRUE(Console("y\n").modal.AskYesNo(Text("Go on?")));
  EXPECT_TRUE(Console("what\n  YES \r\n").modal.AskYesNo(Text("Go on?")));
  for (const char* typed : {"", "\n", "n\n", "No\n", "q\ny\n", "what\n"}) {
    EXPECT_FALSE(Console(typed).modal.AskYesNo(Text("Go on?"))) << typed;
  }
  Console ended("");
  EXPECT_FALSE(ended.modal.AskYesNo(Text("First?")));
  ended.answers.str("y\n");
  EXPECT_TRUE(ended.modal.AskYesNo(Text("Second?"))) << "the input goes on";
}

TEST(ConsolePrompt, DialogKeepsItsFieldsWhenCancelledAtAnyPoint) {
  for (const char* typed : {"", "q\n", "2\n", "2\nq\n", "3\n0\n-1\nx\n"}) {
    ModalDialog dialog = KindDialog();
    dialog.checkBox = "Always";
    EXPECT_FALSE(Console(typed).modal.RunDialog(dialog)) << typed;
    EXPECT_EQ(dialog.choice, 0);
    EXPECT_FALSE(dialog.checked);
  }
}

TEST(ConsolePrompt, DialogTakesTheChoiceTheTickAndTheUsualAnswers) {
  ModalDialog kind = KindDialog();
  EXPECT_TRUE(Console("9\n2\n").modal.RunDialog(kind));
  EXPECT_EQ(kind.choice, 1);
  EXPECT_TRUE(Console("\n").modal.RunDialog(kind));
  EXPECT_EQ(kind.choice, 1);
  kind.choice = -1;
  EXPECT_TRUE(Console("\n1\n").modal.RunDialog(kind));
  EXPECT_EQ(kind.choice, 0) << "without a usual one a choice must be made";

  ModalDialog box = BoxDialog();
  EXPECT_TRUE(Console("y\n").modal.RunDialog(box));
  EXPECT_TRUE(box.checked);
  EXPECT_TRUE(Console("\n").modal.RunDialog(box));
  EXPECT_TRUE(box.checked);
}

TEST(ConsolePrompt, NobodyIsAskedWithoutATerminalAndTheOutcomeIsTold) {
  Console console("y\n2\ny\n", false);
  ModalDialog kind = KindDialog();
  ModalDialog box = BoxDialog();
  EXPECT_FALSE(console.modal.AskYesNo(Text("Go on?")));
  EXPECT_FALSE(console.modal.RunDialog(kind));
  EXPECT_FALSE(console.modal.RunDialog(box));
  EXPECT_EQ(kind.choice, 0);
  EXPECT_FALSE(box.checked);
  EXPECT_EQ(console.answers.tellg(), 0);
  EXPECT_EQ(console.words.str(),
            "wavelock: Go on?\n"
            "wavelock: No terminal to ask on: the answer is no.\n"
            "wavelock: Kind of recording\n"
            "wavelock: Which is right?\n"
            "wavelock: No terminal to ask on: it stays at AVG.\n"
            "wavelock: Newer version\n"
            "wavelock: No terminal to ask on: taken as read.\n");
}

TEST(ConsolePrompt, PathToSaveToIsTypedAndAFileIsReplacedOnlyWhenWanted) {
  const SavePathDialog dialog{.defaultExtension = "ast", .initialFile = "Old", .initialFolder = "no/folder/"};
  EXPECT_EQ(Console(" New Name \n").modal.AskSavePath(dialog), "New Name.ast");
  EXPECT_EQ(Console("x.y\n").modal.AskSavePath(dialog), "x.y");
  EXPECT_EQ(Console("\n").modal.AskSavePath(dialog), "no/folder/Old.ast");
  EXPECT_EQ(Console("\nx\n").modal.AskSavePath({}), "x") << "there is no usual name";
  EXPECT_EQ(Console("q\n").modal.AskSavePath(dialog), std::nullopt);
  EXPECT_EQ(Console("").modal.AskSavePath(dialog), std::nullopt);
  EXPECT_EQ(Console("x\n", false).modal.AskSavePath(dialog), std::nullopt);
  EXPECT_EQ(Console("/\nn\nx.ast\n").modal.AskSavePath({}), "x.ast");
  EXPECT_EQ(Console("/\ny\n").modal.AskSavePath({}), "/");
}

TEST(ConsolePrompt, ColourIsTypedWithItsRedFirst) {
  EXPECT_EQ(Console("pink\n12345\nff8001\n").modal.AskColour(0), 0x0180FFu);
  EXPECT_EQ(Console("\n").modal.AskColour(0x123456), 0x123456u);
  EXPECT_EQ(Console("q\n").modal.AskColour(0), std::nullopt);
  EXPECT_EQ(Console("ff8001\n", false).modal.AskColour(0), std::nullopt);
}

TEST(ConsolePrompt, TextsCannotSteerTheTerminal) {
  Console console("");
  console.modal.ShowMessage(Text("caf\xC3\xA9 \x1B[2J\x07 \xC2\x9B\x31m\nline"));
  EXPECT_EQ(console.words.str(), "wavelock: caf\xC3\xA9 ?[2J? ?1m\nline\n");
}

}  // namespace
}  // namespace wavelock

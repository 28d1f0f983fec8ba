// On a terminal a person is asked; anywhere else the safe answer is taken and told. A number on a grid never
// leaves its range.
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

#include "tests/support/test_host.h"
#include "wavelock/platform/console_modal_interface.h"
#include "wavelock/prompts/spin_value_dialog.h"

namespace wavelock {
namespace {

const ModalText kQuestion{.text = "Go on?"};

ModalDialog KindDialog(const std::string& checkBox = "") {
  ModalDialog dialog{.name = "Kind", .caption = "Kind of recording"};
  dialog.texts = {"Which is right?"};
  dialog.choices = {"AVG", "CNT"};
  dialog.checkBox = checkBox;
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
  for (const char* typed : {"y\n", "what\n  YES \r\n"})
    EXPECT_TRUE(Console(typed).modal.AskYesNo(kQuestion)) << typed;
  for (const char* typed : {"\n", "n\n", "No\n", "q\ny\n", "what\n"})
    EXPECT_FALSE(Console(typed).modal.AskYesNo(kQuestion)) << typed;
  Console ended("");
  EXPECT_FALSE(ended.modal.AskYesNo(kQuestion));
  ended.answers.str("y\n");
  EXPECT_TRUE(ended.modal.AskYesNo(kQuestion)) << "the input goes on";
}

TEST(ConsolePrompt, DialogTakesAnswersOnlyWhenItGetsThemAll) {
  for (const char* typed : {"", "q\n", "2\n", "2\nq\n", "3\n0\n-1\nx\n"}) {
    ModalDialog dialog = KindDialog("Always");
    EXPECT_FALSE(Console(typed).modal.RunDialog(dialog)) << typed;
    EXPECT_TRUE(dialog.choice == 0 && !dialog.checked) << typed;
  }
  const std::tuple<int, const char*, int> answered[] = {{0, "3\n2\n", 1}, {1, "\n", 1}, {-1, "\n1\n", 0}};
  for (const auto& [usual, typed, choice] : answered) {
    ModalDialog dialog = KindDialog();
    dialog.choice = usual;  // -1: without a usual one a choice must be made
    EXPECT_TRUE(Console(typed).modal.RunDialog(dialog));
    EXPECT_EQ(dialog.choice, choice) << typed;
  }
  ModalDialog box = BoxDialog();
  for (const char* typed : {"y\n", "\n"}) {
    EXPECT_TRUE(Console(typed).modal.RunDialog(box));
    EXPECT_TRUE(box.checked) << typed;
  }
}

TEST(ConsolePrompt, NobodyIsAskedWithoutATerminalAndTheOutcomeIsTold) {
  Console console("y\n2\ny\n", false);
  ModalDialog kind = KindDialog();
  ModalDialog box = BoxDialog();
  EXPECT_FALSE(console.modal.AskYesNo(kQuestion));
  EXPECT_FALSE(console.modal.RunDialog(kind));
  EXPECT_FALSE(console.modal.RunDialog(box));
  EXPECT_TRUE(kind.choice == 0 && !box.checked);
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
  for (const char* typed : {"q\n", ""}) EXPECT_EQ(Console(typed).modal.AskSavePath(dialog), std::nullopt);
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
  console.modal.ShowMessage({.text = "caf\xC3\xA9 \x1B[2J\x07 \xC2\x9B\x31m\nline"});
  EXPECT_EQ(console.words.str(), "wavelock: caf\xC3\xA9 ?[2J? ?1m\nline\n");
}

TEST(SpinValue, PushedOrTypedItStaysOnItsGrid) {
  CSpinValueDialog dialog;  // 1.5, 1.75, 2 ...
  dialog.maxPosition = 70'000;
  dialog.origin = 1.5F;
  dialog.step = 0.25F;
  dialog.Spin(10, 3);
  EXPECT_EQ(dialog.position, 13);
  EXPECT_EQ(dialog.textBuffer, "4.75");
  dialog.Spin(std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(dialog.position, 70'000);
  EXPECT_EQ(dialog.SpinPosition(), 70'000 - 65'536);
  dialog.Spin(0, -1);
  EXPECT_EQ(dialog.position, 0);

  const std::pair<std::string, const char*> typed[] = {
      {" 2.6 and more", "2.50"}, {"2.7", "2.75"}, {"-9", "1.50"},    {"none", "1.50"},
      {"1e3", "1000.00"},        {"2e", "2.00"},  {"+.2e1", "2.00"}, {std::string(49, '0') + "29", "2.00"},
      {"1e999", "17501.50"}};
  for (const auto& [text, shown] : typed) {
    dialog.LeaveField(text);
    EXPECT_EQ(dialog.textBuffer, shown) << text;
  }
  dialog.step = 0;
  dialog.LeaveField("1.5");
  EXPECT_EQ(dialog.position, 0) << "0 / 0";
  dialog.LeaveField("2");
  EXPECT_EQ(dialog.position, 70'000) << "infinitely many steps";
}

TEST(SpinValue, ColourStaysWhenThePersonCancels) {
  TestHost test;
  CSpinValueDialog dialog;
  test.user.ExpectColour(0x0080FFu);
  test.user.ExpectColour(std::nullopt);
  for (int i = 0; i < 2; ++i) dialog.ChooseColour(test.host);
  EXPECT_EQ(dialog.colour, 0x0080FFu);
}

}  // namespace
}  // namespace wavelock

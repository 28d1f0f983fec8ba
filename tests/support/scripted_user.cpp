#include "tests/support/scripted_user.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace wavelock {
namespace {

std::string QuestionLabel(int number) {
  return "question " + std::to_string(number);
}

}  // namespace

ScriptedUser::~ScriptedUser() {
  for (const Expected& missing : expected_) ADD_FAILURE() << missing.what << " never came";
  EXPECT_EQ(waitCursors, 0) << "a wait cursor was left standing";
}

void ScriptedUser::ExpectQuestion(int number, bool yes) {
  expected_.push_back({QuestionLabel(number), {.accept = yes}});
}

void ScriptedUser::ExpectDialog(const std::string& name, DialogAnswer answer) {
  expected_.push_back({name, answer});
}

bool ScriptedUser::AskYesNo(const ModalText& question) {
  questions.push_back(question);
  const auto answer = Take(QuestionLabel(question.number));
  if (!answer) ADD_FAILURE() << "unexpected question: " << question.text;
  return answer && answer->accept;
}

bool ScriptedUser::RunDialog(ModalDialog& dialog) {
  dialogs.push_back(dialog);
  const auto answer = Take(dialog.name);
  if (!answer) ADD_FAILURE() << "unexpected dialog: " << dialog.name;
  if (!answer || !answer->accept) return false;
  if (!dialog.choices.empty()) dialog.choice = answer->choice;
  if (!dialog.checkBox.empty()) dialog.checked = answer->checked;
  return true;
}

void ScriptedUser::BeginWaitCursor() {
  deepestWaitCursor = std::max(deepestWaitCursor, ++waitCursors);
}

void ScriptedUser::EndWaitCursor() {
  if (--waitCursors < 0) ADD_FAILURE() << "a wait cursor ended that never began";
}

std::optional<ScriptedUser::DialogAnswer> ScriptedUser::Take(const std::string& what) {
  if (expected_.empty() || expected_.front().what != what) return std::nullopt;
  const DialogAnswer answer = expected_.front().answer;
  expected_.pop_front();
  return answer;
}

std::vector<int> NumbersOf(const std::vector<ModalText>& texts) {
  std::vector<int> numbers;
  numbers.reserve(texts.size());
  for (const ModalText& text : texts) numbers.push_back(text.number);
  return numbers;
}

}  // namespace wavelock

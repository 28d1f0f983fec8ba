#include "tests/support/scripted_user.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace wavelock {
namespace {

constexpr char kSavePath[] = "question where to save";
constexpr char kColour[] = "question for a colour";

std::string QuestionLabel(int number) {
  return "question " + std::to_string(number);
}

}  // namespace

ScriptedUser::~ScriptedUser() {
  for (const Expected& missing : expected_) ADD_FAILURE() << missing.what << " never came";
  EXPECT_EQ(waitCursors, 0) << "a wait cursor was left standing";
}

void ScriptedUser::ExpectQuestion(int number, bool yes) {
  expected_.push_back({QuestionLabel(number), {.accept = yes}, {}});
}

void ScriptedUser::ExpectDialog(const std::string& name, DialogAnswer answer) {
  expected_.push_back({name, answer, {}});
}

void ScriptedUser::ExpectSavePath(std::optional<std::string> chosen) {
  expected_.push_back({kSavePath, {}, std::move(chosen)});
}

void ScriptedUser::ExpectColour(std::optional<std::uint32_t> chosen) {
  expected_.push_back({kColour, {}, {}, chosen});
}

bool ScriptedUser::AskYesNo(const ModalText& question) {
  questions.push_back(question);
  const auto answer = Take(QuestionLabel(question.number));
  if (!answer && saysYesToAll) return true;
  if (!answer) ADD_FAILURE() << "unexpected question: " << question.text;
  return answer && answer->answer.accept;
}

bool ScriptedUser::RunDialog(ModalDialog& dialog) {
  dialogs.push_back(dialog);
  const auto expected = Take(dialog.name);
  if (!expected) ADD_FAILURE() << "unexpected dialog: " << dialog.name;
  if (!expected || !expected->answer.accept) return false;
  if (!dialog.choices.empty()) dialog.choice = expected->answer.choice;
  if (!dialog.checkBox.empty()) dialog.checked = expected->answer.checked;
  return true;
}

std::optional<std::string> ScriptedUser::AskSavePath(const SavePathDialog& dialog) {
  savePaths.push_back(dialog);
  const auto expected = Take(kSavePath);
  if (!expected) ADD_FAILURE() << "nobody expected to be asked where to save";
  return expected ? expected->path : std::nullopt;
}

std::optional<std::uint32_t> ScriptedUser::AskColour(std::uint32_t) {
  const auto expected = Take(kColour);
  if (!expected) ADD_FAILURE() << "nobody expected to be asked for a colour";
  return expected ? expected->colour : std::nullopt;
}

void ScriptedUser::BeginWaitCursor() {
  deepestWaitCursor = std::max(deepestWaitCursor, ++waitCursors);
}

void ScriptedUser::EndWaitCursor() {
  if (--waitCursors < 0) ADD_FAILURE() << "a wait cursor ended that never began";
}

std::optional<ScriptedUser::Expected> ScriptedUser::Take(const std::string& what) {
  if (expected_.empty() || expected_.front().what != what) return std::nullopt;
  Expected expected = std::move(expected_.front());
  expected_.pop_front();
  return expected;
}

std::vector<int> NumbersOf(const std::vector<ModalText>& texts) {
  std::vector<int> numbers;
  numbers.reserve(texts.size());
  for (const ModalText& text : texts) numbers.push_back(text.number);
  return numbers;
}

}  // namespace wavelock

// The dialogs of an open exchange their values with the person and remember what they are told to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_host.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/prompts/prompts.h"

namespace wavelock {
namespace {

TEST(Prompts, KindGivesTheChoiceAndKeepsItWhenCancelled) {
  TestHost test;
  CKindPrompt prompt;
  prompt.firstReading = "AVG";
  prompt.secondReading = "CNT";
  prompt.choice = 0;
  test.user.ExpectDialog("CKindPrompt", {.accept = false, .choice = 1});
  EXPECT_FALSE(prompt.DoModal(test.host));
  EXPECT_EQ(prompt.choice, 0);
  test.user.ExpectDialog("CKindPrompt", {.choice = 1});
  EXPECT_TRUE(prompt.DoModal(test.host));
  EXPECT_EQ(prompt.choice, 1);
  EXPECT_THAT(test.user.dialogs.front().choices, testing::ElementsAre("AVG", "CNT"));
}

TEST(Prompts, ModifiedIsRememberedOnlyWhenAcceptedWithTheTick) {
  TestHost test;
  const auto remembered = [&] {
    return test.profile.GetInt(profile::kState, profile::kHideModifiedWarning, 0);
  };
  test.user.ExpectDialog("CModifiedPrompt", {.accept = false, .checked = true});
  test.user.ExpectDialog("CModifiedPrompt", {.checked = false});
  test.user.ExpectDialog("CModifiedPrompt", {.checked = true});
  CModifiedPrompt().DoModal(test.host);
  CModifiedPrompt().DoModal(test.host);
  EXPECT_EQ(remembered(), 0);
  CModifiedPrompt().DoModal(test.host);
  EXPECT_EQ(remembered(), 1);
}

TEST(Prompts, NewerVersionLeavesRememberingToItsCaller) {
  TestHost test;
  CNewerVersionPrompt prompt;
  prompt.text = "Newer";
  test.user.ExpectDialog("CNewerVersionPrompt", {.checked = true});
  EXPECT_TRUE(prompt.DoModal(test.host));
  EXPECT_NE(prompt.dontShowAgain, 0);
  EXPECT_EQ(test.profile.GetInt(profile::kState, profile::kHideNewerVersionWarning, 0), 0);
  EXPECT_THAT(test.user.dialogs.front().texts, testing::ElementsAre("Newer"));
}

TEST(Messages, InsertionStandsInTheTextAndBesideIt) {
  const ModalText message = NumberedMessage(MessageNumber::kFileNotOpened, "/data/100%s.cnt");
  EXPECT_EQ(message.number, 1765);
  EXPECT_EQ(message.insertion, "/data/100%s.cnt");
  EXPECT_THAT(message.text, testing::HasSubstr(" /data/100%s.cnt "));
}

}  // namespace
}  // namespace wavelock

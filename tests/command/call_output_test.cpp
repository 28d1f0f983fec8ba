// wavelock call drives the control as a client does, whether or not it is registered, and leaves nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/command/run_command.h"

namespace wavelock {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class CallOutput : public testing::Test {
 protected:
  CallOutput() {
    folder.Put("a.rec", RecordingBuilder()
                            .Labels({"Fz", "Cz"})
                            .Rate(250)
                            .Sensitivity(1, 0.1f)
                            .Samples({1, -2, 3, 4})
                            .Events({{.stimType = 3, .keyboard = 4, .keypad = 5, .sample = 1}}));
    folder.Put("e.rec", RecordingBuilder().Epoched().Points(1).Epochs(
                            {{.trialType = 7, .reactionTime = 0.5f, .response = 9, .samples = {6}}}));
  }

  // With an empty folder as the user's own.
  Outcome Call(const std::string& words) const { return Shell("$W call " + words); }
  Outcome Shell(const std::string& line) const {
    return folder.Shell("XDG_CONFIG_HOME=$PWD/user; export XDG_CONFIG_HOME; " + line);
  }

  CommandFolder folder;
};

TEST_F(CallOutput, ResultStandsAloneAndOutputsByName) {
  EXPECT_EQ(Call("a.rec GetRate").out, "250\n");
  EXPECT_EQ(Call("a.rec getfilename").out, "a.rec\n");
  EXPECT_EQ(Call("a.rec GetEvent 0").out,
            "true\nnEventIndex\t0\nnStimType\t3\nnKeyboard\t4\nnKeypad\t5\nnPoint\t1\n");
  EXPECT_EQ(Call("e.rec GetEpochInfo 0").out,
            "true\npTrialType\t7\npAccept\t1\npCorrect\t0\npReactionTime\t0.5\npResponse\t9\n");
  EXPECT_EQ(Call("a.rec GetContinuousShortBlock 0 2 8").out, "true\n1\n-2\n3\n4\n");
  EXPECT_FALSE(folder.Holds("user"));
}

TEST_F(CallOutput, JsonHoldsResultAndOutputs) {
  EXPECT_EQ(Call("--json a.rec GetContinuousFloatBlock 0 1 8").out,
            "{\"result\":true,\"pBlock\":[1.0,-0.2]}\n");
  EXPECT_EQ(Call("--json a.rec GetNumChannels").out, "{\"result\":2}\n");
}

TEST_F(CallOutput, AnswerOfFalseIsAFailure) {
  const Outcome refused = Call("a.rec GetEvent 1");
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.out, "false\n");
  EXPECT_EQ(Call("a.rec GetContinuousShortBlock -1 1 8").exitCode, 1);
  const Outcome missing = Call("missing.rec GetRate");
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_THAT(missing.err, HasSubstr("missing.rec"));
}

TEST_F(CallOutput, CallThatFitsNoMethodIsWrongUsage) {
  for (const char* words : {"a.rec", "a.rec GetRates", "a.rec GetRate 1", "a.rec GetEvent",
                            "a.rec GetEvent x", "a.rec GetEvent 1x", "a.rec GetContinuousShortBlock 0 2",
                            "a.rec GetContinuousShortBlock 0 2 -8", "a.rec GetEvent 99999999999"}) {
    const Outcome outcome = Call(words);
    EXPECT_EQ(outcome.exitCode, 2) << words;
    EXPECT_THAT(outcome.out, IsEmpty()) << words;
    EXPECT_THAT(outcome.err, HasSubstr("wavelock: ")) << words;
  }
}

TEST_F(CallOutput, RegisteredControlIsTheOneThatIsCalled) {
  EXPECT_EQ(Shell("$W register && $W call a.rec GetRate").out, "250\n");
  const Outcome gone =
      Shell("sed -i 's,/wavelock_control,/gone/&,' user/wavelock/registry.ini; $W call a.rec GetRate");
  EXPECT_EQ(gone.exitCode, 1);
  EXPECT_THAT(gone.err, HasSubstr("/gone/"));
  EXPECT_EQ(Shell("$W register --remove; ls -A user/wavelock").out, "");
  EXPECT_EQ(Shell("$W register missing.so").exitCode, 1);
}

TEST_F(CallOutput, ExamplesReadWhatTheyAreGiven) {
  EXPECT_EQ(Shell("'" WAVELOCK_EXAMPLES "/read_recording' a.rec").out,
            "a.rec: 2 channels, 250 Hz, 1 events, 1 epochs\nFz\t2.000 uV\nCz\t0.100 uV\n");
  EXPECT_THAT(Shell("'" WAVELOCK_EXAMPLES "/read_recording' e.rec").out, HasSubstr("\n1\t6.000 uV\n"));
  EXPECT_EQ(Shell("'" WAVELOCK_EXAMPLES "/control_client' a.rec").exitCode, 1);  // not registered
  EXPECT_EQ(Shell("$W register && '" WAVELOCK_EXAMPLES "/control_client' a.rec").out,
            "a.rec: 2 channels, 250 Hz\n"
            "event 0 at 1: stimulus 3, key 4, pad 5\n"
            "1.000 uV\n-0.200 uV\n");
}

}  // namespace
}  // namespace wavelock

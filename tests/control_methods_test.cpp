// What every method of the control answers: before the first open, with a file open, after a close, and
// without a recording.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/recording_builder.h"
#include "tests/support/test_host.h"
#include "wavelock/control/wavelock_ctrl.h"

namespace wavelock {
namespace {

using testing::ElementsAre;

// Channels, rate, kind, name, whether it is open, points, events, epochs.
using Facts = std::tuple<int, int, int, std::optional<std::string>, bool, int, int, int>;
constexpr std::size_t kActive = 4;
constexpr std::size_t kPoints = 5;

constexpr std::int32_t kUntouched = 77;
const std::vector<std::int32_t> kNoEvent{0, kUntouched, kUntouched, kUntouched, kUntouched};

const Facts kFresh{32, 1000, 2, "", false, 0, 0, 1};
const Facts kNoRecording{0, 0, -1, std::nullopt, false, 0, 0, 0};
const Facts kContinuousFacts{2, 250, 2, "c.cnt", true, 3, 2, 1};

RecordingBuilder Continuous() {
  return RecordingBuilder()
      .Channels(2)
      .Rate(250)
      .Samples({1, -2, 3, 4, 5, -6})
      .Events({{.stimType = 0xFFFE, .keyboard = 200, .keypad = 5, .segmentClass = 9, .sample = 1},
               {.sample = 2}});
}

RecordingBuilder Epoched() {
  return RecordingBuilder().Epoched().Channels(2).Rate(500).Points(2).Epochs({{.samples = {1, 2, 3, 4}},
                                                                              {.accept = 1,
                                                                               .trialType = 7,
                                                                               .correct = 8,
                                                                               .reactionTime = 0.25f,
                                                                               .response = 0xFFFF,
                                                                               .samples = {-1, -2, -3, -4}}});
}

class ControlMethods : public testing::Test {
 protected:
  ControlMethods() {
    host.memory.Put("/c.cnt", Continuous().Build());
    host.memory.Put("/e.eeg", Epoched().Build());
  }

  Facts AllFacts() {
    return {control.GetNumChannels(), control.GetRate(),       control.GetAcqType(),
            control.GetFileName(),    control.GetFileActive(), control.GetNumContinuousPoints(),
            control.GetEventCount(),  control.GetEpochCount()};
  }

  // What GetEvent gives and stores.
  std::vector<std::int32_t> Event(std::int32_t index) {
    std::int32_t at = index;
    std::int32_t out[4] = {kUntouched, kUntouched, kUntouched, kUntouched};
    const bool done = control.GetEvent(&at, &out[0], &out[1], &out[2], &out[3]);
    EXPECT_EQ(at, index);
    return {done ? 1 : 0, out[0], out[1], out[2], out[3]};
  }

  // Requests that would fit the files of these tests.
  int BlocksServed() {
    std::int16_t words[4] = {};
    std::int32_t integers[2] = {};
    float floats[4] = {};
    return control.GetContinuousShortBlock(0, 2, words, 8) +
           control.GetContinuousIntBlock(0, 2, integers, 8) +
           control.GetContinuousFloatBlock(0, 2, floats, 16) + control.GetEpochShortBlock(0, words, 8) +
           control.GetEpochIntBlock(0, integers, 8) + control.GetEpochFloatBlock(0, floats, 16);
  }

  void ExpectNothingOpen() {
    EXPECT_FALSE(control.GetFileActive());
    EXPECT_FALSE(control.CloseInputDataFile());
    EXPECT_EQ(BlocksServed(), 0);
    EXPECT_FALSE(HasEpochInfo());
  }

  bool HasEpochInfo() { return control.GetEpochInfo(0, nullptr, nullptr, nullptr, nullptr, nullptr); }

  TestHost host;
  CWavelockCtrl control{host.host};
};

TEST_F(ControlMethods, BeforeTheFirstOpenAnswerForAnEmptyRecordingAndWithoutOneTheirFailureValues) {
  EXPECT_EQ(AllFacts(), kFresh);
  ExpectNothingOpen();
  EXPECT_EQ(Event(0).front(), 0);
  control.recording.reset();
  EXPECT_EQ(AllFacts(), kNoRecording);
  EXPECT_FALSE(control.OpenInputDataFile("/c.cnt"));
  ExpectNothingOpen();
  EXPECT_EQ(Event(0), kNoEvent);
}

TEST_F(ControlMethods, ContinuousFileServesSamplesAndEventsAndNoEpochs) {
  ASSERT_TRUE(control.OpenInputDataFile("\"/c.cnt\" "));
  EXPECT_EQ(AllFacts(), kContinuousFacts);
  std::int16_t words[4] = {};
  EXPECT_TRUE(control.GetContinuousShortBlock(1, 3, words, sizeof words));
  EXPECT_THAT(words, ElementsAre(3, 4, 5, -6));
  EXPECT_FALSE(control.GetContinuousShortBlock(-1, 1, words, 8));
  EXPECT_FALSE(control.GetContinuousShortBlock(0, 1, words, -4));
  EXPECT_FALSE(control.GetContinuousShortBlock(std::numeric_limits<std::int32_t>::min(), 1, words, 4));
  EXPECT_THAT(words, ElementsAre(3, 4, 5, -6));
  std::int32_t pair = 0;
  EXPECT_TRUE(control.GetContinuousIntBlock(0, 1, &pair, sizeof pair));  // two words of the file's width
  EXPECT_EQ(pair, static_cast<std::int32_t>(0xFFFE0001));
  float floats[2] = {};
  EXPECT_TRUE(control.GetContinuousFloatBlock(2, 3, floats, sizeof floats));
  EXPECT_THAT(floats, ElementsAre(testing::FloatEq(5), testing::FloatEq(-6)));

  EXPECT_THAT(Event(0), ElementsAre(1, 0xFFFE, 200, 5, 1));
  EXPECT_THAT(Event(1), ElementsAre(1, 0, 0, 0, 2));
  for (const std::int32_t index : {2, -1}) EXPECT_EQ(Event(index), kNoEvent);
  std::int32_t index = 0;
  EXPECT_TRUE(control.GetEvent(&index, nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(control.GetEvent(nullptr, &index, &index, &index, &index));

  EXPECT_EQ(BlocksServed(), 3);
  EXPECT_FALSE(HasEpochInfo());
}

TEST_F(ControlMethods, EpochedFileServesEpochsAndTheirFacts) {
  ASSERT_TRUE(control.OpenInputDataFile("/e.eeg"));
  Facts facts = AllFacts();
  std::get<kPoints>(facts) = 0;  // says nothing of such a file
  EXPECT_EQ(facts, (Facts{2, 500, 1, "e.eeg", true, 0, 0, 2}));
  std::int16_t words[4] = {};
  EXPECT_TRUE(control.GetEpochShortBlock(1, words, sizeof words));
  EXPECT_THAT(words, ElementsAre(-1, -2, -3, -4));
  float floats[4] = {};
  EXPECT_TRUE(control.GetEpochFloatBlock(1, floats, sizeof floats));
  EXPECT_FLOAT_EQ(floats[3], -4);
  EXPECT_EQ(BlocksServed(), 3);
  EXPECT_FALSE(control.GetEpochShortBlock(2, words, sizeof words));
  EXPECT_FALSE(control.GetEpochShortBlock(-1, words, sizeof words));
  EXPECT_FALSE(control.GetEpochShortBlock(1, words, sizeof words - 1));
  EXPECT_EQ(Event(0).front(), 0);

  std::int16_t trialType = 0;
  auto accept = static_cast<std::int16_t>(0xABCD);  // only its low byte is written
  std::int16_t correct = 0;
  std::int16_t response = 0;
  float reactionTime = 0;
  ASSERT_TRUE(control.GetEpochInfo(1, &trialType, &accept, &correct, &reactionTime, &response));
  EXPECT_EQ(trialType, 7);
  EXPECT_EQ(accept, static_cast<std::int16_t>(0xAB01));
  EXPECT_EQ(correct, 8);
  EXPECT_EQ(reactionTime, 0.25f);
  EXPECT_EQ(response, -1);
  EXPECT_TRUE(HasEpochInfo());
  for (const std::int32_t index : {2, -1}) {
    EXPECT_FALSE(control.GetEpochInfo(index, &trialType, &accept, &correct, &reactionTime, &response));
    EXPECT_EQ(trialType, 7);
  }
}

TEST_F(ControlMethods, AfterACloseAnswerForTheLastFile) {
  ASSERT_TRUE(control.OpenInputDataFile("/c.cnt"));
  EXPECT_TRUE(control.CloseInputDataFile());
  Facts expected = kContinuousFacts;
  std::get<kActive>(expected) = false;
  EXPECT_EQ(AllFacts(), expected);
  EXPECT_THAT(Event(0), ElementsAre(1, 0xFFFE, 200, 5, 1));
  ExpectNothingOpen();

  ASSERT_TRUE(control.OpenInputDataFile("/c.cnt"));
  EXPECT_FALSE(control.OpenInputDataFile("/missing.cnt"));
  EXPECT_FALSE(control.GetFileActive());
  EXPECT_THAT(NumbersOf(host.user.messages), ElementsAre(1765, 0));

  ASSERT_TRUE(control.OpenInputDataFile("/e.eeg"));
  EXPECT_TRUE(control.CloseInputDataFile());
  EXPECT_EQ(control.GetEpochCount(), 2);
  ExpectNothingOpen();
}

}  // namespace
}  // namespace wavelock

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

Facts FactsOf(CWavelockCtrl& control) {
  return {control.GetNumChannels(), control.GetRate(),       control.GetAcqType(),
          control.GetFileName(),    control.GetFileActive(), control.GetNumContinuousPoints(),
          control.GetEventCount(),  control.GetEpochCount()};
}

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

struct Setting {
  Setting() {
    host.memory.Put("/c.cnt", Continuous().Build());
    host.memory.Put("/e.eeg", Epoched().Build());
  }

  TestHost host;
  CWavelockCtrl control{host.host};
};

constexpr std::int32_t kUntouched = 77;

// What GetEvent gives and stores.
std::vector<std::int32_t> Event(CWavelockCtrl& control, std::int32_t index) {
  std::int32_t at = index;
  std::int32_t out[4] = {kUntouched, kUntouched, kUntouched, kUntouched};
  const bool done = control.GetEvent(&at, &out[0], &out[1], &out[2], &out[3]);
  EXPECT_EQ(at, index);
  return {done ? 1 : 0, out[0], out[1], out[2], out[3]};
}

// Requests that would fit the files of these tests.
int BlocksServed(CWavelockCtrl& control) {
  std::int16_t words[4] = {};
  std::int32_t integers[2] = {};
  float floats[4] = {};
  return control.GetContinuousShortBlock(0, 2, words, 8) + control.GetContinuousIntBlock(0, 2, integers, 8) +
         control.GetContinuousFloatBlock(0, 2, floats, 16) + control.GetEpochShortBlock(0, words, 8) +
         control.GetEpochIntBlock(0, integers, 8) + control.GetEpochFloatBlock(0, floats, 16);
}

bool HasEpochInfo(CWavelockCtrl& control) {
  return control.GetEpochInfo(0, nullptr, nullptr, nullptr, nullptr, nullptr);
}

TEST(ControlMethods, BeforeTheFirstOpenAnswerForAnEmptyRecording) {
  Setting s;
  EXPECT_EQ(FactsOf(s.control), kFresh);
  EXPECT_FALSE(s.control.CloseInputDataFile());
  EXPECT_EQ(BlocksServed(s.control), 0);
  EXPECT_EQ(Event(s.control, 0).front(), 0);
  EXPECT_FALSE(HasEpochInfo(s.control));
}

TEST(ControlMethods, WithoutARecordingAnswerTheirFailureValues) {
  Setting s;
  s.control.recording.reset();
  EXPECT_EQ(FactsOf(s.control), kNoRecording);
  EXPECT_FALSE(s.control.OpenInputDataFile("/c.cnt"));
  EXPECT_FALSE(s.control.GetFileActive());
  EXPECT_FALSE(s.control.CloseInputDataFile());
  EXPECT_EQ(BlocksServed(s.control), 0);
  EXPECT_EQ(Event(s.control, 0),
            (std::vector<std::int32_t>{0, kUntouched, kUntouched, kUntouched, kUntouched}));
  EXPECT_FALSE(HasEpochInfo(s.control));
  s.host.user.ExpectDialog("CAboutBox", {});
  s.control.AboutBox();
}

TEST(ControlMethods, ContinuousFileServesSamplesAndEventsAndNoEpochs) {
  Setting s;
  ASSERT_TRUE(s.control.OpenInputDataFile("\"/c.cnt\" "));
  EXPECT_EQ(FactsOf(s.control), kContinuousFacts);
  std::int16_t words[4] = {};
  EXPECT_TRUE(s.control.GetContinuousShortBlock(1, 3, words, sizeof words));
  EXPECT_THAT(words, ElementsAre(3, 4, 5, -6));
  EXPECT_FALSE(s.control.GetContinuousShortBlock(-1, 1, words, 8));
  EXPECT_FALSE(s.control.GetContinuousShortBlock(0, 1, words, -4));
  EXPECT_FALSE(s.control.GetContinuousShortBlock(std::numeric_limits<std::int32_t>::min(), 1, words, 4));
  EXPECT_THAT(words, ElementsAre(3, 4, 5, -6));
  std::int32_t pair = 0;
  EXPECT_TRUE(s.control.GetContinuousIntBlock(0, 1, &pair, sizeof pair));  // two words of the file's width
  EXPECT_EQ(pair, static_cast<std::int32_t>(0xFFFE0001));
  float floats[2] = {};
  EXPECT_TRUE(s.control.GetContinuousFloatBlock(2, 3, floats, sizeof floats));
  EXPECT_THAT(floats, ElementsAre(testing::FloatEq(5), testing::FloatEq(-6)));

  EXPECT_THAT(Event(s.control, 0), ElementsAre(1, 0xFFFE, 200, 5, 1));
  EXPECT_THAT(Event(s.control, 1), ElementsAre(1, 0, 0, 0, 2));
  EXPECT_THAT(Event(s.control, 2), ElementsAre(0, kUntouched, kUntouched, kUntouched, kUntouched));
  EXPECT_THAT(Event(s.control, -1), ElementsAre(0, kUntouched, kUntouched, kUntouched, kUntouched));
  std::int32_t index = 0;
  EXPECT_TRUE(s.control.GetEvent(&index, nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(s.control.GetEvent(nullptr, &index, &index, &index, &index));

  EXPECT_EQ(BlocksServed(s.control), 3);
  EXPECT_FALSE(HasEpochInfo(s.control));
}

TEST(ControlMethods, ShortBlockOfAWideFileHolds32BitWords) {
  Setting s;
  s.host.memory.Put("/w.cnt", Continuous().Width(4).Build());
  ASSERT_TRUE(s.control.OpenInputDataFile("/w.cnt"));
  s.control.recording->sampleWidth = 4;
  std::int16_t halves[4] = {};
  EXPECT_FALSE(s.control.GetContinuousShortBlock(0, 1, halves, 4));
  EXPECT_TRUE(s.control.GetContinuousShortBlock(0, 1, halves, 8));
  EXPECT_THAT(halves, ElementsAre(1, 0, -2, -1));
}

TEST(ControlMethods, EpochedFileServesEpochsAndTheirFacts) {
  Setting s;
  ASSERT_TRUE(s.control.OpenInputDataFile("/e.eeg"));
  Facts facts = FactsOf(s.control);
  std::get<kPoints>(facts) = 0;  // says nothing of such a file
  EXPECT_EQ(facts, (Facts{2, 500, 1, "e.eeg", true, 0, 0, 2}));
  std::int16_t words[4] = {};
  EXPECT_TRUE(s.control.GetEpochShortBlock(1, words, sizeof words));
  EXPECT_THAT(words, ElementsAre(-1, -2, -3, -4));
  float floats[4] = {};
  EXPECT_TRUE(s.control.GetEpochFloatBlock(1, floats, sizeof floats));
  EXPECT_FLOAT_EQ(floats[3], -4);
  EXPECT_EQ(BlocksServed(s.control), 3);
  EXPECT_FALSE(s.control.GetEpochShortBlock(2, words, sizeof words));
  EXPECT_FALSE(s.control.GetEpochShortBlock(-1, words, sizeof words));
  EXPECT_FALSE(s.control.GetEpochShortBlock(1, words, sizeof words - 1));
  EXPECT_EQ(Event(s.control, 0).front(), 0);
}

TEST(ControlMethods, EpochInfoWritesOnlyTheLowByteOfAccept) {
  Setting s;
  ASSERT_TRUE(s.control.OpenInputDataFile("/e.eeg"));
  std::int16_t trialType = 0;
  auto accept = static_cast<std::int16_t>(0xABCD);
  std::int16_t correct = 0;
  std::int16_t response = 0;
  float reactionTime = 0;
  ASSERT_TRUE(s.control.GetEpochInfo(1, &trialType, &accept, &correct, &reactionTime, &response));
  EXPECT_EQ(trialType, 7);
  EXPECT_EQ(accept, static_cast<std::int16_t>(0xAB01));
  EXPECT_EQ(correct, 8);
  EXPECT_EQ(reactionTime, 0.25f);
  EXPECT_EQ(response, -1);
  EXPECT_TRUE(HasEpochInfo(s.control));
  for (const std::int32_t index : {2, -1}) {
    EXPECT_FALSE(s.control.GetEpochInfo(index, &trialType, &accept, &correct, &reactionTime, &response));
    EXPECT_EQ(trialType, 7);
  }
}

TEST(ControlMethods, AfterACloseAnswerForTheLastFile) {
  Setting s;
  ASSERT_TRUE(s.control.OpenInputDataFile("/c.cnt"));
  EXPECT_TRUE(s.control.CloseInputDataFile());
  Facts expected = kContinuousFacts;
  std::get<kActive>(expected) = false;
  EXPECT_EQ(FactsOf(s.control), expected);
  EXPECT_THAT(Event(s.control, 0), ElementsAre(1, 0xFFFE, 200, 5, 1));
  EXPECT_EQ(BlocksServed(s.control), 0);
  EXPECT_FALSE(s.control.CloseInputDataFile());

  ASSERT_TRUE(s.control.OpenInputDataFile("/c.cnt"));
  EXPECT_FALSE(s.control.OpenInputDataFile("/missing.cnt"));
  EXPECT_FALSE(s.control.GetFileActive());
  EXPECT_THAT(NumbersOf(s.host.user.messages), ElementsAre(1765, 0));

  ASSERT_TRUE(s.control.OpenInputDataFile("/e.eeg"));
  EXPECT_TRUE(s.control.CloseInputDataFile());
  EXPECT_EQ(s.control.GetEpochCount(), 2);
  EXPECT_EQ(BlocksServed(s.control), 0);
  EXPECT_FALSE(HasEpochInfo(s.control));
}

}  // namespace
}  // namespace wavelock

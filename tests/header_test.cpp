// Headers that no writer made, and what a header alone does not say of a recording.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Two channels of four points.
RecordingBuilder Small(int revision = 16) {
  return RecordingBuilder().Revision(revision).Channels(2).Rate(250).Points(4).Samples({1, 2, 3, 4});
}

RecordingBuilder Spectrum(int revision) {
  return Small(revision).Averaged().FrequencyDomain().PutU8(675, 2).Sensitivity(0, 3).Data(
      ByteWriter().Zeros(2 * (5 + 4 * 4)));
}

TEST(Header, ChannelCountsBeyondALayoutAreRefused) {
  const RecordingBuilder oldest = RecordingBuilder().OldestLayout(0);
  for (const RecordingBuilder& builder :
       {RecordingBuilder(oldest).PutU16(235, 65), RecordingBuilder(oldest).PutU16(235, 515),
        RecordingBuilder(oldest).PutU16(235, 0xFFFF), Small().PutU16(370, 0), Small().PutU16(370, 513),
        Small().PutU16(370, 0xFFFF)}) {
    OpenedRecording opened(builder);
    EXPECT_FALSE(opened.isOpen);
    EXPECT_THAT(NumbersOf(opened.test.user.messages), ElementsAre(1769, 1766));
  }
  EXPECT_FALSE(OpenedRecording(Spectrum(9).PutU8(559, 2)).isOpen) << "its scale is not known";
}

TEST(Header, WhatARevisionLacksOrHoldsWronglyIsMended) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const RecordingBuilder unused = Small().PutChannelU8(0, 13, 0);
  const struct {
    RecordingBuilder builder;
    double (*value)(OpenedRecording& opened);
    double expected;
  } kCases[] = {
      {Small(3).PutChannelU8(0, 13, 0), [](auto& o) -> double { return o.Channel(0).enabled; }, 1},
      {Small(3).PutU16(370, 40), [](auto& o) -> double { return o.Channel(35).sensitivity; }, 0},
      {unused, [](auto& o) -> double { return o.Channel(0).enabled; }, 0},
      {RecordingBuilder(unused).PutChannelU8(1, 13, 0).PutChannelU8(1, 10, 0xFE),
       [](auto& o) -> double { return 10 * o.Channel(0).enabled + o.Channel(1).channelLink; }, 9},
      {Spectrum(9), [](auto& o) -> double { return o.Channel(0).sensitivity; }, 9},
      {Small().PutChannelF32(0, 35, nan), [](auto& o) -> double { return o.Setup().channels[0].signalRatio; },
       0},
      {Small().PutF32(497, 0.0005f), [](auto& o) -> double { return o.Header().displayMin; }, 0},
      {Spectrum(10).PutU8(20, 2).PutF32(677, 0.25f), [](auto& o) -> double { return o.Header().fixValue677; },
       0.1f},
      {Small(10).Epoched().FrequencyDomain().PutF32(677, 0.6f),
       [](auto& o) -> double { return o.Header().fixValue677; }, 0},
      {Small().PutF32(513, nan).PutF32(517, nan),
       [](auto& o) -> double { return std::isnan(o.Header().viewStart); }, 1},
      {Small().TimeFrequency().FrequencyDomain().PutF32(800, 20.8f),  // 12 bins are as near to 16 as to 8
       [](auto& o) -> double { return o.Setup().spectrumPoints; }, 16},
      {RecordingBuilder().OldestLayout(0).PutText(379, std::string(80, 'x')),
       [](auto& o) -> double { return static_cast<int>(o.Header().dashTextC.View().size()); }, 41},
  };
  for (const auto& [builder, value, expected] : kCases) {
    OpenedRecording opened(builder);
    EXPECT_TRUE(opened.isOpen);
    EXPECT_EQ(value(opened), expected);
  }
}

TEST(Header, RatesAboveTheCodeComeInHundredsAndImpossibleOnesLeaveTheSamplesReadable) {
  const auto withRate = [](std::uint16_t code) { return Small().PutU16(376, code); };
  EXPECT_EQ(OpenedRecording(withRate(60000)).Setup().sampleRate, 60000);
  EXPECT_EQ(OpenedRecording(withRate(60001)).Setup().sampleRate, 100);
  OpenedRecording none(withRate(0));
  EXPECT_TRUE(none.isOpen);
  EXPECT_THAT(NumbersOf(none.test.user.messages), ElementsAre(1770));
  EXPECT_THAT(NumbersOf(OpenedRecording(withRate(0).Epoched()).test.user.messages), ElementsAre(1770));
  EXPECT_THAT(none.Raw<std::int16_t>(0, 2), ElementsAre(1, 2, 3, 4));
}

TEST(Header, RatesBelowAHundredAreNotCompared) {
  OpenedRecording slow(RecordingBuilder().Epoched().Rate(150).Points(80).Times(0, 1));
  EXPECT_THAT(slow.test.user.messages, IsEmpty());
  OpenedRecording fast(RecordingBuilder().Epoched().Rate(500).Points(800).Times(0, 1));
  EXPECT_THAT(NumbersOf(fast.test.user.messages), ElementsAre(1771));
}

TEST(Header, DatesComeFinishedOrAsDigits) {
  const char* const cases[][2] = {{"06/23/2005", "06/23/2005"},
                                  {"06/23/05", "06/23/05"},
                                  {"06232005", "06/23/2005"},
                                  {"06", "06/"},
                                  {"", "Unspecified"}};
  for (const auto& [stored, date] : cases)
    EXPECT_EQ(OpenedRecording(RecordingBuilder().Date(stored)).Setup().subject->recordDate, date);
}

TEST(Header, TheFirstRuleThatFitsDecidesWhatARecordingIs) {
  constexpr int kCases[][5] = {{1, 3, 0, 2, 7}, {0, 3, 9, 9, 3}, {0, 7, 0, 5, 1}, {0, 7, 0, 1, -1},
                               {0, 6, 1, 9, 4}, {0, 6, 0, 0, 6}, {0, 2, 0, 1, 2}, {0, 1, 0, 1, -1},
                               {0, 1, 1, 3, 4}, {0, 0, 1, 1, 5}, {0, 1, 1, 1, -1}};
  for (const auto& [flag, mode, domain, form, kind] : kCases) {
    HeaderImage image{};
    image.header.timeFrequencyFlag = static_cast<std::uint8_t>(flag);
    image.header.acquisitionMode = static_cast<std::uint8_t>(mode);
    image.header.frequencyDomain = static_cast<std::uint8_t>(domain);
    image.header.fileForm = static_cast<std::uint8_t>(form);
    EXPECT_EQ(CRecordingFile(1).ClassifyHeader(&image), kind) << mode << domain << form;
  }
}

TEST(Header, ANameThatSaysAverageIsAskedAboutOnceForEachOpen) {
  const struct {
    ScriptedUser::DialogAnswer answer;
    int mode;
  } kCases[] = {{{.choice = 0}, 1}, {{.choice = 1}, 3}, {{.accept = false, .choice = 1}, 1}};
  TestHost test;
  test.memory.Put("a.avg", RecordingBuilder().Channels(1).Samples({1, 2, 3}).Build());
  CRecordingFile recording(1, test.host);
  for (const auto& [answer, mode] : kCases) {
    test.user.ExpectDialog("CKindPrompt", answer);
    recording.OpenFile("a.avg");
    EXPECT_EQ(recording.rawHeader.header.acquisitionMode, mode);
  }
  test.memory.Put("b.avg", Spectrum(16).Build());
  EXPECT_TRUE(recording.OpenFile("b.avg")) << "it says so itself";
  EXPECT_EQ(test.user.dialogs.at(0).choices, (std::vector<std::string>{"AVG", "CNT"}));
  EXPECT_EQ(test.user.dialogs.at(0).texts.size(), 1u);
}

}  // namespace
}  // namespace wavelock

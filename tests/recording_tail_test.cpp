// Opening a recording lays the setup in its tail over what the header gave.
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"
#include "tests/support/setup_tail.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

RecordingBuilder WithTail(const StoredContainer& tail, int revision = 16) {
  return RecordingBuilder().Revision(revision).Channels(2).Samples({1, 2, 3, 4}).Tail(tail.records);
}

StoredContainer TailWithRevision(std::int32_t revision) {
  StoredContainer tail = TailOf([](CSetup&) {});
  tail.records.push_back({70000, 0, ByteWriter().I32(revision)});
  return tail;
}

struct OpenWith {
  OpenWith(const RecordingBuilder& builder, int silent = 0) : recording(silent, test.host) {
    test.memory.Put("test.rec", builder.Build());
  }
  bool Open() { return recording.OpenFile("test.rec"); }

  TestHost test;
  CRecordingFile recording;
};

TEST(RecordingTail, OverridesTheHeader) {
  const StoredContainer tail = TailOf([](CSetup& setup) {
    setup.channels[1].label = "of the tail";
    setup.subject->subjectTextA = "somebody";
    setup.bands[0].mapFile = "missing.map";
  });
  OpenedRecording file(WithTail(tail));
  ASSERT_TRUE(file.isOpen);
  EXPECT_EQ(file.Setup().channels[1].label, "of the tail");
  EXPECT_EQ(file.Setup().subject->subjectTextA, "somebody");
  EXPECT_EQ(file.Setup().fromRecording, 1);
  EXPECT_EQ(file.Setup().bands[0].mapFile, "missing.map") << "nobody is told in a recording";
  EXPECT_TRUE(file.test.user.messages.empty());
  EXPECT_EQ(file.Raw<std::int16_t>(0, 2), (std::vector<std::int16_t>{1, 2, 3, 4}));
}

TEST(RecordingTail, AloneTellsThatSamplesOfEpochsHaveFourBytes) {
  const StoredContainer tail = TailOf([](CSetup& setup) {
    setup.dataKind = kEpochs;
    setup.pointCount = 2;
    for (SetupChannel& channel : setup.Channels()) channel.countScale = channel.channelScale = 0.5f;
  });
  OpenedRecording file(RecordingBuilder()
                           .Epoched()
                           .Channels(2)
                           .Points(2)
                           .Width(4)
                           .Epochs({{.samples = {1, 2, 3, 4}}, {.samples = {100'000, -100'000, 7, 8}}})
                           .Tail(tail.records));
  ASSERT_TRUE(file.isOpen);
  std::vector<float> microvolts(4);
  ASSERT_TRUE(file.recording.ReadEpochFloat(1, microvolts.data(), 16));
  EXPECT_EQ(microvolts, (std::vector<float>{25'000, -25'000, 1.75f, 2}));
  std::vector<std::int32_t> raw(4);
  ASSERT_TRUE(file.recording.ReadEpochRaw(1, raw.data(), 16));
  EXPECT_EQ(raw, (std::vector<std::int32_t>{100'000, -100'000, 7, 8}));
}

TEST(RecordingTail, StandsInRevisionsThatHaveATrustedOne) {
  const StoredContainer tail = TailOf([](CSetup& setup) { setup.channels[1].label = "tail"; });
  for (const int revision : {13, 14, 16}) {
    OpenedRecording file(WithTail(tail, revision));
    ASSERT_TRUE(file.isOpen);
    EXPECT_EQ(file.Setup().channels[1].label == "tail", revision >= 14) << revision;
  }
  OpenWith modified(WithTail(tail, 15));
  using Answer = ScriptedUser::DialogAnswer;
  for (const Answer& answer : {Answer{.accept = false, .checked = true}, Answer{}, Answer{.checked = true}}) {
    modified.test.user.ExpectDialog("CModifiedPrompt", answer);
    EXPECT_TRUE(modified.Open());
  }
  EXPECT_EQ(modified.recording.GetSetup()->channels[1].label, "2");
  EXPECT_TRUE(modified.Open()) << "is not asked a second time";
  OpenWith silent(WithTail(tail, 15), 1);
  EXPECT_TRUE(silent.Open());
}

TEST(RecordingTail, DamagedOnesRefuseTheRecording) {
  StoredContainer tail = TailOf([](CSetup&) {});
  tail.Remove(5001);
  OpenedRecording file(WithTail(tail));
  EXPECT_FALSE(file.isOpen);
  EXPECT_EQ(NumbersOf(file.test.user.messages), (std::vector<int>{1766}));
}

TEST(RecordingTail, ContinuousOnesCannotBeInTheFrequencyDomain) {
  const StoredContainer tail = TailOf([](CSetup& setup) { setup.frequencyDomain = 1; });
  for (const int silent : {0, 1}) {
    OpenedRecording file(WithTail(tail).Build(), "test.rec", silent);
    ASSERT_TRUE(file.isOpen);
    EXPECT_EQ(NumbersOf(file.test.user.messages), (std::vector<int>{1760})) << "always shown";
    EXPECT_EQ(file.Setup().frequencyDomain, 0);
    EXPECT_EQ(file.Setup().pointCount, 1000);
    EXPECT_EQ(file.Setup().timeStart, 0.0F);
    EXPECT_EQ(file.Setup().timeEnd, 0.999F);
  }
}

TEST(RecordingTail, OfANewerProgramIsOpenedWhenThePersonWantsIt) {
  for (const bool wants : {false, true}) {
    OpenWith newer(WithTail(TailWithRevision(2)));
    newer.test.user.ExpectQuestion(1761, wants);
    EXPECT_EQ(newer.Open(), wants);
  }
  StoredContainer cut = TailWithRevision(1000);
  cut.records.back().payload.resize(3);
  EXPECT_TRUE(OpenWith(WithTail(cut)).Open());
  EXPECT_TRUE(OpenWith(WithTail(TailWithRevision(1))).Open());
  EXPECT_TRUE(OpenWith(WithTail(TailWithRevision(2)), 1).Open());
}

TEST(RecordingTail, OfANewerWriterIsToldUntilThePersonKnows) {
  StoredContainer tail = TailOf([](CSetup&) {});
  tail.Of(1000).Put(8160, 3);
  OpenWith newer(WithTail(tail), 1);
  newer.test.user.ExpectDialog("CNewerVersionPrompt", {.checked = false});
  EXPECT_TRUE(newer.Open()) << "told in silence too";
  newer.test.user.ExpectDialog("CNewerVersionPrompt", {.checked = true});
  EXPECT_TRUE(newer.Open());
  EXPECT_EQ(newer.test.user.dialogs[0].texts[0],
            "The file you have selected was created with a newer version of software and may be "
            "incompatible\nProceed at your own risk");
  EXPECT_TRUE(newer.Open());
}

TEST(RecordingTail, WithOtherChannelsThanTheHeaderNeverReadsOutside) {
  for (const std::int32_t count : {0, 1, 3, 515, -7}) {
    const StoredContainer tail = TailOf([count](CSetup& setup) { setup.channelCount = count; });
    OpenedRecording file(WithTail(tail));
    file.Raw<std::int16_t>(0, 2);
    file.Microvolts(0, 2);
    EXPECT_EQ(file.recording.GetEventCount(), 0);
  }
}

}  // namespace
}  // namespace wavelock

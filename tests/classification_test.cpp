// Four bytes of the header and the file's name decide what a recording is.
#include <gtest/gtest.h>

#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

int DetailKind(int flag, int mode, int domain, int form) {
  TestHost test;
  CRecordingFile recording(1, test.host);
  HeaderImage image{};
  image.header.timeFrequencyFlag = static_cast<std::uint8_t>(flag);
  image.header.acquisitionMode = static_cast<std::uint8_t>(mode);
  image.header.frequencyDomain = static_cast<std::uint8_t>(domain);
  image.header.fileForm = static_cast<std::uint8_t>(form);
  return recording.ClassifyHeader(&image);
}

TEST(Classification, TheFirstRuleThatFitsDecides) {
  EXPECT_EQ(DetailKind(1, 3, 0, 2), 7);
  EXPECT_EQ(DetailKind(0, 3, 9, 9), 3);
  EXPECT_EQ(DetailKind(0, 1, 0, 0), 1);
  EXPECT_EQ(DetailKind(0, 7, 0, 5), 1);
  EXPECT_EQ(DetailKind(0, 7, 0, 1), -1);
  EXPECT_EQ(DetailKind(0, 6, 1, 9), 4);
  EXPECT_EQ(DetailKind(0, 6, 0, 9), 6);
  EXPECT_EQ(DetailKind(0, 6, 2, 0), -1);
  EXPECT_EQ(DetailKind(0, 2, 0, 1), 2);
  EXPECT_EQ(DetailKind(0, 1, 0, 1), -1);
  EXPECT_EQ(DetailKind(0, 1, 1, 3), 4);
  EXPECT_EQ(DetailKind(0, 0, 1, 1), 5);
  EXPECT_EQ(DetailKind(0, 0, 2, 0), -1);
}

RecordingBuilder Average() {
  return RecordingBuilder().Averaged().Channels(1).Points(4).Rate(250);
}

TEST(Classification, CertainNamesMakeAnyFileContinuous) {
  for (const char* name : {"a.RAW", "a.edf", "a..raw"}) {
    EXPECT_EQ(OpenedRecording(Average(), name).recording.GetAcquisitionKind(), kContinuous) << name;
  }
}

TEST(Classification, ANameThatSaysAverageIsAskedAboutOnce) {
  const auto bytes = RecordingBuilder().Channels(1).Samples({1, 2, 3}).Build();
  const struct {
    ScriptedUser::DialogAnswer answer;
    bool isAverage;
  } kCases[] = {{{.choice = 0}, true}, {{.choice = 1}, false}, {{.accept = false, .choice = 1}, true}};
  for (const auto& [answer, isAverage] : kCases) {
    TestHost test;
    test.memory.Put("a.avg", bytes);
    test.user.ExpectDialog("CKindPrompt", answer);
    CRecordingFile recording(1, test.host);
    recording.OpenFile("a.avg");
    EXPECT_EQ(recording.rawHeader.header.acquisitionMode, isAverage ? 1 : 3);
    EXPECT_EQ(test.user.dialogs.at(0).choices, (std::vector<std::string>{"AVG", "CNT"}));
    EXPECT_EQ(test.user.dialogs.at(0).texts.size(), 1u);
  }
}

TEST(Classification, ExtensionsKeepTheirDotAndTakeBothSeparators) {
  EXPECT_EQ(GetExtension("C:\\eeg.d\\a.REC"), ".REC");
  EXPECT_EQ(GetExtension("/eeg.d/plain"), "");
  EXPECT_EQ(GetExtension(".raw"), ".raw");
  EXPECT_EQ(GetExtension("x."), ".");
}

}  // namespace
}  // namespace wavelock

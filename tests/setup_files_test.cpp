// Setup files are found, loaded and saved, and a save that fails leaves the old file as it was.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/test_host.h"
#include "wavelock/prompts/messages.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

class SetupFiles : public testing::Test {
 protected:
  std::unique_ptr<CSetup> NewSetup(const std::string& fileName, std::int32_t rate = 1000) {
    auto setup = std::make_unique<CSetup>(0, test.host);
    EXPECT_TRUE(setup->ResetToDefaults());
    setup->setupFileName = fileName;
    setup->sampleRate = rate;
    return setup;
  }
  std::int32_t RateIn(const std::string& fileName) {
    const auto setup = NewSetup(fileName);
    return setup->LoadFile() ? setup->sampleRate : 0;
  }

  TestHost test;
};

TEST_F(SetupFiles, ASavedFileReplacesTheOldOneCompletelyOrIsToldByName) {
  test.memory.Put("f.ast", std::vector<std::byte>(5'000'000));
  NewSetup("f.ast", 333)->SaveFile();
  EXPECT_EQ(RateIn("f.ast"), 333);
  EXPECT_LT(test.memory.Contents("f.ast")->size(), 300'000u);
  EXPECT_EQ(RateIn("missing.ast"), 0);
  EXPECT_TRUE(test.user.messages.empty());

  test.memory.SetStatus("f.ast", {.readOnly = true});
  NewSetup("f.ast", 222)->SaveFile();
  NewSetup("", 222)->SaveFile();
  ASSERT_EQ(NumbersOf(test.user.messages), (std::vector<int>{5, 5}));
  EXPECT_EQ(test.user.messages[0].insertion, "f.ast");
  EXPECT_EQ(RateIn("f.ast"), 333);
  EXPECT_FALSE(test.memory.Exists("f.ast.0.new"));
}

TEST_F(SetupFiles, SaveAsAsksFromTheNameOrFromTheFileAndRemembersTheChoice) {
  const auto setup = NewSetup("C:\\setups\\old.ast");
  test.user.ExpectSavePath(std::nullopt);
  EXPECT_FALSE(setup->SaveAs(nullptr));
  EXPECT_EQ(test.user.savePaths[0].initialFile, "old.ast");
  EXPECT_EQ(test.user.savePaths[0].initialFolder, "C:\\setups\\");
  EXPECT_EQ(test.user.savePaths[0].defaultExtension, "ast");
  EXPECT_EQ(test.user.savePaths[0].filter, "Setup Files (*.ast)|*.ast||");
  EXPECT_EQ(setup->setupFileName, "C:\\setups\\old.ast");

  test.user.ExpectSavePath("new.ast");
  EXPECT_TRUE(setup->SaveAs(""));
  EXPECT_EQ(test.user.savePaths[1].initialFile + test.user.savePaths[1].initialFolder, "");
  EXPECT_EQ(setup->setupFileName, "new.ast");
  EXPECT_EQ(test.profile.GetString(profile::kState, profile::kSetupFile, ""), "new.ast");
  EXPECT_EQ(RateIn("new.ast"), 1000);
}

TEST_F(SetupFiles, EmbeddedSetupsShareTheFileOfTheirOwner) {
  test.memory.Put("r", std::vector<std::byte>(50));
  const auto file = test.memory.Open("r", OpenMode::kReadWrite);
  const auto setup = NewSetup("own.ast");
  setup->timeEnd = 99;
  setup->subject->age = 41;
  file->Seek(0, SeekOrigin::kEnd);
  EXPECT_TRUE(setup->SaveEmbedded(*file, 50));
  EXPECT_EQ(setup->timeEnd, 0.5F) << "the axis is brought into line first";
  const auto loaded = NewSetup("own.ast");
  EXPECT_TRUE(loaded->LoadEmbedded(*file, 50));
  EXPECT_EQ(loaded->subject->age, 41);
  EXPECT_EQ(loaded->setupFileName, "own.ast");
  EXPECT_FALSE(loaded->LoadEmbedded(*file, 51));
  EXPECT_TRUE(file->SeekTo(0));
}

// ---- the search for a default file

TEST_F(SetupFiles, NewSetupLoadsTheFileOfTheProfileOrTheOneBesideTheProgram) {
  for (const char* const name : {"mine.ast", "/programs/default.ast"}) {
    const auto saved = NewSetup(name, 250);
    saved->fromRecording = 1;
    saved->acceptedSweeps = 5;
    saved->SaveFile();
    test.profile.SetString(profile::kState, profile::kSetupFile, "mine.ast");
    const auto setup = std::make_unique<CSetup>(1, test.host);
    EXPECT_EQ(setup->sampleRate, 250);
    EXPECT_EQ(setup->setupFileName, name);
    EXPECT_EQ(test.profile.GetString(profile::kState, profile::kSetupFile, ""), name);
    EXPECT_EQ(setup->fromRecording, 0) << "it is the setup of no recording";
    EXPECT_EQ(setup->acceptedSweeps, 0);
    test.memory.Delete(name);
  }
}

TEST_F(SetupFiles, NewSetupRemovesADefaultFileThatCannotBeLoaded) {
  test.memory.Put("/programs/default.ast", std::vector<std::byte>(10));
  const auto setup = std::make_unique<CSetup>(1, test.host);
  EXPECT_EQ(setup->channelCount, 32);
  EXPECT_TRUE(setup->channels);
  EXPECT_FALSE(test.memory.Exists("/programs/default.ast"));
}

TEST_F(SetupFiles, ProgramDirectoryClosesWithASeparator) {
  const CSetup setup(0, test.host);
  for (const auto& [path, directory] :
       {std::pair{"/programs/wavelock", "/programs/"}, std::pair{"wavelock", ""},
        std::pair{"C:wavelock.exe", "C:"}, std::pair{"C:\\bin\\wavelock.exe", "C:\\bin\\"},
        std::pair{"C:bin\\wavelock.exe", "C:\\bin\\"}}) {
    test.process.executablePath = path;
    EXPECT_EQ(setup.ProgramDirectory(), directory);
  }
}

}  // namespace
}  // namespace wavelock

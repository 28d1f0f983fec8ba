// A profile keeps every string, loses nothing of what others wrote, and survives what a disk can do to it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/support/failing_files.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/platform/file_profile_store.h"
#include "wavelock/platform/host.h"
#include "wavelock/platform/memory_profile_store.h"

namespace wavelock {
namespace {

class ProfileFile : public testing::Test {
 protected:
  void Put(const std::string& text) {
    std::filesystem::create_directories(folder_.Path("wavelock"));
    std::ofstream(path_) << text;
  }
  std::string Text() const {
    std::ostringstream text;
    text << std::ifstream(path_).rdbuf();
    return text.str();
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.Path("wavelock/profile.ini");
  FileService& files_ = Host::Default().files;
  FileProfileStore store_{files_, path_};
};

TEST_F(ProfileFile, KeepsAnyStringAndReadsAsAPersonWouldWriteIt) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
  const std::string strings[] = {"",  " ",      "a = b",  "[State]", "; no comment", "C:\\new\\x41.ast",
                                 "#", "\\\\x0", "\r\n\t", "]",       everyByte};
  for (const std::string& value : strings) {
    for (const std::string& name : strings) ASSERT_TRUE(store_.SetString(name, name + "key", value));
    for (const std::string& name : strings) EXPECT_EQ(store_.GetString(name, name + "key", "none"), value);
  }

  Put("");
  ASSERT_TRUE(store_.SetInt("State", "AutoReadOnly", 1));
  ASSERT_TRUE(store_.SetString("INSTITUTION", "Institute", "Ward 5"));
  ASSERT_TRUE(store_.SetString("State", "SetupFile", "default.ast"));
  EXPECT_EQ(Text(),
            "[State]\nAutoReadOnly = 1\nSetupFile = default.ast\n\n[INSTITUTION]\nInstitute = Ward 5\n");
}

TEST(MemoryProfile, NumbersAreText) {
  MemoryProfileStore store;
  EXPECT_EQ(store.GetInt("State", "AutoReadOnly", 7), 7);
  for (const int value : {0, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    ASSERT_TRUE(store.SetInt("State", "AutoReadOnly", value));
    EXPECT_EQ(store.GetInt("State", "AutoReadOnly", 7), value);
    EXPECT_EQ(store.GetString("State", "AutoReadOnly", ""), std::to_string(value));
  }
  for (const char* text : {"", "x", "1x", "2147483648", "0.5"}) {
    ASSERT_TRUE(store.SetString("State", "AutoReadOnly", text));
    EXPECT_EQ(store.GetInt("State", "AutoReadOnly", 7), 7) << text;
  }
}

TEST_F(ProfileFile, EditedByHandKeepsWhatThePersonWrote) {
  const std::string start =  // with the byte-order mark that some editors put there
      "\xEF\xBB\xBF[Ward] # this one\nLast = 1\n; mine\r\nstray\n[State]\r\n# why\n";
  Put(start + "SetupFile=C:\\data\\x4\n\n[Other]\nSetupFile = other");
  EXPECT_EQ(store_.GetInt("Ward", "Last", 0), 1);
  EXPECT_EQ(store_.GetString("State", "SetupFile", ""), "C:\\data\\x4");
  EXPECT_EQ(store_.GetString("state", "SetupFile", "exact"), "exact");
  ASSERT_TRUE(store_.SetString("State", "SetupFile", "b"));
  ASSERT_TRUE(store_.SetInt("State", "AutoReadOnly", 1));
  ASSERT_TRUE(store_.SetInt("Other", "Last", 2));
  EXPECT_EQ(Text(), start + "SetupFile = b\nAutoReadOnly = 1\n\n[Other]\nSetupFile = other\nLast = 2\n");

  Put(" key = before any section\n[State]\n");
  EXPECT_EQ(store_.GetString("", "key", "none"), "none");
}

TEST_F(ProfileFile, WritersAtTheSameTimeLoseNothing) {
  const auto write = [this](int writer) {
    FileProfileStore own(files_, path_);  // as another process would have it
    for (int key = 0; key < 10; ++key)
      EXPECT_TRUE(own.SetInt("Writer " + std::to_string(writer), std::to_string(key), key));
  };
  std::vector<std::thread> writers;
  for (int writer = 0; writer < 4; ++writer) writers.emplace_back(write, writer);
  for (std::thread& writer : writers) writer.join();
  for (int i = 0; i < 40; ++i)
    EXPECT_EQ(store_.GetInt("Writer " + std::to_string(i / 10), std::to_string(i % 10), -1), i % 10);
}

TEST_F(ProfileFile, FailuresOfTheDiskLeaveTheOldProfileOrTheWholeNewOne) {
  const std::string path = folder_.Path("profile.ini");  // the lock beside it is a real one
  const auto set = [&path](FileService& files, const char* value) {
    return FileProfileStore(files, path).SetString("State", "SetupFile", value);
  };
  const auto prepare = [&](MemoryFiles& memory) {
    EXPECT_TRUE(set(memory, "old") && FileProfileStore(memory, path).SetInt("Other", "Kept", 1));
  };
  FailEveryCall(
      prepare, [&](Host& host, FaultKind) { return set(host.files, "new"); },
      [&](MemoryFiles& memory, bool isDone) {
        FileProfileStore store(memory, path);
        EXPECT_EQ(store.GetString("State", "SetupFile", "lost"), isDone ? "new" : "old");
        EXPECT_EQ(store.GetInt("Other", "Kept", 0), 1);
      });
}

TEST_F(ProfileFile, WhatCannotBeReadOrWrittenIsLeftAlone) {
  std::filesystem::create_directories(path_);
  EXPECT_EQ(store_.GetInt("State", "AutoReadOnly", 3), 3);
  EXPECT_FALSE(store_.SetInt("State", "AutoReadOnly", 1));
  std::filesystem::remove(path_);

  Put("[State]\nAutoReadOnly = 1\n");
  EXPECT_FALSE(store_.SetString("State", "Big", std::string(2 << 20, 'x'))) << "it could not be read again";
  ASSERT_TRUE(files_.SetStatus(path_, {.readOnly = true}));
  EXPECT_FALSE(store_.SetInt("State", "AutoReadOnly", 2));
  EXPECT_EQ(store_.GetInt("State", "AutoReadOnly", 0), 1);

  for (const char* const nowhere : {"", "/dev/null/wavelock/profile.ini"}) {
    FileProfileStore homeless(files_, nowhere);
    EXPECT_FALSE(homeless.SetInt("State", "AutoReadOnly", 1));
    EXPECT_EQ(homeless.GetInt("State", "AutoReadOnly", 5), 5);
  }
}

}  // namespace
}  // namespace wavelock

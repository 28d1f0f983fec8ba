// Paths of every platform fall into pieces that give them back.
#include <gtest/gtest.h>

#include "wavelock/platform/process.h"

namespace wavelock {
namespace {

struct Case {
  std::string drive;
  std::string directory;
  std::string name;
  std::string extension;
};

TEST(PathSplitting, PiecesGiveThePathBack) {
  const Case cases[] = {
      {"", "/usr/local/bin/", "wavelock", ""},
      {"C:", "\\Program Files\\Lab\\", "record", ".exe"},
      {"c:", "", "name", ".ast"},
      {"", "..\\mixed/", "a.b", ".cnt"},
      {"", "\\\\server\\share\\", "x", ".avg"},
      {"", "/folder.d/", "name", ""},
      {"", "/folder/", "", ""},
      {"", "/", "", ".hidden"},
      {"", "", "name", "."},
      {"", "", "1:", ""},
      {"C:", "", "", ""},
      {"", "", "", ""},
  };
  for (const Case& expected : cases) {
    const std::string path = expected.drive + expected.directory + expected.name + expected.extension;
    const PathParts parts = SplitPath(path);
    EXPECT_EQ(parts.drive, expected.drive) << path;
    EXPECT_EQ(parts.directory, expected.directory) << path;
    EXPECT_EQ(parts.name, expected.name) << path;
    EXPECT_EQ(parts.extension, expected.extension) << path;
  }
}

}  // namespace
}  // namespace wavelock

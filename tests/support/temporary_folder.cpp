#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <system_error>

namespace wavelock {

TemporaryFolder::TemporaryFolder() {
  std::random_device random;
  do {
    path_ = (std::filesystem::temp_directory_path() / ("wavelock_" + std::to_string(random()))).string();
  } while (!std::filesystem::create_directory(path_));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
  EXPECT_FALSE(error) << path_ << ": " << error.message();
}

}  // namespace wavelock

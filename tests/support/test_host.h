// A host whose every service is a double that the test can look into.
#pragma once

#include <ctime>

#include "tests/support/memory_files.h"
#include "tests/support/scripted_user.h"
#include "wavelock/platform/host.h"
#include "wavelock/platform/memory_profile_store.h"

namespace wavelock {

// A process of fixed properties; its local time is UTC.
class FakeProcess : public Process {
 public:
  std::string executablePath = "/programs/wavelock";
  std::uint32_t osVersionWord = 0x0106;

  std::string ExecutablePath() override { return executablePath; }
  std::string LocalTime(std::int64_t seconds, const char* pattern) override {
    const auto time = static_cast<std::time_t>(seconds);
    const std::tm* const utc = std::gmtime(&time);
    char text[256];
    return utc == nullptr ? std::string() : std::string(text, std::strftime(text, sizeof text, pattern, utc));
  }
  std::uint32_t OsVersionWord() override { return osVersionWord; }
};

struct TestHost {
  TestHost() : host{memory, profile, user, process} {}

  // With other files than those in memory: real ones, or ones that fail.
  explicit TestHost(FileService& files) : host{files, profile, user, process} {}

  MemoryFiles memory;
  MemoryProfileStore profile;
  ScriptedUser user;
  FakeProcess process;
  Host host;
};

}  // namespace wavelock

// The process on a POSIX system.
#pragma once

#include "wavelock/platform/process.h"

namespace wavelock {

class PosixProcess : public Process {
 public:
  std::string ExecutablePath() override;  // empty where the system does not tell
  std::string LocalTime(std::int64_t seconds, const char* pattern) override;

  // The system's release: the major number in the low byte, the minor one above it.
  std::uint32_t OsVersionWord() override;
};

}  // namespace wavelock

// What the library asks of the process it runs in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace wavelock {

// A path in four pieces that, put together, give it back. `directory` keeps its closing separator,
// `extension` its leading dot; `drive` is empty where the platform has none.
struct PathParts {
  std::string drive;
  std::string directory;
  std::string name;
  std::string extension;
};

// Takes both separators on every platform, since paths stored in files come from anywhere.
PathParts SplitPath(std::string_view path);

class Process {
 public:
  virtual ~Process() = default;

  virtual std::string ExecutablePath() = 0;

  // Seconds since 1970 in local time, by a strftime pattern; empty when the time has no local form.
  virtual std::string LocalTime(std::int64_t seconds, const char* pattern) = 0;

  // The operating system's version word, 0 where it has none.
  virtual std::uint32_t OsVersionWord() = 0;
};

}  // namespace wavelock

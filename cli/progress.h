// How far a long piece of work has come, on a terminal and nowhere else.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "cli/output.h"

namespace wavelock::command {

// Says nothing in the first half second, nor where the data runs over a terminal, and cleans its line up when
// it goes.
class Progress {
 public:
  Progress(std::string_view what, std::uint64_t total, const Output& output);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Advance(std::uint64_t by);

 private:
  using Clock = std::chrono::steady_clock;

  void Draw();

  const std::string what_;
  const std::uint64_t total_;
  const bool isShown_;
  std::uint64_t done_ = 0;
  Clock::time_point nextDraw_;
  bool isDrawn_ = false;
};

}  // namespace wavelock::command

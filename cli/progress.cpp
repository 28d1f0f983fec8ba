#include "cli/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "cli/terminal.h"
#include "wavelock/platform/printable.h"

namespace wavelock::command {
namespace {

constexpr std::chrono::milliseconds kQuietStart{500};
constexpr std::chrono::milliseconds kBetweenDraws{100};
constexpr int kBarWidth = 30;

}  // namespace

Progress::Progress(std::string_view what, std::uint64_t total, const Output& output)
    : what_(Printable(what)),
      total_(std::max<std::uint64_t>(total, 1)),
      isShown_(IsTerminal(stderr) && !output.IsTerminal()),
      nextDraw_(Clock::now() + kQuietStart) {}

Progress::~Progress() {
  if (isDrawn_) fmt::print(stderr, "\r{:{}}\r", "", what_.size() + kBarWidth + 10);
}

void Progress::Advance(std::uint64_t by) {
  done_ += by;
  if (!isShown_ || Clock::now() < nextDraw_) return;
  Draw();
  nextDraw_ = Clock::now() + kBetweenDraws;
}

void Progress::Draw() {
  const double part = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
  const auto filled = static_cast<std::size_t>(part * kBarWidth);
  fmt::print(stderr, "\r{}  [{:-<{}}] {:3.0f} %", what_, std::string(filled, '#'), kBarWidth, part * 100);
  std::fflush(stderr);
  isDrawn_ = true;
}

}  // namespace wavelock::command

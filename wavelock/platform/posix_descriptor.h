// The descriptor of an open file, closed when its owner goes.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace wavelock {

class PosixDescriptor {
 public:
  explicit PosixDescriptor(int number) : number_(number) {}
  PosixDescriptor(PosixDescriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
  PosixDescriptor& operator=(PosixDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~PosixDescriptor() {
    if (IsOpen()) close(number_);
  }

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }

 private:
  int number_;  // negative for none
};

// Runs a system call until no signal interrupts it.
template <class Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace wavelock

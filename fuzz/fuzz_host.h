// What the targets share: a host in memory, and values taken from an input.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string>

#include "tests/support/memory_files.h"
#include "tests/support/test_host.h"
#include "wavelock/platform/memory_profile_store.h"
#include "wavelock/platform/silent_modal_interface.h"

namespace wavelock {

// Agrees to everything, so that nothing behind a question is left out.
class AgreeableUser : public SilentModalInterface {
 public:
  bool AskYesNo(const ModalText&) override { return true; }
  bool RunDialog(ModalDialog&) override { return true; }
  std::optional<std::string> AskSavePath(const SavePathDialog&) override { return "chosen.ast"; }
};

struct FuzzHost {
  FuzzHost() { memory.LimitSize(std::uint64_t{1} << 24); }

  MemoryFiles memory;
  MemoryProfileStore profile;
  AgreeableUser user;
  FakeProcess process;
  Host host{memory, profile, user, process};
};

inline std::span<const std::byte> InputBytes(const std::uint8_t* data, std::size_t size) {
  return std::as_bytes(std::span(data, size));
}

// Takes values off the front of an input; zeros when there is nothing left.
class InputReader {
 public:
  explicit InputReader(std::span<const std::byte> bytes) : left_(bytes) {}

  bool IsAtEnd() const { return left_.empty(); }
  std::span<const std::byte> Rest() const { return left_; }

  template <class T>
  T Take() {
    T value{};
    const std::size_t size = left_.size() < sizeof value ? left_.size() : sizeof value;
    if (size != 0) std::memcpy(&value, left_.data(), size);
    left_ = left_.subspan(size);
    return value;
  }

 private:
  std::span<const std::byte> left_;
};

}  // namespace wavelock

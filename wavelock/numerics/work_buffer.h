// Memory that one request after the other works in: fresh pages would cost more than the work.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace wavelock {

class WorkBuffer {
 public:
  // `bytes` bytes of undefined content, aligned for every number; empty when there is no memory for them. The
  // bytes of an earlier call are gone.
  std::span<std::byte> Take(std::size_t bytes) {
    if (size_ < bytes) {
      Release();
      bytes_.reset(new (std::nothrow) std::byte[bytes]);
      if (!bytes_) return {};
      size_ = bytes;
    }
    return {bytes_.get(), bytes};
  }

  void Release() {
    bytes_.reset();
    size_ = 0;
  }

 private:
  std::unique_ptr<std::byte[]> bytes_;
  std::size_t size_ = 0;
};

}  // namespace wavelock

// Stores that go around the cache. A store reads the line of the cache that it changes; where more is written
// than a cache holds, nobody finds the lines there anyway, and a store of a whole line can do without.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define WAVELOCK_HAS_STREAMING
#endif

namespace wavelock {

inline constexpr std::size_t kMoreThanCachesHold = std::size_t{16} * 1024 * 1024;

// Streamed stores go to such places.
inline bool IsStreamable(const void* place) {
  constexpr std::uintptr_t kAlignment = 16;
  return reinterpret_cast<std::uintptr_t>(place) % kAlignment == 0;
}

// Copies as much as can be streamed around the cache, and the rest through it.
inline void StreamCopy(const void* in, std::size_t bytes, void* out) {
  const auto* from = static_cast<const std::byte*>(in);
  auto* to = static_cast<std::byte*>(out);
#ifdef WAVELOCK_HAS_STREAMING
  if (IsStreamable(to)) {
    for (; bytes >= sizeof(__m128i); bytes -= sizeof(__m128i)) {
      _mm_stream_si128(reinterpret_cast<__m128i*>(to),
                       _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
      from += sizeof(__m128i);
      to += sizeof(__m128i);
    }
    _mm_sfence();  // whoever sees what the caller does next sees the copy, in whatever thread
  }
#endif
  if (bytes != 0) std::memcpy(to, from, bytes);
}

}  // namespace wavelock

// For loops over many numbers. A function with this in front of it is compiled twice, for any processor and
// for those with vectors of 256 bits, of which the loader takes what fits. The results are the same: nothing
// is reordered or rounded together. It is empty where a loader cannot choose, or has to before a checked
// build has begun.
#pragma once

#include <cstddef>

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__GLIBC__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define WAVELOCK_LONG_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define WAVELOCK_LONG_VECTORS
#endif

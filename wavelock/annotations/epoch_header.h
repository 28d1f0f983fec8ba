// The head of an epoch: what happened in it, as it stands in a file before the epoch's data.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wavelock/numerics/stored.h"

namespace wavelock {

struct EpochHeader {
  Stored<std::uint8_t> accept;
  Stored<std::uint16_t> trialType;
  Stored<std::uint16_t> correct;
  Stored<float> reactionTime;
  Stored<std::uint16_t> response;
  StoredBytes<2> reserved{};
};
static_assert(sizeof(EpochHeader) == 1 + 2 + 2 + 4 + 2 + 2 && alignof(EpochHeader) == 1);

// The oldest files hold the first two fields alone.
inline constexpr std::size_t kShortEpochHeaderBytes = offsetof(EpochHeader, correct);

}  // namespace wavelock

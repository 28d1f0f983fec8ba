// A named code of a setup: what an artifact or an event of that code is called.
#pragma once

#include <cstdint>

#include "wavelock/setup/fixed_text.h"

namespace wavelock {

struct SetupLabel {
  std::int32_t code = 0;
  FixedText<256> text{};
};

}  // namespace wavelock

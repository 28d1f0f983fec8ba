// Sixteen auxiliary inputs with a linear scale each, held as parallel arrays.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "wavelock/setup/fixed_text.h"

namespace wavelock {

inline constexpr std::size_t kAuxInputCount = 16;

struct AuxInputs {
  template <class T>
  using PerInput = std::array<T, kAuxInputCount>;

  template <class T>
  static constexpr PerInput<T> All(T value) {
    PerInput<T> inputs{};
    inputs.fill(value);
    return inputs;
  }

  PerInput<float> auxSlope = All(1.0F);  // value = (raw + auxOffset) * auxSlope
  PerInput<float> auxOffset{};
  PerInput<float> auxRawLow = All(-5.0F);  // the raw range
  PerInput<float> auxRawHigh = All(5.0F);
  PerInput<float> auxField16{};
  PerInput<float> auxField20{};
  PerInput<std::int32_t> auxField24 = All(1);
  PerInput<float> auxField28{};
  PerInput<FixedText<20>> auxUnit{};
  PerInput<std::int32_t> auxField52{};
  PerInput<FixedText<10>> auxLabel{};
  PerInput<float> auxField66 = All(1.0F);
  PerInput<float> auxField70{};
};
static_assert(std::is_trivially_copyable_v<AuxInputs>);

}  // namespace wavelock

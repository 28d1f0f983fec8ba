// The channel pairs of a time-frequency recording in memory.
#pragma once

#include <cstdint>

#include "wavelock/numerics/matrices.h"
#include "wavelock/tfdata/tf_data.h"

namespace wavelock {

class CTFDPaired : public CTFDataConfig {
 public:
  // Everything is zero at first. Not valid, and without matrices, for fewer than one pair, for a negative
  // number of points, and when memory ran out.
  CTFDPaired(const CSetup* setup, std::int32_t pairs);

  const char* GetRuntimeClassName() const override { return "CTFDPaired"; }

  std::int32_t GetPairCount() const { return pairCount; }

  Matrix<std::int32_t> pairIndex;  // row 0: the first channel of each pair, row 1: the second
  FloatMatrix real;                // pairs x points, like the next
  FloatMatrix imaginary;
  int ready = 0;  // 1 once the matrices exist
  std::int32_t pairCount;

 private:
  bool MakeMatrices();
};

}  // namespace wavelock

#include "wavelock/tfdata/tfd_paired.h"

namespace wavelock {

CTFDPaired::CTFDPaired(const CSetup* setup, std::int32_t pairs) : CTFDataConfig(setup), pairCount(pairs) {
  if (valid == 0) return;
  if (!MakeMatrices()) {
    valid = 0;
    return;
  }
  config->dataKind = kTimeFrequency;
  config->hasImaginary = 1;
  config->mainField8036 = 1;
  config->mainField8040 = 1;
  ready = 1;
}

bool CTFDPaired::MakeMatrices() {
  if (pairCount <= 0 || GetPointCount() < 0) return false;
  const auto pairs = static_cast<std::uint32_t>(pairCount);
  const auto points = static_cast<std::uint32_t>(GetPointCount());
  if (pairIndex.Make(2, pairs) && AllocFloatMatrix(real, pairs, points) &&
      AllocFloatMatrix(imaginary, pairs, points)) {
    return true;
  }
  FreeMatrix(real);
  FreeMatrix(pairIndex);
  return false;
}

}  // namespace wavelock

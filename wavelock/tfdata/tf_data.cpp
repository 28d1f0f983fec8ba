#include "wavelock/tfdata/tf_data.h"

#include <algorithm>
#include <new>

namespace wavelock {

CTFDataConfig::CTFDataConfig(const CSetup* setup) {
  if (!TakeSetup(setup)) valid = 0;
}

CTFDataConfig::CTFDataConfig(const CTFDataConfig& source) : CTFData(source) {
  if (!TakeSetup(source.config.get())) {
    valid = 0;
    return;
  }
  const auto from = source.channelWords.Elements();
  const auto to = channelWords.Elements();
  std::copy_n(from.begin(), std::min(from.size(), to.size()), to.begin());
}

bool CTFDataConfig::TakeSetup(const CSetup* setup) {
  if (setup == nullptr || !channelWords.SetSize(setup->channelCount)) return false;
  try {
    config = std::make_unique<CSetup>(*setup);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

bool CTFDataConfig::HasFsp() const {
  return config && config->dataKind == kAverageWithStatistics;
}

}  // namespace wavelock

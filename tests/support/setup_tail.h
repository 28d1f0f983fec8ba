// The setup of a recording as its tail.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "tests/support/stored_container.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/setup.h"

namespace wavelock {

// The records of a setup that has its defaults but for what `change` puts there.
inline StoredContainer TailOf(const std::function<void(CSetup&)>& change, std::int32_t channels = 2) {
  TestHost test;
  const auto setup = std::make_unique<CSetup>(0, test.host);
  EXPECT_TRUE(setup->ResetToDefaults());
  setup->channelCount = channels;
  change(*setup);
  setup->setupFileName = std::string("s");
  setup->SaveFile();
  return StoredContainer(*test.memory.Contents("s"));
}

}  // namespace wavelock

// The dialog that tells what the control is.
#pragma once

#include "wavelock/platform/host.h"

namespace wavelock {

class CAboutBox {
 public:
  void DoModal(Host& host);
};

}  // namespace wavelock

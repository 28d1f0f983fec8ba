// The dialogs that come up while a recording is opened, each told by the values that it exchanges.
#pragma once

#include <string>

#include "wavelock/platform/host.h"

namespace wavelock {

// The header and the file's name disagree about what the file holds; the person decides.
class CKindPrompt {
 public:
  std::string firstReading;   // what the name says
  std::string secondReading;  // what the header says
  int choice = -1;  // 0 the first reading, anything else the second; a cancel leaves it as it was set

  bool DoModal(Host& host);
};

// The recording was changed by a program of one certain version. Only informs; remembers in the profile when
// it is not to be shown again.
class CModifiedPrompt {
 public:
  int dontShowAgain = 0;

  bool DoModal(Host& host);
};

// The recording comes from a newer program. Only informs; the caller remembers when it is not to be shown
// again.
class CNewerVersionPrompt {
 public:
  int dontShowAgain = 0;
  std::string text;

  bool DoModal(Host& host);
};

}  // namespace wavelock

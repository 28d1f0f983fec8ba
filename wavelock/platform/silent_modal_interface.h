// For programs that nobody watches: messages are dropped, questions answered no, dialogs cancelled.
#pragma once

#include "wavelock/platform/modal_interface.h"

namespace wavelock {

class SilentModalInterface : public ModalInterface {
 public:
  void ShowMessage(const ModalText&) override {}
  bool AskYesNo(const ModalText&) override { return false; }
  bool RunDialog(ModalDialog&) override { return false; }
  std::optional<std::string> AskSavePath(const SavePathDialog&) override { return std::nullopt; }
  std::optional<std::uint32_t> AskColour(std::uint32_t) override { return std::nullopt; }
  void BeginWaitCursor() override {}
  void EndWaitCursor() override {}
};

}  // namespace wavelock

// The host of a replayed script: the machine's own files, a profile in memory, a process that is the same
// everywhere, and a person whose answers the script states. Everything that is shown is kept.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/test_host.h"
#include "wavelock/platform/host.h"

namespace wavelock::replay {

class RecordingUser : public ModalInterface {
 public:
  // Of a script: `answer` to questions, `kindChoice` for the prompt about the kind of file.
  explicit RecordingUser(const nlohmann::json& host);

  void ShowMessage(const ModalText& message) override;
  bool AskYesNo(const ModalText& question) override;
  bool RunDialog(ModalDialog& dialog) override;
  std::optional<std::string> AskSavePath(const SavePathDialog&) override { return std::nullopt; }
  std::optional<std::uint32_t> AskColour(std::uint32_t) override { return std::nullopt; }
  void BeginWaitCursor() override {}
  void EndWaitCursor() override {}

  // What was shown since the last call, in order.
  nlohmann::json TakeMessages();

 private:
  bool answer_;
  int kindChoice_;
  nlohmann::json shown_ = nlohmann::json::array();
};

class RecordedHost {
 public:
  explicit RecordedHost(const nlohmann::json& host);

  Host& Get() { return host_; }
  RecordingUser& User() { return user_; }

  // A number or a text.
  void SetProfile(const std::string& section, const std::string& key, const nlohmann::json& value);

 private:
  MemoryProfileStore profile_;
  RecordingUser user_;
  FakeProcess process_;
  Host host_;
};

}  // namespace wavelock::replay

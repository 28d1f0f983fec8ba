#include "tests/replay/recorded_host.h"

#include "tests/replay/answers.h"

namespace wavelock::replay {
namespace {

// These are shown whatever a recording was told about keeping silent.
bool IsDirect(int number) {
  return number == 1760 || number == 1762;
}

nlohmann::json Shown(const ModalText& text, const char* way) {
  nlohmann::json shown{{"way", way}, {"text", Latin1ToUtf8(text.text)}};
  if (text.number != 0) shown["id"] = text.number;
  if (!text.insertion.empty()) shown["insert"] = Latin1ToUtf8(text.insertion);
  return shown;
}

}  // namespace

RecordingUser::RecordingUser(const nlohmann::json& host)
    : answer_(host.value("answer", true)), kindChoice_(host.value("kindChoice", 0)) {}

void RecordingUser::ShowMessage(const ModalText& message) {
  switch (message.source) {
    case ModalSource::kNumbered:
      shown_.push_back(Shown(message, IsDirect(message.number) ? "direct" : "report"));
      break;
    case ModalSource::kSystem:
      shown_.push_back(Shown(message, "report"));
      shown_.back()["id"] = "system";
      break;
    case ModalSource::kNotice:
      shown_.push_back(Shown(message, "notice"));
      break;
  }
}

bool RecordingUser::AskYesNo(const ModalText& question) {
  shown_.push_back(Shown(question, "question"));
  return answer_;
}

bool RecordingUser::RunDialog(ModalDialog& dialog) {
  shown_.push_back({{"way", "prompt"}, {"id", dialog.name}});
  if (!dialog.choices.empty()) dialog.choice = kindChoice_;
  return true;
}

nlohmann::json RecordingUser::TakeMessages() {
  return std::exchange(shown_, nlohmann::json::array());
}

RecordedHost::RecordedHost(const nlohmann::json& host)
    : user_(host), host_{Host::Default().files, profile_, user_, process_} {
  for (const auto& entry : host.value("profile", nlohmann::json::array())) {
    SetProfile(entry.at(0), entry.at(1), entry.at(2));
  }
}

void RecordedHost::SetProfile(const std::string& section, const std::string& key,
                              const nlohmann::json& value) {
  if (value.is_number()) {
    profile_.SetInt(section, key, value.get<int>());
  } else {
    profile_.SetString(section, key, value.get<std::string>());
  }
}

}  // namespace wavelock::replay

#include <memory>
#include <utility>

#include "tests/replay/answers.h"
#include "tests/replay/recorded_host.h"
#include "tests/replay/scripts.h"

namespace wavelock::replay {

void SaveSetupTo(CSetup& setup, const std::string& path) {
  const std::string own = std::exchange(setup.setupFileName, path);
  setup.SaveFile();
  setup.setupFileName = own;
}

nlohmann::json RunSetupScript(const nlohmann::json& script) {
  RecordedHost host(script.value("host", nlohmann::json::object()));
  const auto setup = std::make_unique<CSetup>(0, host.Get());
  setup->ResetToDefaults();
  setup->setupFileName = script.at("path").get<std::string>();
  nlohmann::json answer;
  answer["result"] = setup->LoadFile() ? 1 : 0;
  answer["messages"] = host.User().TakeMessages();
  answer["setup"] = SetupFieldsOf(*setup);
  if (script.contains("saveSetup")) SaveSetupTo(*setup, script.at("saveSetup").get<std::string>());
  return answer;
}

}  // namespace wavelock::replay

#include "cli/control_module.h"

#include <filesystem>

#include "wavelock/control/identifiers.h"
#include "wavelock/control/module.h"
#include "wavelock/platform/component_loader.h"
#include "wavelock/platform/file_registry.h"

namespace wavelock::command {
namespace {

bool HoldsControl(Registry& registry) {
  SystemLibraries libraries;
  Identifier classId;
  return ComponentLoader(registry, libraries).FindClass(kControlProgrammaticId, &classId) == Result::kDone;
}

}  // namespace

std::string ShippedModule() {
  const std::filesystem::path command = Host::Default().process.ExecutablePath();
  return (command.parent_path() / WAVELOCK_MODULE_FROM_COMMAND).lexically_normal().string();
}

std::unique_ptr<Registry> RegistryWithControl() {
  auto users = std::make_unique<FileRegistry>(Host::Default().files);
  if (HoldsControl(*users)) return users;
  auto own = std::make_unique<MemoryRegistry>();
  CControlModule(Host::Default(), *own, ShippedModule()).RegisterServer();
  return own;
}

}  // namespace wavelock::command

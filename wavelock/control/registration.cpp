#include "wavelock/control/registration.h"

#include <string_view>

#include "wavelock/control/identifiers.h"
#include "wavelock/control/resources.h"
#include "wavelock/control/wavelock_dispatch.h"
#include "wavelock/platform/process.h"
#include "wavelock/platform/shared_library.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

// Bits of how a control wants to be treated by its container.
enum MiscellaneousStatus : std::uint32_t {
  kRecomposeOnResize = 0x1,
  kCantLinkInside = 0x10,
  kInsideOut = 0x80,
  kActivateWhenVisible = 0x100,
  kInvisibleAtRuntime = 0x400,
  kSetClientSiteFirst = 0x20000,
};
constexpr std::uint32_t kControlStatus = kRecomposeOnResize | kCantLinkInside | kInsideOut |
                                         kActivateWhenVisible | kInvisibleAtRuntime | kSetClientSiteFirst;
static_assert(kControlStatus == 0x20591);

constexpr char kOwnValue[] = "";
constexpr char kThreadingModel[] = "ThreadingModel";
constexpr char kApartment[] = "Apartment";

std::string Version() {
  return std::to_string(kMajorVersion) + "." + std::to_string(kMinorVersion);
}

std::string ClassKey(const Identifier& classId) {
  return "CLSID/" + FormatIdentifier(classId);
}

std::string TypeLibraryKey() {
  return "TypeLib/" + FormatIdentifier(kTypeLibraryId);
}

std::string InterfaceKey(const InterfaceInfo& interface) {
  return "Interface/" + FormatIdentifier(interface.id);
}

void EnterClass(RegistryTree& tree, const Identifier& classId, int typeName, const std::string& path) {
  const std::string key = ClassKey(classId);
  tree[key][kOwnValue] = StringResource(typeName);
  tree[key + "/InprocServer32"] = {{kOwnValue, path}, {kThreadingModel, kApartment}};
}

void EnterControl(RegistryTree& tree, const std::string& path) {
  EnterClass(tree, kControlClassId, kControlTypeName, path);
  const std::string key = ClassKey(kControlClassId);
  tree[key + "/ProgID"][kOwnValue] = kControlProgrammaticId;
  tree[key + "/Control"];
  tree[key + "/Insertable"];
  tree[key + "/ToolboxBitmap32"][kOwnValue] = path + ", " + std::to_string(kToolboxBitmap);
  tree[key + "/MiscStatus"][kOwnValue] = "0";
  tree[key + "/MiscStatus/1"][kOwnValue] = std::to_string(kControlStatus);
  tree[key + "/TypeLib"][kOwnValue] = FormatIdentifier(kTypeLibraryId);
  tree[key + "/Version"][kOwnValue] = Version();

  const std::string programmaticId = kControlProgrammaticId;
  tree[programmaticId][kOwnValue] = StringResource(kControlTypeName);
  tree[programmaticId + "/CLSID"][kOwnValue] = FormatIdentifier(kControlClassId);
  tree[programmaticId + "/Insertable"];
}

void EnterInterface(RegistryTree& tree, const InterfaceInfo& interface) {
  const std::string key = InterfaceKey(interface);
  tree[key][kOwnValue] = interface.name;
  tree[key + "/TypeLib"] = {{kOwnValue, FormatIdentifier(kTypeLibraryId)}, {"Version", Version()}};
}

std::span<const InterfaceInfo> Interfaces() {
  return {TypeLibrary().interfaces, TypeLibrary().interfaceCount};
}

}  // namespace

void EnterTypeLibrary(RegistryTree& tree, const std::string& path) {
  constexpr char kAnyLocale[] = "0";
  constexpr char kControlLibrary[] = "2";
  const std::string key = TypeLibraryKey() + "/" + Version();
  tree[key][kOwnValue] = StringResource(kControlTypeName);
  tree[key + "/FLAGS"][kOwnValue] = kControlLibrary;
  tree[key + "/HELPDIR"][kOwnValue] = CSetup::DirectoryOf(path);
  tree[(key + "/" + kAnyLocale + "/").append(ModulePlatform())][kOwnValue] = path;
  for (const InterfaceInfo& interface : Interfaces()) EnterInterface(tree, interface);
}

void EnterClasses(RegistryTree& tree, const std::string& path) {
  EnterControl(tree, path);
  EnterClass(tree, kPropertyPageClassId, kPropertyPageTypeName, path);
}

// Other versions of the type library, which others may have entered, stay.
void RemoveTypeLibrary(RegistryTree& tree, const std::string& /*path*/) {
  RemoveKey(tree, TypeLibraryKey() + "/" + Version());
  if (!HasKeysBelow(tree, TypeLibraryKey())) RemoveKey(tree, TypeLibraryKey());
  for (const InterfaceInfo& interface : Interfaces()) RemoveKey(tree, InterfaceKey(interface));
}

void RemoveClasses(RegistryTree& tree, const std::string& /*path*/) {
  RemoveKey(tree, ClassKey(kControlClassId));
  RemoveKey(tree, kControlProgrammaticId);
  RemoveKey(tree, ClassKey(kPropertyPageClassId));
}

}  // namespace wavelock

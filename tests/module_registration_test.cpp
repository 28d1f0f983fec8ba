// The module enters its classes into a registry, clients find and make them there, and nothing stays behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/temporary_folder.h"
#include "tests/support/test_host.h"
#include "wavelock/control/dispatch.h"
#include "wavelock/control/embedded_control.h"
#include "wavelock/control/identifiers.h"
#include "wavelock/control/module.h"
#include "wavelock/control/property_page.h"
#include "wavelock/platform/component_loader.h"
#include "wavelock/platform/file_registry.h"
#include "wavelock/platform/posix_files.h"
#include "wavelock/platform/shared_library.h"

namespace wavelock {
namespace {

constexpr char kPath[] = "/lib/wavelock/wavelock_control.so";

// Fails the change of that number, counted from 0.
class FailingRegistry : public MemoryRegistry {
 public:
  explicit FailingRegistry(int failure) : failure_(failure) {}
  bool Change(const std::function<void(RegistryTree&)>& change) override {
    return changes_++ != failure_ && MemoryRegistry::Change(change);
  }

 private:
  const int failure_;
  int changes_ = 0;
};

struct ModuleRegistration : testing::Test {
  TestHost host;
  MemoryRegistry registry;
  CControlModule module{host.host, registry, kPath};
};

using ModuleClasses = ModuleRegistration;

TEST_F(ModuleRegistration, EntersEveryValueOfItsClasses) {
  ASSERT_EQ(module.RegisterServer(), Result::kDone);
  const std::string controlId = FormatIdentifier(kControlClassId);
  const std::string control = "CLSID/" + controlId;
  const std::string page = "CLSID/" + FormatIdentifier(kPropertyPageClassId);
  const std::string libraryId = FormatIdentifier(kTypeLibraryId);
  const std::string library = "TypeLib/" + libraryId + "/1.0";
  const std::string methods = "Interface/" + FormatIdentifier(kDispatchId);
  const std::string events = "Interface/" + FormatIdentifier(kEventsId);
  EXPECT_EQ(*registry.Read(),
            (RegistryTree{{control, {{"", "Wavelock Control"}}},
                          {control + "/Control", {}},
                          {control + "/InprocServer32", {{"", kPath}, {"ThreadingModel", "Apartment"}}},
                          {control + "/Insertable", {}},
                          {control + "/MiscStatus", {{"", "0"}}},
                          {control + "/MiscStatus/1", {{"", "132497"}}},
                          {control + "/ProgID", {{"", "WAVELOCK.WavelockCtrl.1"}}},
                          {control + "/ToolboxBitmap32", {{"", std::string(kPath) + ", 1"}}},
                          {control + "/TypeLib", {{"", libraryId}}},
                          {control + "/Version", {{"", "1.0"}}},
                          {page, {{"", "Wavelock Property Page"}}},
                          {page + "/InprocServer32", {{"", kPath}, {"ThreadingModel", "Apartment"}}},
                          {methods, {{"", "_DWavelock"}}},
                          {methods + "/TypeLib", {{"", libraryId}, {"Version", "1.0"}}},
                          {events, {{"", "_DWavelockEvents"}}},
                          {events + "/TypeLib", {{"", libraryId}, {"Version", "1.0"}}},
                          {library, {{"", "Wavelock Control"}}},
                          {(library + "/0/").append(ModulePlatform()), {{"", kPath}}},
                          {library + "/FLAGS", {{"", "2"}}},
                          {library + "/HELPDIR", {{"", "/lib/wavelock/"}}},
                          {"WAVELOCK.WavelockCtrl.1", {{"", "Wavelock Control"}}},
                          {"WAVELOCK.WavelockCtrl.1/CLSID", {{"", controlId}}},
                          {"WAVELOCK.WavelockCtrl.1/Insertable", {}}}));
}

TEST_F(ModuleRegistration, UnregisteringLeavesWhatOthersEntered) {
  const RegistryTree others{
      {"Other.Class.1", {{"", "Other"}}},
      {"WAVELOCK.WavelockCtrl.10", {}},
      {"TypeLib/" + FormatIdentifier(kTypeLibraryId) + "/2.0", {{"", "A later version"}}},
  };
  registry.Change([&](RegistryTree& tree) { tree = others; });
  EXPECT_EQ(module.RegisterServer(), Result::kDone);
  const auto once = registry.Read();
  EXPECT_EQ(module.RegisterServer(), Result::kDone);
  EXPECT_EQ(registry.Read(), once);
  EXPECT_EQ(module.UnregisterServer(), Result::kDone);
  EXPECT_EQ(registry.Read(), others);
  EXPECT_EQ(module.UnregisterServer(), Result::kDone);
}

TEST_F(ModuleRegistration, ResultTellsWhatCouldNotBeEntered) {
  const std::uint32_t results[][2] = {{0x80040200, 0}, {0x80040201, 0}, {0, 0x80040200}, {0, 0x80040201}};
  for (int failure = 0; const auto& [registered, unregistered] : results) {
    FailingRegistry failing(failure++);
    CControlModule server(host.host, failing, kPath);
    EXPECT_EQ(static_cast<std::uint32_t>(server.RegisterServer()), registered);
    EXPECT_EQ(failing.Read()->empty(), failure == 1);
    EXPECT_EQ(static_cast<std::uint32_t>(server.UnregisterServer()), unregistered);
  }
}

TEST_F(ModuleRegistration, FileRegistryKeepsTheTreeAndGoesWhenItIsEmpty) {
  const TemporaryFolder folder;
  PosixFiles files;
  FileRegistry file(files, folder.Path("deep/registry.ini"));
  EXPECT_TRUE(file.Read()->empty());
  const RegistryTree tree{{"A/{1}", {{"", " [=;#\\x41"}, {"Name = x", "line\nline"}, {"@x", ""}}},
                          {"B without values", {}}};
  ASSERT_TRUE(file.Change([&](RegistryTree& t) { t = tree; }));
  EXPECT_EQ(FileRegistry(files, folder.Path("deep/registry.ini")).Read(), tree);
  ASSERT_TRUE(file.Change([](RegistryTree& t) {
    RemoveKey(t, "a");
    RemoveKey(t, "b WITHOUT values");
  }));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path("deep")));
}

TEST_F(ModuleClasses, FactoriesMakeTheirClassesAlone) {
  Reference<ClassFactory> factory;
  EXPECT_EQ(module.GetClassObject(Identifier(), ClassFactory::kId, factory.Receive()),
            Result::kClassNotAvailable);
  EXPECT_EQ(module.GetClassObject(kControlClassId, Dispatch::kId, factory.Receive()), Result::kNoInterface);
  EXPECT_EQ(module.GetClassObject(kControlClassId, ClassFactory::kId, nullptr), Result::kNullPointer);
  ASSERT_EQ(module.GetClassObject(kControlClassId, ClassFactory::kId, factory.Receive()), Result::kDone);
  Reference<PropertyPage> page;
  EXPECT_EQ(factory->CreateInstance(PropertyPage::kId, page.Receive()), Result::kNoInterface);
  EXPECT_FALSE(page);
  EXPECT_EQ(factory->CreateInstance(PropertyPage::kId, nullptr), Result::kNullPointer);
}

TEST_F(ModuleClasses, ModuleStaysWhileAnythingOfItIsHeld) {
  EXPECT_EQ(module.CanUnloadNow(), Result::kDone);
  Reference<ClassFactory> factory;
  ASSERT_EQ(module.GetClassObject(kControlClassId, ClassFactory::kId, factory.Receive()), Result::kDone);
  EXPECT_EQ(module.CanUnloadNow(), Result::kNo);
  Reference<Dispatch> control;
  ASSERT_EQ(factory->CreateInstance(kDispatchId, control.Receive()), Result::kDone);
  factory->LockServer(true);
  {
    const Reference<ClassFactory> last = std::move(factory);
    last->LockServer(false);
  }
  EXPECT_EQ(module.CanUnloadNow(), Result::kNo);
  auto embedded = control.As<EmbeddedControl>();
  EXPECT_TRUE(embedded);
  EXPECT_FALSE(control.As<PropertyPage>());
  control.Reset();
  EXPECT_EQ(embedded->Flags() & 0x10, 0x10u);
  EXPECT_EQ(module.CanUnloadNow(), Result::kNo);
  embedded.Reset();
  EXPECT_EQ(module.CanUnloadNow(), Result::kDone);
}

// A client's way through the real module, with an in-process registry in place of the user's.
class LoadedModuleTest : public testing::Test {
 protected:
  // The module's own host looks for the user's files in a folder of the test. It stays at that for whatever
  // else this process runs: no test is to meet the user's own files.
  LoadedModuleTest() {
    setenv("XDG_CONFIG_HOME", user.Path().c_str(), 1);
    CControlModule(test.host, registry, WAVELOCK_CONTROL_MODULE).RegisterServer();
  }

  const TemporaryFolder user;
  TestHost test;
  MemoryRegistry registry;
  SystemLibraries libraries;
  ComponentLoader loader{registry, libraries};
};

TEST_F(LoadedModuleTest, ClientFindsTheControlByItsProgrammaticId) {
  Reference<Dispatch> control;
  ASSERT_EQ(loader.Create("wavelock.wavelockctrl.1", control), Result::kDone);
  std::int32_t id = 0;
  EXPECT_EQ(control->GetIdOfName("getrate", &id), Result::kDone);
  EXPECT_EQ(id, 6);
  EXPECT_EQ(control->GetIdOfName("Rate", &id), Result::kUnknownName);
  EXPECT_EQ(control->GetIdOfName(nullptr, &id), Result::kNullPointer);
  Variant rate;
  EXPECT_EQ(control->Invoke(id, nullptr, 0, &rate, nullptr), Result::kDone);
  EXPECT_EQ(rate.I4(), 1000);
  EXPECT_EQ(control->Invoke(id, nullptr, 1, &rate, nullptr), Result::kNullPointer);
  Variant name;
  EXPECT_EQ(control->Invoke(10, nullptr, 0, &name, nullptr), Result::kDone);
  EXPECT_FALSE(name.IsNullString());  // freed here, made there
  EXPECT_STREQ(control->GetTypeInfo()->name, "_DWavelock");
  EXPECT_EQ(*control.As<EmbeddedControl>()->PropertyPage(0), kPropertyPageClassId);
  EXPECT_EQ(control.As<EmbeddedControl>()->PropertyPage(1), nullptr);
  loader.FreeUnusedModules();  // stays, since the control lives
  EXPECT_EQ(control->Invoke(6, nullptr, 0, &rate, nullptr), Result::kDone);
}

TEST_F(LoadedModuleTest, ClientIsToldWhyThereIsNoObject) {
  Reference<Dispatch> control;
  EXPECT_EQ(loader.Create("WAVELOCK.WavelockCtrl.2", control), Result::kUnknownProgrammaticId);
  registry.Change([](RegistryTree& tree) { tree["Lost.1/CLSID"][""] = FormatIdentifier(Identifier()); });
  EXPECT_EQ(loader.Create("Lost.1", control), Result::kClassNotRegistered);
  const std::string server = "CLSID/" + FormatIdentifier(Identifier()) + "/InprocServer32";
  registry.Change([&](RegistryTree& tree) { tree[server][""] = "/nowhere/module.so"; });
  EXPECT_EQ(loader.Create("Lost.1", control), Result::kModuleNotFound);
  EXPECT_THAT(loader.ErrorText(), testing::HasSubstr("/nowhere/module.so"));
  registry.Change([&](RegistryTree& tree) { tree[server][""] = WAVELOCK_CONTROL_MODULE; });
  EXPECT_EQ(loader.Create("Lost.1", control), Result::kClassNotAvailable);
  EXPECT_FALSE(control);
}

}  // namespace
}  // namespace wavelock

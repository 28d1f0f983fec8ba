// The module around the control: its classes, and how they are entered into a registry. The functions that a
// shared library exports (module_exports.cpp) call one of these.
#pragma once

#include <array>
#include <span>
#include <string>

#include "wavelock/platform/component_object.h"
#include "wavelock/platform/host.h"
#include "wavelock/platform/registry.h"

namespace wavelock {

struct ModuleClass {
  Identifier id;
  const char* programmaticId;
  Result (*make)(const Identifier& interfaceId, void** object, ModuleUse& use, Host& host) noexcept;
};

// Makes objects of one class. Lives as long as its module; those who hold it keep the module loaded.
class CObjectFactory final : public ClassFactory {
 public:
  CObjectFactory(const ModuleClass& madeClass, ModuleUse& use, Host& host)
      : class_(madeClass), use_(use), host_(host) {}

  Result QueryInterface(const Identifier& interfaceId, void** object) noexcept override;
  std::uint32_t AddRef() noexcept override;
  std::uint32_t Release() noexcept override;
  Result CreateInstance(const Identifier& interfaceId, void** object) noexcept override;
  Result LockServer(bool lock) noexcept override;

  const ModuleClass& MadeClass() const { return class_; }

 private:
  const ModuleClass& class_;
  ModuleUse& use_;
  Host& host_;
};

class CControlModule {
 public:
  // Borrows host and registry. `path` is the file that clients will load.
  CControlModule(Host& host, Registry& registry, std::string path);

  // The control first, then its property page.
  static std::span<const ModuleClass> Classes() noexcept;

  // kDone when nobody holds an object, a factory or a lock, else kNo.
  Result CanUnloadNow() const noexcept;

  // The factory of a class. `*object` is null after a failure.
  Result GetClassObject(const Identifier& classId, const Identifier& interfaceId, void** object) noexcept;

  // Enters first the type library, then the classes: kTypeLibraryFailed or kClassFailed when the registry
  // could not be changed for them. What came before the failure stays.
  Result RegisterServer() noexcept;

  // Takes out in the same order, with the same results; what was never entered counts as taken out.
  Result UnregisterServer() noexcept;

 private:
  using ChangeFunction = void(RegistryTree& tree, const std::string& path);
  Result Enter(ChangeFunction* typeLibrary, ChangeFunction* classes) noexcept;
  bool Change(ChangeFunction* change) noexcept;

  Registry& registry_;
  const std::string path_;
  ModuleUse use_;
  std::array<CObjectFactory, 2> factories_;  // one a class
};

}  // namespace wavelock

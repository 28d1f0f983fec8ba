#include "wavelock/control/module.h"

#include <utility>

#include "wavelock/control/control_object.h"
#include "wavelock/control/identifiers.h"
#include "wavelock/control/property_page.h"
#include "wavelock/control/registration.h"

namespace wavelock {

namespace {

template <class Object>
Result Make(const Identifier& interfaceId, void** object, ModuleUse& use, Host& host) noexcept {
  return MakeComponent<Object>(interfaceId, object, use, host);
}

constexpr ModuleClass kClasses[] = {
    {kControlClassId, kControlProgrammaticId, &Make<ControlObject>},
    {kPropertyPageClassId, kPropertyPageProgrammaticId, &Make<CWavelockPropPage>},
};

}  // namespace

// ---- factories

Result CObjectFactory::QueryInterface(const Identifier& interfaceId, void** object) noexcept {
  if (object == nullptr) return Result::kNullPointer;
  const bool isKnown = interfaceId == ClassFactory::kId || interfaceId == Component::kId;
  *object = isKnown ? static_cast<ClassFactory*>(this) : nullptr;
  if (!isKnown) return Result::kNoInterface;
  AddRef();
  return Result::kDone;
}

std::uint32_t CObjectFactory::AddRef() noexcept {
  use_.Add();
  return use_.Count();
}

std::uint32_t CObjectFactory::Release() noexcept {
  use_.Remove();
  return use_.Count();
}

Result CObjectFactory::CreateInstance(const Identifier& interfaceId, void** object) noexcept {
  return class_.make(interfaceId, object, use_, host_);
}

Result CObjectFactory::LockServer(bool lock) noexcept {
  lock ? use_.Add() : use_.Remove();
  return Result::kDone;
}

// ---- the module

CControlModule::CControlModule(Host& host, Registry& registry, std::string path)
    : registry_(registry),
      path_(std::move(path)),
      factories_{CObjectFactory(kClasses[0], use_, host), CObjectFactory(kClasses[1], use_, host)} {}

std::span<const ModuleClass> CControlModule::Classes() noexcept {
  return kClasses;
}

Result CControlModule::CanUnloadNow() const noexcept {
  return use_.Count() == 0 ? Result::kDone : Result::kNo;
}

Result CControlModule::GetClassObject(const Identifier& classId, const Identifier& interfaceId,
                                      void** object) noexcept {
  if (object == nullptr) return Result::kNullPointer;
  *object = nullptr;
  for (CObjectFactory& factory : factories_) {
    if (factory.MadeClass().id == classId) return factory.QueryInterface(interfaceId, object);
  }
  return Result::kClassNotAvailable;
}

Result CControlModule::RegisterServer() noexcept {
  return Enter(&EnterTypeLibrary, &EnterClasses);
}

Result CControlModule::UnregisterServer() noexcept {
  return Enter(&RemoveTypeLibrary, &RemoveClasses);
}

Result CControlModule::Enter(ChangeFunction* typeLibrary, ChangeFunction* classes) noexcept {
  if (!Change(typeLibrary)) return Result::kTypeLibraryFailed;
  return Change(classes) ? Result::kDone : Result::kClassFailed;
}

bool CControlModule::Change(ChangeFunction* change) noexcept {
  try {
    return registry_.Change([&](RegistryTree& tree) { change(tree, path_); });
  } catch (...) {
    return false;
  }
}

}  // namespace wavelock

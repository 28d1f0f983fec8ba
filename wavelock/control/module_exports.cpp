// What the shared library exports: the functions by which clients find its classes and by which it enters
// itself into the user's registry.
#include "wavelock/control/module.h"
#include "wavelock/platform/file_registry.h"
#include "wavelock/platform/shared_library.h"

#if defined(_WIN32)
#define WAVELOCK_EXPORT extern "C" __declspec(dllexport)
#else
#define WAVELOCK_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

using wavelock::CControlModule;
using wavelock::FileRegistry;
using wavelock::Host;
using wavelock::Identifier;
using wavelock::Result;

CControlModule& Module() {
  static FileRegistry registry(Host::Default().files);
  static const char address = 0;  // anything that lies in this library
  static CControlModule module(Host::Default(), registry, wavelock::LibraryPathOf(&address));
  return module;
}

}  // namespace

WAVELOCK_EXPORT Result DllCanUnloadNow() {
  return Module().CanUnloadNow();
}

WAVELOCK_EXPORT Result DllGetClassObject(const Identifier* classId, const Identifier* interfaceId,
                                         void** object) {
  if (classId == nullptr || interfaceId == nullptr) return Result::kNullPointer;
  return Module().GetClassObject(*classId, *interfaceId, object);
}

WAVELOCK_EXPORT Result DllRegisterServer() {
  return Module().RegisterServer();
}

WAVELOCK_EXPORT Result DllUnregisterServer() {
  return Module().UnregisterServer();
}

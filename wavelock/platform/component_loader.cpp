#include "wavelock/platform/component_loader.h"

namespace wavelock {
namespace {

template <class Function>
Function* FindFunction(SharedLibrary& module, const char* name) {
  return reinterpret_cast<Function*>(module.Find(name));
}

bool CanUnload(SharedLibrary& module) {
  auto* const canUnloadNow = FindFunction<CanUnloadNowFunction>(module, kCanUnloadNow);
  return canUnloadNow != nullptr && canUnloadNow() == Result::kDone;
}

Result CallRegistration(LibraryLoader& libraries, const std::string& path, const char* function,
                        std::string* errorText) {
  const auto module = libraries.Load(path, errorText);
  if (!module) return Result::kModuleNotFound;
  auto* const registration = FindFunction<RegisterServerFunction>(*module, function);
  return registration != nullptr ? registration() : Result::kNoModule;
}

}  // namespace

ComponentLoader::ComponentLoader(Registry& registry, LibraryLoader& libraries)
    : registry_(registry), libraries_(libraries) {}

ComponentLoader::~ComponentLoader() {
  FreeUnusedModules();
  for (auto& [path, module] : modules_) static_cast<void>(module.release());
}

Result ComponentLoader::FindClass(std::string_view programmaticId, Identifier* classId) {
  if (classId == nullptr) return Result::kNullPointer;
  const auto tree = registry_.Read();
  const auto text = tree ? FindValue(*tree, std::string(programmaticId) + "/CLSID") : std::nullopt;
  const auto found = text ? ParseIdentifier(*text) : std::nullopt;
  if (!found) return Result::kUnknownProgrammaticId;
  *classId = *found;
  return Result::kDone;
}

Result ComponentLoader::GetClassObject(const Identifier& classId, const Identifier& interfaceId,
                                       void** object) {
  if (object == nullptr) return Result::kNullPointer;
  *object = nullptr;
  SharedLibrary* module = nullptr;
  const Result found = FindModule(classId, &module);
  if (found != Result::kDone) return found;
  auto* const getClassObject = FindFunction<GetClassObjectFunction>(*module, kGetClassObject);
  return getClassObject != nullptr ? getClassObject(&classId, &interfaceId, object) : Result::kNoModule;
}

Result ComponentLoader::FindModule(const Identifier& classId, SharedLibrary** module) {
  const auto tree = registry_.Read();
  const auto path =
      tree ? FindValue(*tree, "CLSID/" + FormatIdentifier(classId) + "/InprocServer32") : std::nullopt;
  if (!path) return Result::kClassNotRegistered;
  auto found = modules_.find(*path);
  if (found == modules_.end()) {
    auto loaded = libraries_.Load(*path, &errorText_);
    if (!loaded) return Result::kModuleNotFound;
    found = modules_.emplace(*path, std::move(loaded)).first;
  }
  *module = found->second.get();
  return Result::kDone;
}

Result ComponentLoader::CreateInstance(std::string_view programmaticId, const Identifier& interfaceId,
                                       void** object) {
  Identifier classId;
  Result result = FindClass(programmaticId, &classId);
  if (result != Result::kDone) return result;
  Reference<ClassFactory> factory;
  result = GetClassObject(classId, ClassFactory::kId, factory.Receive());
  return result == Result::kDone ? factory->CreateInstance(interfaceId, object) : result;
}

void ComponentLoader::FreeUnusedModules() {
  std::erase_if(modules_, [](const auto& module) { return CanUnload(*module.second); });
}

Result RegisterModule(LibraryLoader& libraries, const std::string& path, std::string* errorText) {
  return CallRegistration(libraries, path, kRegisterServer, errorText);
}

Result UnregisterModule(LibraryLoader& libraries, const std::string& path, std::string* errorText) {
  return CallRegistration(libraries, path, kUnregisterServer, errorText);
}

}  // namespace wavelock

// How a client comes by an object: the class behind a programmatic id, the module that has it, an object of
// it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "wavelock/platform/component.h"
#include "wavelock/platform/registry.h"
#include "wavelock/platform/shared_library.h"

namespace wavelock {

// Keeps the modules that it loaded. One loader serves one thread.
class ComponentLoader {
 public:
  // Borrows both.
  ComponentLoader(Registry& registry, LibraryLoader& libraries);
  ComponentLoader(const ComponentLoader&) = delete;
  ComponentLoader& operator=(const ComponentLoader&) = delete;

  // Unloads the modules of which nothing lives; the others stay as long as the program.
  ~ComponentLoader();

  // Names are told from each other without regard to case.
  Result FindClass(std::string_view programmaticId, Identifier* classId);

  // The class by one of its interfaces, usually its factory. `*object` is null after a failure.
  Result GetClassObject(const Identifier& classId, const Identifier& interfaceId, void** object);

  // A new object of the class.
  template <class Interface>
  Result Create(std::string_view programmaticId, Reference<Interface>& object) {
    return CreateInstance(programmaticId, Interface::kId, object.Receive());
  }

  void FreeUnusedModules();

  // The system's words about the last module that could not be loaded.
  const std::string& ErrorText() const { return errorText_; }

 private:
  Result CreateInstance(std::string_view programmaticId, const Identifier& interfaceId, void** object);
  Result FindModule(const Identifier& classId, SharedLibrary** module);

  Registry& registry_;
  LibraryLoader& libraries_;
  std::map<std::string, std::unique_ptr<SharedLibrary>> modules_;  // by path
  std::string errorText_;
};

// Has a module enter its classes into the user's registry, or take them out again. What the module answers,
// or why it could not be asked; `errorText`, where given, then takes the system's words.
Result RegisterModule(LibraryLoader& libraries, const std::string& path, std::string* errorText = nullptr);
Result UnregisterModule(LibraryLoader& libraries, const std::string& path, std::string* errorText = nullptr);

}  // namespace wavelock

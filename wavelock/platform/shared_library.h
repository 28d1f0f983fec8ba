// Code that is loaded while the program runs.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace wavelock {

// Destruction unloads it; nothing of it may be in use then.
class SharedLibrary {
 public:
  SharedLibrary() = default;
  SharedLibrary(const SharedLibrary&) = delete;
  SharedLibrary& operator=(const SharedLibrary&) = delete;
  virtual ~SharedLibrary() = default;

  // The exported symbol of that name, null when there is none.
  virtual void* Find(const char* name) = 0;
};

class LibraryLoader {
 public:
  virtual ~LibraryLoader() = default;

  // Null when the file cannot be loaded; `errorText`, where given, then takes the system's words for it. The
  // path counts as it stands: no folders are searched.
  virtual std::unique_ptr<SharedLibrary> Load(const std::string& path, std::string* errorText = nullptr) = 0;
};

// Those of the operating system.
class SystemLibraries : public LibraryLoader {
 public:
  std::unique_ptr<SharedLibrary> Load(const std::string& path, std::string* errorText = nullptr) override;
};

// The full path of the library or program that holds an address; empty where the system does not tell.
std::string LibraryPathOf(const void* address);

// What a type library calls the platform that a module was built for.
std::string_view ModulePlatform();

}  // namespace wavelock

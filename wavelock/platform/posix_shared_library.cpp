// Shared libraries of a POSIX system.
#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "wavelock/platform/shared_library.h"

namespace wavelock {
namespace {

class PosixSharedLibrary : public SharedLibrary {
 public:
  explicit PosixSharedLibrary(void* handle) : handle_(handle) {}
  ~PosixSharedLibrary() override { dlclose(handle_); }

  void* Find(const char* name) override { return dlsym(handle_, name); }

 private:
  void* const handle_;
};

// A bare name would be looked for in the system's folders.
std::string FullPath(const std::string& path) {
  std::error_code unknown;
  const auto full = std::filesystem::absolute(path, unknown);
  return unknown ? path : full.string();
}

}  // namespace

std::unique_ptr<SharedLibrary> SystemLibraries::Load(const std::string& path, std::string* errorText) {
  void* const handle = dlopen(FullPath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle != nullptr) return std::make_unique<PosixSharedLibrary>(handle);
  if (const char* const words = dlerror(); errorText != nullptr && words != nullptr) *errorText = words;
  return nullptr;
}

std::string LibraryPathOf(const void* address) {
  Dl_info library;
  if (dladdr(address, &library) == 0 || library.dli_fname == nullptr) return {};
  return FullPath(library.dli_fname);
}

std::string_view ModulePlatform() {
  return "posix";
}

}  // namespace wavelock

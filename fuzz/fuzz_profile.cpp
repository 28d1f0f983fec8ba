// The text of a profile or of a registry, which a person may have edited.
#include <string>

#include "fuzz/fuzz_host.h"
#include "wavelock/platform/file_registry.h"
#include "wavelock/platform/profile_text.h"

namespace wavelock {
namespace {

// Any text can be a section, a key and a value.
void StoreAndFind(std::string_view text, const std::string& name, const std::string& value) {
  if (FindInProfile(StoreInProfile(text, name, name, value), name, name) != value) __builtin_trap();
}

}  // namespace
}  // namespace wavelock

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  FuzzHost fuzz;
  const std::string text(reinterpret_cast<const char*>(data), size);
  fuzz.memory.Put("/registry", InputBytes(data, size));
  const auto tree = FileRegistry(fuzz.memory, "/registry").Read();
  if (tree) FindValue(*tree, "CLSID");
  ReadProfile(
      text, [](const std::string&) {}, [](const std::string&, const std::string&) {});
  StoreAndFind(text, "name", text);
  StoreAndFind("", text.substr(0, size / 2), text.substr(size / 2));
  StoreAndFind(text, text.substr(0, size / 2), text.substr(size / 2));
  return 0;
}

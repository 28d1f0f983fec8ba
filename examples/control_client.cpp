// A client of the control: finds it by its programmatic id, has its module loaded, and calls its methods by
// name. It knows no class of the library besides those of the component layer.
//
//   control_client FILE
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "wavelock/control/dispatch.h"
#include "wavelock/platform/component_loader.h"
#include "wavelock/platform/file_registry.h"
#include "wavelock/platform/host.h"

using wavelock::ComponentLoader;
using wavelock::Dispatch;
using wavelock::FileRegistry;
using wavelock::Reference;
using wavelock::Result;
using wavelock::Variant;

namespace {

// The control as this client sees it. A call that the control refuses is a mistake of the client's, and tells
// itself by a number.
class Control {
 public:
  explicit Control(Reference<Dispatch> object) : object_(std::move(object)) {}

  template <class... Arguments>
  Variant Call(const char* method, Arguments... values) {
    const std::array<Variant, sizeof...(values)> arguments{Variant(std::move(values))...};
    std::int32_t id = 0;
    Variant answer;
    Result result = object_->GetIdOfName(method, &id);
    if (result == Result::kDone) {
      result = object_->Invoke(id, arguments.data(), static_cast<std::uint32_t>(arguments.size()), &answer,
                               nullptr);
    }
    if (result != Result::kDone) std::fprintf(stderr, "%s: 0x%08X\n", method, static_cast<unsigned>(result));
    return answer;
  }

 private:
  Reference<Dispatch> object_;
};

// Results come back as values; what a method stores in the client's variables goes by reference.
void PrintEvents(Control& control) {
  const std::int32_t count = control.Call("GetEventCount").I4();
  for (std::int32_t i = 0; i < count; ++i) {
    std::int32_t stimulus = 0;
    std::int32_t keyboard = 0;
    std::int32_t keypad = 0;
    std::int32_t point = 0;
    control.Call("GetEvent", Variant::ByReference(&i), Variant::ByReference(&stimulus),
                 Variant::ByReference(&keyboard), Variant::ByReference(&keypad),
                 Variant::ByReference(&point));
    std::printf("event %d at %d: stimulus %d, key %d, pad %d\n", i, point, stimulus, keyboard, keypad);
  }
}

// A block goes with its size in bytes, which must be exactly what the range needs.
void PrintFirstSample(Control& control) {
  std::vector<float> sample(static_cast<std::size_t>(control.Call("GetNumChannels").I2()));
  const auto bytes = static_cast<std::int32_t>(sample.size() * sizeof(float));
  if (!control.Call("GetContinuousFloatBlock", 0, 1, Variant::Block(std::span(sample)), bytes).Bool()) return;
  for (const float microvolts : sample) std::printf("%.3f uV\n", static_cast<double>(microvolts));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: control_client FILE\n", stderr);
    return 2;
  }
  FileRegistry registry(wavelock::Host::Default().files);  // the user's
  wavelock::SystemLibraries libraries;
  ComponentLoader loader(registry, libraries);  // outlives the objects that it made
  Reference<Dispatch> object;
  const Result created = loader.Create("WAVELOCK.WavelockCtrl.1", object);
  if (created != Result::kDone) {
    std::fprintf(stderr, "no control (0x%08X) %s\n", static_cast<unsigned>(created),
                 loader.ErrorText().c_str());
    return 1;
  }

  Control control(std::move(object));
  if (!control.Call("OpenInputDataFile", argv[1]).Bool()) return 1;
  std::printf("%s: %d channels, %d Hz\n", std::string(control.Call("GetFileName").Text()).c_str(),
              int{control.Call("GetNumChannels").I2()}, control.Call("GetRate").I4());
  PrintEvents(control);
  PrintFirstSample(control);
  control.Call("CloseInputDataFile");
}

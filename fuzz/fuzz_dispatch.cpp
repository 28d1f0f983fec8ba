// A client of the control who calls its methods in any order with any arguments. An input is a row of calls;
// among the files that it may open are its own bytes.
#include <memory>
#include <string>
#include <vector>

#include "fuzz/fuzz_host.h"
#include "tests/support/recording_builder.h"
#include "wavelock/control/wavelock_dispatch.h"

namespace wavelock {
namespace {

constexpr int kMostCalls = 50;

const char* const kPaths[] = {"continuous.rec", "epoched.rec", "input.rec", ""};

RecordingBuilder::Bytes Continuous() {
  return RecordingBuilder().Channels(2).Samples({1, 2, 3, 4, 5, 6}).Events({{.stimType = 1}}).Build();
}

RecordingBuilder::Bytes Epoched() {
  return RecordingBuilder().Epoched().Channels(2).Points(2).Epochs({{.samples = {1, 2, 3, 4}}}).Build();
}

// Variables of a client, each in memory of its own, so that a byte written too far shows.
class Variables {
 public:
  template <class T>
  std::span<T> Make(std::size_t count) {
    blocks_.push_back(std::make_unique<std::byte[]>(count * sizeof(T)));
    return {reinterpret_cast<T*>(blocks_.back().get()), count};
  }

 private:
  std::vector<std::unique_ptr<std::byte[]>> blocks_;
};

template <class T>
Variant Reference(InputReader& input, Variables& variables) {
  const auto count = input.Take<std::uint8_t>();
  if (count == 0) return Variant::ByReference<T>(nullptr);
  const std::span<T> made = variables.Make<T>(count);
  made[0] = static_cast<T>(input.Take<std::int8_t>());
  return count == 1 ? Variant::ByReference(made.data()) : Variant::Block(made);
}

Variant Argument(InputReader& input, Variables& variables) {
  switch (input.Take<std::uint8_t>() % 10) {
    case 0:
      return Variant();
    case 1:
      return Variant(input.Take<std::int16_t>());
    case 2:
      return Variant(input.Take<std::int32_t>());
    case 3:
      return Variant(std::int32_t{input.Take<std::int8_t>()});
    case 4:
      return Variant(input.Take<float>());
    case 5:
      return Variant(kPaths[input.Take<std::uint8_t>() % std::size(kPaths)]);
    case 6:
      return Variant::NullString();
    case 7:
      return Reference<std::int16_t>(input, variables);
    case 8:
      return Reference<std::int32_t>(input, variables);
    default:
      return Reference<float>(input, variables);
  }
}

void Call(CWavelockCtrl& control, InputReader& input) {
  Variables variables;
  std::vector<Variant> arguments;
  const std::int32_t id = input.Take<std::int8_t>();
  const auto count = input.Take<std::uint8_t>() % (kMostParameters + 2);
  for (std::size_t i = 0; i < count; ++i) arguments.push_back(Argument(input, variables));
  Variant result;
  std::uint32_t badArgument = 0;
  InvokeMethod(control, id, arguments, &result, &badArgument);
}

}  // namespace
}  // namespace wavelock

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  static const RecordingBuilder::Bytes continuous = Continuous();
  static const RecordingBuilder::Bytes epoched = Epoched();
  FuzzHost fuzz;
  fuzz.memory.Put(kPaths[0], continuous);
  fuzz.memory.Put(kPaths[1], epoched);
  fuzz.memory.Put(kPaths[2], InputBytes(data, size));
  CWavelockCtrl control(fuzz.host);
  InputReader input(InputBytes(data, size));
  for (int i = 0; i < kMostCalls && !input.IsAtEnd(); ++i) Call(control, input);
  return 0;
}

// What a client pays for calling the control by dispatch.
#include <array>
#include <vector>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/control/wavelock_dispatch.h"

namespace wavelock::bench {
namespace {

using benchmark::State;

constexpr int kEvents = 1000;
constexpr int kCalls = 1'000'000;
constexpr std::int32_t kBlockSamples = 3;  // all that the recording has, of one channel

struct OpenedControl {
  OpenedControl() {
    if (!control.OpenInputDataFile(EventsPath(3, kEvents))) std::abort();
  }

  // As an interface between programs passes it: by id, every value checked.
  template <std::size_t kCount>
  void Invoke(std::int32_t id, const std::array<Variant, kCount>& arguments) {
    Variant result;
    std::uint32_t bad = 0;
    if (InvokeMethod(control, id, arguments, &result, &bad) != Result::kDone || !result.Bool()) std::abort();
  }

  CWavelockCtrl control;
};

// A call is too short for a benchmark of its own: one iteration is a million.
template <class Call>
void Repeat(State& state, Call call) {
  OpenedControl opened;
  for (auto _ : state) {
    for (std::int32_t i = 0; i < kCalls; ++i) call(opened, i % kEvents);
  }
}

void GetEvent(OpenedControl& opened, std::int32_t index) {
  std::int32_t stimulus = 0, keyboard = 0, keypad = 0, point = 0;
  if (!opened.control.GetEvent(&index, &stimulus, &keyboard, &keypad, &point)) std::abort();
  benchmark::DoNotOptimize(point);
}

void GetEventByDispatch(OpenedControl& opened, std::int32_t index) {
  static const std::int32_t id = *FindMethodId("GetEvent");
  std::int32_t stimulus = 0, keyboard = 0, keypad = 0, point = 0;
  opened.Invoke(id, std::array{Variant::ByReference(&index), Variant::ByReference(&stimulus),
                               Variant::ByReference(&keyboard), Variant::ByReference(&keypad),
                               Variant::ByReference(&point)});
  benchmark::DoNotOptimize(point);
}

void GetBlock(OpenedControl& opened, std::int32_t) {
  std::array<float, kBlockSamples> block;
  if (!opened.control.GetContinuousFloatBlock(0, kBlockSamples, block.data(), sizeof block)) std::abort();
  benchmark::DoNotOptimize(block);
}

void GetBlockByDispatch(OpenedControl& opened, std::int32_t) {
  static const std::int32_t id = *FindMethodId("GetContinuousFloatBlock");
  std::array<float, kBlockSamples> block;
  opened.Invoke(id,
                std::array{Variant(std::int32_t{0}), Variant(kBlockSamples), Variant::Block(std::span(block)),
                           Variant(static_cast<std::int32_t>(sizeof block))});
  benchmark::DoNotOptimize(block);
}

}  // namespace

std::vector<Ratio> RegisterControl() {
  Add("control/event/direct", [](State& s) { Repeat(s, GetEvent); });
  Add("control/event/dispatch", [](State& s) { Repeat(s, GetEventByDispatch); });
  Add("control/block/direct", [](State& s) { Repeat(s, GetBlock); });
  Add("control/block/dispatch", [](State& s) { Repeat(s, GetBlockByDispatch); });
  AddFixed("1 us a call", [] { return kCalls * 1e-6; });
  return {
      {"GetEvent by dispatch, beside the direct call and 1 us",
       "control/event/dispatch",
       {"control/event/direct", "1 us a call"},
       1},
      {"a block by dispatch, beside the direct call and 1 us",
       "control/block/dispatch",
       {"control/block/direct", "1 us a call"},
       1},
  };
}

}  // namespace wavelock::bench

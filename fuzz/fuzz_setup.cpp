// A setup file: loaded, asked for all that it works out, copied, written, and loaded from what was written.
#include <string>

#include "fuzz/fuzz_host.h"
#include "wavelock/setup/setup.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

void WorkOut(CSetup& setup) {
  setup.GetPoints();
  for (const double seconds : {-1.0, 0.0, 1e300}) setup.PointOfTime(seconds);
  for (const std::int64_t point : {std::int64_t{-1}, std::int64_t{1}, std::int64_t{1} << 40})
    setup.TimeOfPoint(point);
  setup.ZeroPoint();
  setup.AxisEnd();
  setup.UpdateBins();
  setup.UpdateTimeAxis();
  setup.KChannel();
  setup.PositionsSpread();
  setup.AdjustSlots(-100, 900, 1000);
  for (std::int32_t layout = -1; layout < 3; ++layout) setup.LayoutGrid(layout);
}

bool WriteTo(CSetup& setup, const std::string& name, Host& host) {
  CTffFile file(host);
  return file.Open(name, OpenMode::kCreate) && setup.Write(file);
}

// Loads what was written and writes it again until it stays as it is. Loads repair what is impossible, and
// take the same number for milliseconds as long as it is large: that may take some of them.
bool Settles(std::string name, FuzzHost& fuzz) {
  constexpr int kMostLoads = 20;
  for (int i = 0; i < kMostLoads; ++i) {
    CSetup setup(0, fuzz.host);
    setup.setupFileName = name;
    if (!setup.LoadFile()) return false;
    const std::string next = std::to_string(i) + ".ast";
    if (!WriteTo(setup, next, fuzz.host)) return true;  // larger than any file may be
    if (fuzz.memory.Contents(name) == fuzz.memory.Contents(next)) return true;
    name = next;
  }
  return false;
}

}  // namespace
}  // namespace wavelock

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  FuzzHost fuzz;
  fuzz.memory.Put("input.ast", InputBytes(data, size));
  CSetup setup(0, fuzz.host);
  setup.setupFileName = "input.ast";
  const bool isLoaded = setup.LoadFile();
  WorkOut(setup);
  CSetup copy(setup);
  // A setup without channels is written without the record that every reader asks for.
  if (!isLoaded || copy.channelCount < 1 || !WriteTo(copy, "copy.ast", fuzz.host)) return 0;
  if (!Settles("copy.ast", fuzz)) __builtin_trap();
  return 0;
}

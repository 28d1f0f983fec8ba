// A setup file: loaded, asked for all that it works out, copied, written, and loaded from what was written.
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
  return file.Open(name, OpenMode::kCreate) && setup.Write(file) && file.IsWrittenWhole();
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
  CSetup again(0, fuzz.host);
  again.setupFileName = "copy.ast";
  if (!again.LoadFile()) __builtin_trap();  // what was written can be read
  if (!WriteTo(again, "again.ast", fuzz.host)) return 0;
  CSetup last(0, fuzz.host);
  last.setupFileName = "again.ast";
  if (!last.LoadFile() || !WriteTo(last, "last.ast", fuzz.host)) __builtin_trap();
  // All repairs were made by the first two loads: from here on every form is the same.
  if (fuzz.memory.Contents("again.ast") != fuzz.memory.Contents("last.ast")) __builtin_trap();
  return 0;
}

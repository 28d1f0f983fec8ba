// A file that is opened as a recording, read in every way, opened again and closed.
#include <string>

#include "fuzz/fuzz_host.h"
#include "tests/support/read_everything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  // The extension of a name can overrule the header; the last byte of the file picks one.
  const std::string names[] = {"input.rec", "input.avg", "input.raw"};
  const std::string& name = names[size != 0 ? data[size - 1] % std::size(names) : 0];
  FuzzHost fuzz;
  fuzz.memory.Put(name, InputBytes(data, size));
  CRecordingFile recording(0, fuzz.host);
  if (recording.OpenFile(name)) ReadEverything(recording);
  recording.CloseFile();
  ReadEverything(recording);
  return 0;
}

// The image of a header in its current form, with any bytes in it: told apart, translated to a setup, and
// made from that setup again.
#include <algorithm>
#include <memory>
#include <vector>

#include "fuzz/fuzz_host.h"
#include "wavelock/recording/recording_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  FuzzHost fuzz;
  CRecordingFile recording(0, fuzz.host);
  const auto image = std::make_unique<HeaderImage>();
  const std::size_t taken = std::min(size, sizeof(HeaderImage));
  if (taken != 0) std::memcpy(static_cast<void*>(image.get()), data, taken);
  recording.GetFileClass(image.get());
  recording.ClassifyHeader(image.get());
  recording.TranslateHeader(image.get(), recording.setup.get());
  std::vector<std::byte> made(static_cast<std::size_t>(recording.HeaderSize()));
  if (made.size() >= sizeof(RecordingHeader)) recording.FillHeader(recording.setup.get(), made.data());
  return 0;
}

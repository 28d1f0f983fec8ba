// A file that is opened, edited and saved, in its own place and as a copy: what was saved opens, and holds
// what the file held.
#include <string>
#include <vector>

#include "fuzz/fuzz_host.h"
#include "tests/support/read_everything.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

constexpr char kInput[] = "input.rec";
constexpr char kCopy[] = "copy.rec";

void Edit(CRecordingFile& recording, std::uint8_t choice) {
  if (choice % 2 != 0) recording.eventGroup.Append(EventRecord{});
  recording.eventGroup.RemoveDuplicates();  // as every open does
  if (choice % 4 > 1) recording.labelList.Add({"fuzz", choice});
  if (choice % 8 > 3) recording.setup->setupTitle = "fuzz";
}

// The stored integers of a continuous recording, without corrections.
std::vector<std::byte> StoredSamples(CRecordingFile& recording) {
  constexpr int kSkip = 1;
  const std::uint64_t samples = recording.GetContinuousSampleCount();
  const std::uint64_t bytes =
      samples * recording.rawHeader.header.channelCount * static_cast<std::uint64_t>(recording.sampleWidth);
  std::vector<std::byte> stored(samples < recording.fileSize ? static_cast<std::size_t>(bytes) : 0);
  if (!recording.ReadContinuousRaw(0, samples, stored.data(), static_cast<std::int32_t>(stored.size()), kSkip,
                                   kSkip))
    stored.clear();
  return stored;
}

// Ends the program when the file that was saved is not what it was saved from.
void Check(CRecordingFile& original, const std::string& path, FuzzHost& fuzz) {
  CRecordingFile saved(0, fuzz.host);
  if (!saved.OpenFile(path)) __builtin_trap();
  if (original.setup->dataKind == kContinuous) {
    if (saved.GetEventCount() != original.GetEventCount()) __builtin_trap();
    if (StoredSamples(saved) != StoredSamples(original)) __builtin_trap();
  }
  if (saved.GetEpochCount() != original.GetEpochCount()) __builtin_trap();
  ReadEverything(saved);
}

}  // namespace
}  // namespace wavelock

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  FuzzHost fuzz;
  fuzz.memory.Put(kInput, InputBytes(data, size));
  CRecordingFile recording(0, fuzz.host);
  if (!recording.OpenFile(kInput)) return 0;
  Edit(recording, size != 0 ? data[size - 1] : 0);
  if (recording.SaveCopy(kCopy)) Check(recording, kCopy, fuzz);
  const auto before = fuzz.memory.Contents(kInput);
  if (!recording.SaveAndClose(0)) {
    if (fuzz.memory.Contents(kInput) != before) __builtin_trap();
    ReadEverything(recording);
  }
  return 0;
}

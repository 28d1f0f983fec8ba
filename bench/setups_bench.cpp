// Opening recordings whose tail holds a large setup.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::bench {
namespace {

using benchmark::State;

constexpr std::int32_t kManyChannels = 512;

// An epoched recording without epochs.
std::string TailPath(int markers) {
  return MadeByLibrary("tail-" + std::to_string(markers) + ".rec", [=](CRecordingFile& recording) {
    CSetup& setup = *recording.GetSetup();
    setup.dataKind = kEpochs;
    setup.channelCount = kManyChannels;
    for (std::int32_t c = 0; c < kManyChannels; ++c) setup.ResetChannel(c);
    for (int i = 0; i < markers; ++i) {
      auto marker = std::make_unique<CMarker>();
      marker->SetName(std::to_string(i));
      marker->sampleIndex = i % setup.pointCount;
      recording.markerList.Add(std::move(marker));
    }
  });
}

// The same records, last first.
std::string ReversedTailPath(int markers) {
  const std::string source = TailPath(markers);
  const std::string path = source + ".reversed";
  if (std::filesystem::exists(path)) return path;
  std::filesystem::copy_file(source, path);
  Host& host = Host::Default();
  const std::unique_ptr<File> file = host.files.Open(path, OpenMode::kReadWrite);
  CRecordingFile recording(1);
  if (!file || !recording.OpenFile(path)) std::abort();
  CTffFile container(*file, recording.TailPosition());
  std::vector<CTffFile::Entry> entries = container.Entries();
  std::vector<std::vector<std::byte>> payloads;
  for (const CTffFile::Entry& entry : entries) {
    payloads.emplace_back(entry.record.length);
    file->SeekTo(entry.position + sizeof entry.record);
    if (!file->ReadExactly(payloads.back())) std::abort();
  }
  file->SeekTo(recording.TailPosition() + sizeof(TffHeader));
  for (std::size_t i = entries.size(); i-- > 0;) {
    const TffRecord& record = entries[i].record;
    if (!container.WriteSection(record.tag, record.length, payloads[i].data(), record.version)) std::abort();
  }
  return path;
}

void Open(State& state, const std::string& path, std::int32_t markers) {
  Warm(path);
  CRecordingFile recording(1);
  for (auto _ : state) {
    if (!recording.OpenFile(path) || recording.markerList.GetCount() != markers) std::abort();
    recording.CloseFile();
  }
}

}  // namespace

std::vector<Ratio> RegisterSetups() {
  Add("tail/10000 markers", [](State& s) { Open(s, TailPath(10000), 10000); });
  Add("tail/100000 markers", [](State& s) { Open(s, TailPath(100000), 100000); });
  Add("tail/10000 markers/reversed", [](State& s) { Open(s, ReversedTailPath(10000), 10000); });
  AddFixed("30 ms", [] { return 0.03; });
  return {
      {"512 channels and 10,000 markers, beside 30 ms", "tail/10000 markers", {"30 ms"}, 1},
      {"ten times the markers, beside 12 times the time", "tail/100000 markers",
       std::vector<std::string>(12, "tail/10000 markers"), 1},
      {"records in reverse order, beside twice the time",
       "tail/10000 markers/reversed",
       {"tail/10000 markers", "tail/10000 markers"},
       1},
  };
}

}  // namespace wavelock::bench

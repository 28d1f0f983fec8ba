// Saving: a recording made from floats, and one of an old layout brought to the current form.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::bench {
namespace {

using benchmark::State;

constexpr std::size_t kBlockValues = static_cast<std::size_t>(kRate) * kChannels;

std::string PathOf(const std::string& name) {
  return std::filesystem::path(RecordingPath(3, 2)).parent_path() / name;
}

void CreateAndAppend(State& state) {
  std::vector<float> block(kBlockValues);
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<float>(i % 2000) * 0.37F - 300;
  for (auto _ : state) {
    CRecordingFile recording(1);
    CSetup& setup = *recording.GetSetup();
    setup.channelCount = kChannels;
    for (std::int32_t c = 0; c < kChannels; ++c) setup.ResetChannel(c);
    setup.dataKind = kContinuous;
    if (!recording.CreateFile(PathOf("created.rec"), 2)) std::abort();
    for (std::uint64_t start = 0; start < SampleCount(); start += kRate) {
      if (!recording.AppendContinuousFloat(block.data(), kBlockValues * sizeof(float))) std::abort();
    }
  }
  std::filesystem::remove(PathOf("created.rec"));
}

void Write(State& state) {
  const std::vector<std::int16_t> block(kBlockValues, 7);
  const std::string path = PathOf("written");
  for (auto _ : state) {
    const int file = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    for (std::uint64_t start = 0; start < SampleCount(); start += kRate) {
      if (::write(file, block.data(), kBlockValues * 2) != static_cast<ssize_t>(kBlockValues * 2))
        std::abort();
    }
    ::close(file);
  }
  std::filesystem::remove(path);
}

void UpgradeBlocks(State& state) {
  Warm(RecordingPath(3, 2));
  for (auto _ : state) {
    CRecordingFile recording(1);
    if (!recording.OpenFile(RecordingPath(3, 2)) || !recording.SaveCopy(PathOf("upgraded.rec"))) std::abort();
  }
  std::filesystem::remove(PathOf("upgraded.rec"));
}

// The copy is brought to the medium, as an upgrade is.
void CopyFile(State& state) {
  Warm(RecordingPath(3, 2));
  const std::string command =
      "cp " + RecordingPath(3, 2) + " " + PathOf("copied") + " && sync " + PathOf("copied");
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) std::abort();
  }
  std::filesystem::remove(PathOf("copied"));
}

}  // namespace

std::vector<Ratio> RegisterSaving() {
  Add("create", CreateAndAppend);
  Add("write", Write);
  Add("upgrade", UpgradeBlocks);
  Add("cp", CopyFile);
  return {{"create and append floats, beside write", "create", {"write"}, 0.5},
          {"upgrade of layout 3, beside cp", "upgrade", {"cp"}, 0.5}};
}

}  // namespace wavelock::bench

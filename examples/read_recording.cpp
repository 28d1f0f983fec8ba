// A program with the library inside: opens a recording, tells what it is, and works out the mean of every
// channel.
//
//   read_recording FILE
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "wavelock/recording/recording_file.h"

using wavelock::CRecordingFile;
using wavelock::DataKind;

namespace {

// Sums of one block, sample-major: all channels of the first sample, then of the next.
void Add(const std::vector<float>& block, std::vector<double>& sums) {
  for (std::size_t i = 0; i < block.size(); ++i) sums[i % sums.size()] += block[i];
}

// Reads a second at a time into a buffer that is made once. The number of samples comes from the header and
// may be far too large in a damaged file, so it sizes no buffer.
bool SumContinuous(CRecordingFile& recording, std::vector<double>& sums, std::uint64_t& samples) {
  const auto second = static_cast<std::uint64_t>(std::max(1, recording.GetSetup()->sampleRate));
  std::vector<float> block;
  for (samples = 0; samples < recording.GetContinuousSampleCount(); samples += block.size() / sums.size()) {
    const std::uint64_t end = std::min(samples + second, recording.GetContinuousSampleCount());
    block.resize((end - samples) * sums.size());
    const auto bytes = static_cast<std::uint32_t>(block.size() * sizeof(float));
    if (!recording.ReadContinuousFloat(samples, end, block.data(), bytes, 0, 0)) return false;
    Add(block, sums);
  }
  return true;
}

bool SumEpochs(CRecordingFile& recording, std::vector<double>& sums, std::uint64_t& samples) {
  const auto points = static_cast<std::size_t>(recording.GetSetup()->pointCount);
  std::vector<float> block(points * sums.size());
  const auto bytes = static_cast<std::uint32_t>(block.size() * sizeof(float));
  for (std::uint32_t epoch = 0; epoch < recording.GetEpochCount(); ++epoch) {
    if (!recording.ReadEpochFloat(epoch, block.data(), bytes)) return false;
    Add(block, sums);
    samples += points;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: read_recording FILE\n", stderr);
    return 2;
  }
  constexpr int kSpeaks = 0;  // messages go to the modal interface: here, standard error
  CRecordingFile recording(kSpeaks);
  if (!recording.OpenFile(argv[1])) return 1;

  const auto channels = recording.GetSetup()->Channels();
  std::printf("%s: %zu channels, %d Hz, %d events, %u epochs\n", recording.GetFileName().c_str(),
              channels.size(), recording.GetSetup()->sampleRate, recording.GetEventCount(),
              static_cast<unsigned>(recording.GetEpochCount()));

  const int kind = recording.GetAcquisitionKind();
  std::vector<double> sums(channels.size());
  std::uint64_t samples = 0;
  const bool isRead = kind == DataKind::kContinuous ? SumContinuous(recording, sums, samples)
                      : kind == DataKind::kEpochs   ? SumEpochs(recording, sums, samples)
                                                    : false;
  if (!isRead || samples == 0) {
    std::fputs("no samples that could be read\n", stderr);
    return 1;
  }
  for (std::size_t c = 0; c < channels.size(); ++c) {
    std::printf("%s\t%.3f uV\n", std::string(channels[c].label.View()).c_str(),
                sums[c] / static_cast<double>(samples));
  }
}

#include "tests/support/delivered.h"

#include <cstddef>
#include <span>

namespace wavelock {
namespace {

template <class Range>
std::vector<std::byte> BytesIn(const Range& values) {
  const auto bytes = std::as_bytes(std::span(values));
  return {bytes.begin(), bytes.end()};
}

void AddContinuous(CRecordingFile& recording, Delivered& all) {
  constexpr int kSkip = 1;
  const std::uint64_t samples = recording.GetContinuousSampleCount();
  if (samples > recording.fileSize) return;  // a damaged header may tell of any number
  const std::size_t values = samples * recording.rawHeader.header.channelCount;
  std::vector<std::byte> raw(values * static_cast<std::size_t>(recording.sampleWidth));
  std::vector<float> microvolts(values);
  const auto bytes = static_cast<std::int32_t>(raw.size());
  if (recording.ReadContinuousRaw(0, samples, raw.data(), bytes, kSkip, kSkip)) all["samples"] = raw;
  if (recording.ReadContinuousFloat(0, samples, microvolts.data(), static_cast<std::uint32_t>(values * 4), 0,
                                    0))
    all["microvolts"] = BytesIn(microvolts);
  all["events"] = BytesIn(recording.GetEventTable().Elements());
}

void AddEpoch(CRecordingFile& recording, std::int32_t index, Delivered& all) {
  EpochHeader head;
  std::uint16_t trialType = 0;
  std::uint16_t correct = 0;
  std::uint16_t response = 0;
  std::uint8_t accept = 0;
  float reactionTime = 0;
  if (!recording.GetEpochInfo(index, &trialType, &accept, &correct, &reactionTime, &response)) return;
  head.trialType = trialType;
  head.accept = accept;
  head.correct = correct;
  head.reactionTime = reactionTime;
  head.response = response;
  all["head " + std::to_string(index)] = BytesIn(std::span(&head, 1));
}

void AddSet(CRecordingFile& recording, std::uint32_t index, Delivered& all) {
  const CTFDEpoch* const set = recording.LoadDataObject(index);
  if (set == nullptr) return;
  const std::string name = std::to_string(index);
  all["set " + name] = BytesIn(set->main.All());
  all["imaginary " + name] = BytesIn(set->imaginary.All());
  all["variance " + name] = BytesIn(set->variance.All());
  all["first values " + name] = BytesIn(set->fspFirst.All());
  all["second values " + name] = BytesIn(set->fspSecond.All());
}

void AddPairs(CRecordingFile& recording, Delivered& all) {
  const CTFDPaired* const pairs = recording.BuildPairedData();
  if (pairs == nullptr) return;
  all["pairs"] = BytesIn(pairs->pairIndex.All());
  all["real"] = BytesIn(pairs->real.All());
  all["imaginary"] = BytesIn(pairs->imaginary.All());
}

}  // namespace

Delivered EverythingIn(CRecordingFile& recording) {
  Delivered all;
  switch (recording.GetFileClass(&recording.rawHeader)) {
    case kContinuous:
      AddContinuous(recording, all);
      break;
    case kEpochs:
      for (std::uint32_t i = 0; i < recording.GetEpochCount(); ++i) {
        AddEpoch(recording, static_cast<std::int32_t>(i), all);
        AddSet(recording, i, all);
      }
      break;
    case kTimeFrequency:
      AddPairs(recording, all);
      break;
    default:
      AddSet(recording, 0, all);
  }
  return all;
}

}  // namespace wavelock

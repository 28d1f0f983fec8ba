#include "cli/comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <span>
#include <string_view>

#include "wavelock/setup/visit_leaves.h"

namespace wavelock::command {
namespace {

template <class Range>
bool SameBytes(const Range& a, const Range& b) {
  const auto left = std::as_bytes(std::span(a));
  const auto right = std::as_bytes(std::span(b));
  return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

// ---- data

bool ReadRaw(CRecordingFile& recording, std::uint64_t start, std::uint64_t end, std::vector<std::byte>& out) {
  constexpr int kWithoutCorrections = 1;
  return recording.ReadContinuousRaw(start, end, out.data(), static_cast<std::int32_t>(out.size()),
                                     kWithoutCorrections, kWithoutCorrections);
}

bool SameSamples(CRecordingFile& before, CRecordingFile& after) {
  constexpr std::uint64_t kSamplesAtOnce = 4096;
  const std::uint64_t samples = before.GetContinuousSampleCount();
  const auto sampleBytes =
      std::size_t{before.rawHeader.header.channelCount} * static_cast<std::size_t>(before.sampleWidth);
  if (after.GetContinuousSampleCount() != samples || after.sampleWidth != before.sampleWidth) return false;
  std::vector<std::byte> old;
  std::vector<std::byte> now;
  for (std::uint64_t start = 0; start < samples; start += kSamplesAtOnce) {
    const std::uint64_t end = std::min(samples, start + kSamplesAtOnce);
    old.resize(static_cast<std::size_t>(end - start) * sampleBytes);
    now.resize(old.size());
    if (!ReadRaw(before, start, end, old) || !ReadRaw(after, start, end, now) || old != now) return false;
  }
  return true;
}

bool SameSets(const CTFDEpoch* before, const CTFDEpoch* after) {
  if (before == nullptr || after == nullptr) return before == after;
  return SameBytes(before->main.All(), after->main.All()) &&
         SameBytes(before->imaginary.All(), after->imaginary.All()) &&
         SameBytes(before->variance.All(), after->variance.All()) &&
         SameBytes(before->fspFirst.All(), after->fspFirst.All()) &&
         SameBytes(before->fspSecond.All(), after->fspSecond.All());
}

bool SamePairs(const CTFDPaired* before, const CTFDPaired* after) {
  if (before == nullptr || after == nullptr) return before == after;
  return SameBytes(before->pairIndex.All(), after->pairIndex.All()) &&
         SameBytes(before->real.All(), after->real.All()) &&
         SameBytes(before->imaginary.All(), after->imaginary.All());
}

bool SameEpochs(CRecordingFile& before, CRecordingFile& after) {
  if (before.GetEpochCount() != after.GetEpochCount()) return false;
  if (before.LoadEpochHeaders() != after.LoadEpochHeaders()) return false;
  if (!SameBytes(before.epochHeaders.Elements(), after.epochHeaders.Elements())) return false;
  for (std::uint32_t i = 0; i < before.GetEpochCount(); ++i) {
    if (!SameSets(before.LoadDataObject(i), after.LoadDataObject(i))) return false;
  }
  return true;
}

// ---- what is lost

using Values = std::map<std::string, std::string>;

// What a save writes about itself, and what every reader of a setup works out anew.
bool IsOfTheFile(std::string_view path) {
  constexpr std::string_view kOfTheFile[] = {"fromRecording", "writerVersionMajor", "writerVersionMinor",
                                             "modified",      "setupFileName",      "waveforms.slots",
                                             "paramsB.bLevel"};
  return std::any_of(std::begin(kOfTheFile), std::end(kOfTheFile),
                     [path](std::string_view prefix) { return path.starts_with(prefix); });
}

// A path with its indexes left out, so that the same change of many channels is told once.
std::string WithoutIndexes(const std::string& path) {
  std::string text;
  bool isInside = false;
  for (const char c : path) {
    if (c == ']') isInside = false;
    if (!isInside) text += c;
    if (c == '[') isInside = true;
  }
  return text;
}

template <class Value>
std::string TextOf(const Value& value) {
  if constexpr (requires { value.View(); }) {
    return fmt::format("\"{}\"", value.View());
  } else if constexpr (std::is_arithmetic_v<Value>) {
    return fmt::format("{}", value);
  } else {
    return "\"" + value + "\"";
  }
}

Values ValuesOf(const CSetup& setup) {
  Values values;
  VisitLeaves("", setup, [&values](const std::string& path, const auto& value) {
    if (!IsOfTheFile(path)) values[path] = TextOf(value);
  });
  return values;
}

void AddCounted(const std::map<std::string, int>& changes, std::vector<std::string>& losses) {
  for (const auto& [change, count] : changes) {
    losses.push_back(count == 1 ? change : fmt::format("{} ({} times)", change, count));
  }
}

void AddChangedFields(const CSetup& before, const CSetup& after, std::vector<std::string>& losses) {
  const Values now = ValuesOf(after);
  std::map<std::string, int> changes;
  for (const auto& [path, value] : ValuesOf(before)) {
    const auto found = now.find(path);
    const std::string changed = found == now.end() ? "nothing" : found->second;
    if (changed != value) ++changes[fmt::format("{}: {} became {}", WithoutIndexes(path), value, changed)];
  }
  AddCounted(changes, losses);
}

// Fields of the header that a setup has no place for.
void AddLostFields(const HeaderImage& before, const HeaderImage& after, std::vector<std::string>& losses) {
  std::map<std::string, int> changes;
  const auto add = [&changes](std::string_view path, int old, int now) {
    if (old != now) ++changes[fmt::format("header {}: {} became {}", path, old, now)];
  };
  add("spectrumSource", before.header.spectrumSource, after.header.spectrumSource);
  const std::size_t channels = std::min(before.ChannelsInUse().size(), after.ChannelsInUse().size());
  for (std::size_t c = 0; c < channels; ++c) {
    const ChannelRecord& old = before.channels[c];
    const ChannelRecord& now = after.channels[c];
    add("channelFlagB", old.channelFlagB, now.channelFlagB);
    add("channelLink", old.channelLink, now.channelLink);
    add("boxScale", old.boxScale, now.boxScale);
  }
  AddCounted(changes, losses);
}

}  // namespace

bool HoldSameData(CRecordingFile& before, CRecordingFile& after) {
  const int kind = before.GetFileClass(&before.rawHeader);
  if (after.GetFileClass(&after.rawHeader) != kind) return false;
  switch (kind) {
    case kContinuous:
      return SameSamples(before, after) &&
             SameBytes(before.GetEventTable().Elements(), after.GetEventTable().Elements());
    case kEpochs:
      return SameEpochs(before, after);
    case kTimeFrequency:
      return SamePairs(before.BuildPairedData(), after.BuildPairedData());
    default:
      return SameSets(before.LoadDataObject(0), after.LoadDataObject(0));
  }
}

std::vector<std::string> Losses(CRecordingFile& before, CRecordingFile& after) {
  constexpr int kLayoutWithLeadingWord = 2;
  std::vector<std::string> losses;
  AddChangedFields(*before.GetSetup(), *after.GetSetup(), losses);
  AddLostFields(before.rawHeader, after.rawHeader, losses);
  const std::int32_t markers = before.markerList.GetCount() - after.markerList.GetCount();
  if (markers != 0)
    losses.push_back(fmt::format("{} markers, which a continuous recording has no place for", markers));
  if (before.rawHeader.header.sampleLayout == kLayoutWithLeadingWord)
    losses.emplace_back("the word ahead of each sample");
  return losses;
}

}  // namespace wavelock::command

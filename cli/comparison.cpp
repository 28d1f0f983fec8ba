#include "cli/comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <span>
#include <string_view>

#include "cli/counted.h"
#include "cli/unread_parts.h"
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

// ---- what stands beside the samples

bool SameCorrections(const CCorrectionOverlay& before, const CCorrectionOverlay& after) {
  const auto same = [](const auto& a, const auto& b) {
    return a->firstSample == b->firstSample && a->endSample == b->endSample &&
           SameBytes(a->coefficients.Elements(), b->coefficients.Elements());
  };
  const auto old = before.Segments();
  const auto now = after.Segments();
  return SameBytes(before.Rows(), after.Rows()) &&
         std::equal(old.begin(), old.end(), now.begin(), now.end(), same);
}

bool SameLabels(const CLabelList& before, const CLabelList& after) {
  const auto same = [](const LabelEntry& a, const LabelEntry& b) {
    return a.value == b.value && a.text == b.text;
  };
  const auto old = before.Entries();
  const auto now = after.Entries();
  return std::equal(old.begin(), old.end(), now.begin(), now.end(), same);
}

bool SameMarkers(const CMarkerList& before, const CMarkerList& after) {
  if (before.GetCount() != after.GetCount()) return false;
  for (std::int32_t i = 0; i < before.GetCount(); ++i) {
    const CMarker& a = *before.GetAt(i);
    const CMarker& b = *after.GetAt(i);
    if (a.sampleIndex != b.sampleIndex || a.channel != b.channel || a.epoch != b.epoch ||
        a.GetLabel(false) != b.GetLabel(false) || a.name != b.name || a.text != b.text) {
      return false;
    }
  }
  return true;
}

// ---- what is lost

using Values = std::map<std::string, std::string>;

// What a save writes about itself, and what every reader of a setup works out anew.
bool IsOfTheFile(std::string_view path) {
  constexpr std::string_view kOfTheFile[] = {"fromRecording",      "writerVersionMajor", "writerVersionMinor",
                                             "modified",           "setupFileName",      "waveforms.slots",
                                             "paramsB.bLevel",     "paramsB.bSpare",     "auxInputs.auxSlope",
                                             "auxInputs.auxOffset"};
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

// The end of a spectrum is no time, and every reader works it out anew.
void AddChangedFields(const CSetup& before, const CSetup& after, std::vector<std::string>& losses) {
  const Values now = ValuesOf(after);
  Values old = ValuesOf(before);
  if (before.frequencyDomain != 0) old.erase("timeEnd");
  std::map<std::string, int> changes;
  for (const auto& [path, value] : old) {
    const auto found = now.find(path);
    const std::string changed = found == now.end() ? "nothing" : found->second;
    if (changed != value) ++changes[fmt::format("{}: {} became {}", WithoutIndexes(path), value, changed)];
  }
  AddCounted(changes, losses);
}

// Texts of old headers that nobody reads. Most hold dashes; one that holds more may be somebody's note.
void AddDashTexts(const RecordingHeader& header, std::vector<std::string>& losses) {
  const auto add = [&losses](std::string_view text) {
    if (text.find_first_not_of(" -") != std::string_view::npos)
      losses.push_back(fmt::format("a text of the header, \"{}\"", text));
  };
  add(header.dashTextA.View());
  add(header.dashTextB.View());
  add(header.dashTextC.View());
  add(header.dashTextD.View());
  add(header.dashTextE.View());
  add(header.dashTextF.View());
  add(header.dashTextG.View());
}

// Fields of the header that a setup has no place for. Without a tail the filters of the first channel become
// those of all.
void AddLostFields(const HeaderImage& before, const HeaderImage& after, bool hasTail,
                   std::vector<std::string>& losses) {
  std::map<std::string, int> changes;
  const auto add = [&changes](std::string_view path, int old, int now) {
    if (old != now) ++changes[fmt::format("header {}: {} became {}", path, old, now)];
  };
  add("spectrumSource", before.header.spectrumSource, after.header.spectrumSource);
  AddDashTexts(before.header, losses);
  const std::size_t channels = std::min(before.ChannelsInUse().size(), after.ChannelsInUse().size());
  for (std::size_t c = 0; c < channels; ++c) {
    const ChannelRecord& old = before.channels[c];
    const ChannelRecord& now = after.channels[c];
    add("channelFlagB", old.channelFlagB, now.channelFlagB);
    add("channelLink", old.channelLink, now.channelLink);
    add("boxScale", old.boxScale, now.boxScale);
    if (hasTail) continue;
    if (old.lowpassIndex != before.channels[0].lowpassIndex)
      add("lowpassIndex", old.lowpassIndex, now.lowpassIndex);
    if (old.highpassIndex != before.channels[0].highpassIndex)
      add("highpassIndex", old.highpassIndex, now.highpassIndex);
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
             SameBytes(before.GetEventTable().Elements(), after.GetEventTable().Elements()) &&
             SameCorrections(before.overlay, after.overlay) && SameLabels(before.labelList, after.labelList);
    case kEpochs:
      return SameMarkers(before.markerList, after.markerList) && SameEpochs(before, after);
    case kTimeFrequency:
      return SameMarkers(before.markerList, after.markerList) &&
             SamePairs(before.BuildPairedData(), after.BuildPairedData());
    default:
      return SameMarkers(before.markerList, after.markerList) &&
             SameSets(before.LoadDataObject(0), after.LoadDataObject(0));
  }
}

std::vector<std::string> Losses(CRecordingFile& before, CRecordingFile& after) {
  std::vector<std::string> losses;
  AddChangedFields(*before.GetSetup(), *after.GetSetup(), losses);
  AddLostFields(before.rawHeader, after.rawHeader, before.HasTail(), losses);
  const std::int32_t markers = before.markerList.GetCount() - after.markerList.GetCount();
  if (markers > 0) {
    losses.push_back(Counted(static_cast<std::uint64_t>(markers), "marker") +
                     ", which a continuous recording has no place for");
  }
  for (const auto& parts : {UnreadParts(before), LostRecords(before, after)}) {
    losses.insert(losses.end(), parts.begin(), parts.end());
  }
  return losses;
}

}  // namespace wavelock::command

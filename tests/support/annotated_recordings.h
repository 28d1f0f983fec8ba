// Recordings with something beside their samples.
#pragma once

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/recording_builder.h"
#include "tests/support/setup_tail.h"
#include "tests/support/stored_annotations.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {

using SetupChange = std::function<void(CSetup&)>;

// A tail's setup under which channels are called "1", "2", ... and a stored integer is a microvolt.
inline std::vector<StoredRecord> PlainSetupSections(
    std::int32_t channels, const SetupChange& change = [](CSetup&) {}) {
  return TailOf(
             [&change](CSetup& setup) {
               int number = 0;
               for (SetupChannel& channel : setup.Channels()) {
                 channel.label.Assign(std::to_string(++number));
                 channel.channelScale = 1;
                 channel.countScale = 1;
               }
               change(setup);
             },
             channels)
      .records;
}

// Two channels, and two markers: one that says everything, one that says nothing, not even a time: -1 would
// leave the point to that. `change` puts into the setup what the kind of recording needs.
inline RecordingBuilder MarkedRecording(const SetupChange& change = [](CSetup&) {}) {
  std::vector<StoredRecord> tail = PlainSetupSections(2, change);
  const StoredMarker full = {
      .name = "spike", .text = "a\tb\\", .channel = 1, .locked = 1, .epoch = 0, .colour = 0x4080FF};
  const StoredMarker empty = {.channel = -1,
                              .locked = 0,
                              .sampleIndex = -2,
                              .epoch = -1,
                              .value = std::numeric_limits<double>::quiet_NaN(),
                              .colour = 0};
  for (const StoredMarker& marker : {full, empty}) tail.push_back({tag::kMarker, 0, MarkerBytes(marker)});
  return RecordingBuilder().Channels(2).Samples(std::vector<std::int32_t>(200)).Tail(tail);
}

// One channel of four samples, all 0, with labels and corrections: a row adds 100 from sample 1 on, and up to
// sample 3, where its segment ends, a parabola takes less than 1 from sample 0 and between 2 and 3 from the
// others.
inline RecordingBuilder CorrectedRecording() {
  std::vector<StoredRecord> tail = PlainSetupSections(1);
  tail.push_back({tag::kLabel, 0, LabelBytes("later", 7)});
  tail.push_back({tag::kLabel, 0, LabelBytes("last", 0xFFFFFFFF)});
  tail.push_back({tag::kOverlayParameters, 0, ParametersBytes(0, 2, 1)});
  tail.push_back({tag::kOverlayRow, 0, RowBytes(1, {100})});
  for (auto& section : SegmentSections({{0, 3, 1, {2.5, 0, -0.0002}}})) tail.push_back(std::move(section));
  return RecordingBuilder().Channels(1).Samples({0, 0, 0, 0}).Tail(tail);
}

}  // namespace wavelock

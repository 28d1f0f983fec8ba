// Recordings for tests, of every generation of the format. A test says what a file holds, the builder works
// out where each byte lies:
//
//   RecordingBuilder().Channels(4).Rate(250).Samples(values).Build()
//
// It has offsets and a writer of its own and shares nothing with the library, whose reader it is there to
// test.
//
// Calls may come in any order; of two calls for one thing the later counts. What is not said has a value that
// makes an ordinary file. Numbers are not checked, so that impossible files can be built; a field put outside
// its block is a mistake of the test and throws std::out_of_range.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/byte_writer.h"
#include "tests/support/stored_container.h"

namespace wavelock {

class RecordingBuilder {
 public:
  using Bytes = std::vector<std::byte>;
  using SampleFunction = std::function<std::int32_t(std::uint64_t sample, int channel)>;

  struct Event {
    std::uint16_t stimType = 0;
    std::uint8_t keyboard = 0;
    std::uint8_t keypad = 0;        // 0 to 15
    std::uint8_t segmentClass = 0;  // 0 to 15
    std::uint32_t sample = 0;
    std::optional<std::uint32_t> storedPoint = {};  // stands in the table in place of what `sample` gives
    std::array<std::uint8_t, 11> extra =
        {};  // tables of 8-byte records and trigger words have no room for it
  };

  struct Epoch {
    std::uint8_t accept = 1;
    std::uint16_t trialType = 0;
    std::uint16_t correct = 0;  // this and the next two are missing below revision 3
    float reactionTime = 0;
    std::uint16_t response = 0;
    std::vector<std::int32_t> samples = {};  // time domain: points x channels
    std::vector<float> spectrum =
        {};  // frequency domain: for each channel its real, then its imaginary values
  };

  using Section = StoredRecord;  // of the tail

  // ---- generation; revision 16 if nothing is said

  RecordingBuilder& Revision(int revision);

  // The layout before the first revision, with samples in layout 0. Its first byte is the file form too: 2, 3
  // and 5 have empty blocks of their own before or behind the header, any other byte but 'V' has the plain
  // form.
  RecordingBuilder& OldestLayout(int firstByte) { return Set(oldestFirstByte_, firstByte); }

  // ---- kind; continuous if nothing is said

  RecordingBuilder& Epoched() { return Kind(1, 0, 0); }
  RecordingBuilder& Averaged() { return Kind(0, 1, 0); }
  RecordingBuilder& AveragedWithStatistics() { return Kind(0, 6, 0); }
  RecordingBuilder& TimeFrequency() { return Kind(1, 0, 1); }

  RecordingBuilder& AcquisitionMode(int mode) { return Set(acquisitionMode_, mode); }
  RecordingBuilder& FrequencyDomain(int domain = 1) { return Set(frequencyDomain_, domain); }

  // ---- what the header says

  // Channels labelled "1", "2", ..., or as many as there are labels.
  RecordingBuilder& Channels(int count);
  RecordingBuilder& Labels(std::vector<std::string> labels) { return Set(labels_, std::move(labels)); }

  // Samples per second, stored as the format codes them.
  RecordingBuilder& Rate(int rate) { return Set(rate_, rate); }

  // Points of every channel in a set or an epoch, and the set's time in seconds, which otherwise follows from
  // points and rate.
  RecordingBuilder& Points(int count) { return Set(points_, count); }
  RecordingBuilder& Times(float start, float end) { return Set(times_, std::array{start, end}); }

  RecordingBuilder& Date(std::string_view date) { return Set(date_, date); }

  // A stored integer is calibration x sensitivity / 204.8 microvolts; one microvolt if nothing is said.
  // Without a channel: of all that have no value of their own, and the header's default, which is what old
  // revisions go by.
  RecordingBuilder& Calibration(float value) { return Set(calibration_, value); }
  RecordingBuilder& Calibration(int channel, float value) { return PutChannelF32(channel, 59, value); }
  RecordingBuilder& Sensitivity(float value) { return Set(sensitivity_, value); }
  RecordingBuilder& Sensitivity(int channel, float value) { return PutChannelF32(channel, 71, value); }

  // Any field by its offset in the header of this generation, over all that the calls above say. Texts go in
  // without a NUL.
  RecordingBuilder& PutU8(std::size_t at, std::uint8_t value) { return Put(at, ByteWriter().U8(value)); }
  RecordingBuilder& PutU16(std::size_t at, std::uint16_t value) { return Put(at, ByteWriter().U16(value)); }
  RecordingBuilder& PutU32(std::size_t at, std::uint32_t value) { return Put(at, ByteWriter().U32(value)); }
  RecordingBuilder& PutF32(std::size_t at, float value) { return Put(at, ByteWriter().F32(value)); }
  RecordingBuilder& PutText(std::size_t at, std::string_view text) {
    return Put(at, ByteWriter().Text(text));
  }

  // Any field of a channel's record, which has 26 bytes in the oldest layout and 75 in all others.
  RecordingBuilder& PutChannelU8(int channel, std::size_t at, std::uint8_t value) {
    return Put(at, ByteWriter().U8(value), channel);
  }
  RecordingBuilder& PutChannelU16(int channel, std::size_t at, std::uint16_t value) {
    return Put(at, ByteWriter().U16(value), channel);
  }
  RecordingBuilder& PutChannelF32(int channel, std::size_t at, float value) {
    return Put(at, ByteWriter().F32(value), channel);
  }

  // ---- continuous samples

  // 0 with trigger words, 1 plain, 2 with a leading word, 3 in blocks; any other number lies as 1. If nothing
  // is said, 0 below revision 7 and 1 from there on.
  RecordingBuilder& Layout(int sampleLayout) { return Set(layout_, sampleLayout); }

  // Bytes of a sample, 2 or 4. That they are 4 shows in the flags of a tail alone.
  RecordingBuilder& Width(int bytes) { return Set(width_, static_cast<std::size_t>(bytes)); }

  // Samples of a channel in one block of layout 3, at least 1. The last block is filled up with zeros.
  RecordingBuilder& BlockSamples(int count) { return Set(blockSamples_, static_cast<std::size_t>(count)); }

  // The word that opens every record of layout 2.
  RecordingBuilder& LeadingWord(std::int32_t word) { return Set(leadingWord_, word); }

  // The recording from its first sample on: samples x channels, or `count` samples of every channel.
  RecordingBuilder& Samples(std::vector<std::int32_t> values);
  RecordingBuilder& Samples(std::uint64_t count, SampleFunction value);

  // A further run elsewhere, for files with holes. In layout 3 it starts with a block.
  RecordingBuilder& SamplesAt(std::uint64_t first, std::vector<std::int32_t> values);

  // ---- events

  // Go into the trigger words in layout 0 (stimType and keypad alone), else into a table behind the samples.
  RecordingBuilder& Events(std::vector<Event> events) { return Set(events_, std::move(events)); }

  // Both words of a record of layout 0 as they are to stand, over those of events.
  RecordingBuilder& TriggerWords(std::uint64_t sample, std::uint16_t stimulus, std::uint16_t response);

  // Kind 1 has 8-byte records, all others 19-byte ones; points are byte offsets in kinds 1 and 2. If nothing
  // is said, 2 for a table below one gibibyte and 3 from there on.
  RecordingBuilder& EventTableKind(int kind) { return Set(eventTableKind_, kind); }

  // What the table says of its own size, whatever it holds.
  RecordingBuilder& EventTableByteSize(std::int32_t stated) { return Set(eventTableByteSize_, stated); }

  // Leaves a hole behind the samples.
  RecordingBuilder& EventTableAt(std::uint64_t position) { return Set(eventTableAt_, position); }

  // ---- other data, where the samples begin

  RecordingBuilder& Epochs(std::vector<Epoch> epochs) { return Set(epochs_, std::move(epochs)); }

  // As it stands: averages, time-frequency data.
  RecordingBuilder& Data(Bytes bytes) { return Set(data_, std::move(bytes)); }

  // ---- behind the data

  // The tagged container. Its flags are 1 for 4-byte samples and else 0.
  RecordingBuilder& Tail(std::vector<Section> sections) { return Set(tail_, std::move(sections)); }

  // Leaves a hole before the tail.
  RecordingBuilder& TailAt(std::uint64_t position) { return Set(tailAt_, position); }

  // Bytes behind all else; then the size, which cuts the file or lets it end in a hole.
  RecordingBuilder& Append(Bytes bytes) { return Set(appended_, std::move(bytes)); }
  RecordingBuilder& FileSize(std::uint64_t size) { return Set(fileSize_, size); }

  // ---- the file

  std::uint64_t DataStart() const;
  std::uint64_t EventTablePosition() const;
  std::uint64_t TailPosition() const;

  Bytes Build() const;

  // The same bytes as a file, with real holes where the system has them. False when it cannot be written.
  [[nodiscard]] bool WriteTo(const std::filesystem::path& path) const;

 private:
  // A run of samples: values that are there, or a function that gives them.
  struct Run {
    std::uint64_t first = 0;
    std::vector<std::int32_t> values;
    std::uint64_t count = 0;
    SampleFunction function;
  };
  struct Patch {
    std::optional<int> channel;  // none: the header itself
    std::size_t offset = 0;
    Bytes bytes;
  };
  struct Triggers {
    std::uint16_t stimulus = 0;
    std::uint16_t response = 0;
  };

  class Composer;  // works the file out of what was said

  template <class Field, class Value>
  RecordingBuilder& Set(Field& field, Value value) {
    field = std::move(value);
    return *this;
  }
  RecordingBuilder& Kind(int fileForm, int acquisitionMode, int timeFrequencyFlag);
  RecordingBuilder& Put(std::size_t at, Bytes bytes, std::optional<int> channel = std::nullopt) {
    patches_.push_back({channel, at, std::move(bytes)});
    return *this;
  }

  int revision_ = 16;
  std::optional<int> oldestFirstByte_;

  int fileForm_ = 2;
  int acquisitionMode_ = 3;
  int timeFrequencyFlag_ = 0;
  int frequencyDomain_ = 0;

  std::vector<std::string> labels_ = {"1"};
  int rate_ = 1000;
  std::optional<int> points_;
  std::optional<std::array<float, 2>> times_;
  std::string date_;
  float calibration_ = 204.8f;
  float sensitivity_ = 1;
  std::vector<Patch> patches_;

  std::optional<int> layout_;
  std::size_t width_ = 2;
  std::size_t blockSamples_ = 64;
  std::int32_t leadingWord_ = 0;
  std::vector<Run> runs_;

  std::vector<Event> events_;
  std::optional<int> eventTableKind_;
  std::optional<std::int32_t> eventTableByteSize_;
  std::optional<std::uint64_t> eventTableAt_;
  std::map<std::uint64_t, Triggers> triggerWords_;

  std::vector<Epoch> epochs_;
  Bytes data_;

  std::optional<std::vector<Section>> tail_;
  std::optional<std::uint64_t> tailAt_;
  Bytes appended_;
  std::optional<std::uint64_t> fileSize_;
};

}  // namespace wavelock

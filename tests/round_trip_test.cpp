// What a program puts into a recording comes out of it again: created and opened, opened, edited and saved,
// and brought from every form of 4-byte samples to the current one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "tests/support/created_recording.h"
#include "tests/support/delivered.h"
#include "tests/support/opened_recording.h"
#include "tests/support/setup_values.h"
#include "tests/support/stored_container.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

constexpr int kPoints = 8;
constexpr int kSweeps = 3;

// Whole counts of both channels, in microvolts.
std::vector<float> Microvolts(std::size_t samples, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<float> values;
  for (std::size_t i = 0; i < 2 * samples; ++i) {
    const auto count = static_cast<float>(static_cast<std::int32_t>(random() % 60001) - 30000);
    values.push_back(i % 2 == 0 ? count * 0.5F : count);
  }
  return values;
}

Bytes BytesOfValues(std::span<const float> values) {
  const auto bytes = std::as_bytes(values);
  return {bytes.begin(), bytes.end()};
}

void MakeContinuous(CSetup& setup) {
  setup.averagedSweeps = setup.acceptedSweeps = 1;
}

void MakeSets(CSetup& setup) {
  setup.windowBEnd = 0;
  setup.pointCount = kPoints;
  setup.sweepCount = setup.averagedSweeps = setup.acceptedSweeps = kSweeps;
  for (SetupChannel& channel : setup.Channels()) channel.sweeps = 1;
}

void MakeSpectra(CSetup& setup) {
  MakeSets(setup);
  setup.frequencyDomain = setup.hasImaginary = 1;
  setup.spectrumPoints = 2 * kPoints;
}

void AddMarker(CRecordingFile& recording) {
  auto marker = std::make_unique<CMarker>();
  marker->SetName("peak");
  marker->sampleIndex = 3;
  marker->epoch = 0;
  recording.markerList.Add(std::move(marker));
}

// ---- what is put into a recording of each kind, and what is to come out

void PutContinuous(CRecordingFile& recording, Delivered& expected) {
  const std::vector<float> values = Microvolts(50, 1);
  ASSERT_TRUE(recording.AppendContinuousFloat(values.data(), BytesOfFloats(values)));
  std::mt19937 random(2);
  for (std::uint32_t i = 0; i < 10; ++i) {
    EventRecord event;
    for (std::byte& byte : std::as_writable_bytes(std::span(&event, 1)))
      byte = static_cast<std::byte>(random());
    event.point = 5 * i;
    ASSERT_TRUE(recording.GetEventTable().Append(event));
  }
  OverlayRow row{};
  row.channelValue[1] = 4;
  row.startSample = 20;
  auto segment = std::make_unique<OverlaySegment>();
  segment->endSample = 50;
  recording.overlay.params.polyOrder = 0;
  recording.overlay.params.polyChannels = 2;
  ASSERT_TRUE(segment->coefficients.Append(2.0) && segment->coefficients.Append(-1.0));
  ASSERT_TRUE(recording.overlay.AddRow(row) && recording.overlay.AddSegment(std::move(segment)));
  ASSERT_TRUE(recording.labelList.Add({"label", 7}));

  // A unit of a correction is a microvolt by the count's scale alone; the first channel's is doubled again.
  std::vector<float> corrected = values;
  for (std::size_t i = 0; i < corrected.size(); ++i) {
    corrected[i] += i % 2 == 0 ? -4.0F : i / 2 < 20 ? 1.0F : 5.0F;
  }
  expected["microvolts"] = BytesOfValues(corrected);
  const auto events = std::as_bytes(recording.GetEventTable().Elements());
  expected["events"] = {events.begin(), events.end()};
}

void PutEpochs(CRecordingFile& recording, Delivered& expected) {
  for (std::uint16_t i = 0; i < kSweeps; ++i) {
    const std::vector<float> values = Microvolts(kPoints, i);
    ASSERT_TRUE(recording.AppendEpochHead(i, 1, 2, 0.25F, 3));
    ASSERT_TRUE(recording.AppendEpochFloat(values.data(), BytesOfFloats(values)));
    expected["set " + std::to_string(i)] = BytesOfValues(values);
  }
  AddMarker(recording);
}

void PutSpectra(CRecordingFile& recording, Delivered& expected) {
  for (int i = 0; i < kSweeps; ++i) {
    CTFDEpoch set(recording.GetSetup(), 0);
    const std::vector<float> real = Microvolts(kPoints, 5);
    const std::vector<float> imaginary = Microvolts(kPoints, 6);
    std::copy(real.begin(), real.end(), set.mainBlock);
    std::copy(imaginary.begin(), imaginary.end(), set.imaginaryBlock);
    ASSERT_TRUE(recording.AppendEpochHead(0, 1, 0, 0, 0) && recording.WriteTimeFrequencyData(&set));
    expected["set " + std::to_string(i)] = BytesOfValues(real);
    expected["imaginary " + std::to_string(i)] = BytesOfValues(imaginary);
  }
}

void PutAverage(CRecordingFile& recording, Delivered& expected) {
  const std::vector<float> mean = Microvolts(kPoints, 7);
  const std::vector<float> variance = Microvolts(kPoints, 8);
  recording.WriteAverageSection(mean.data(), BytesOfFloats(mean), 1);
  recording.WriteVarianceSection(variance.data(), BytesOfFloats(variance));
  expected["set 0"] = BytesOfValues(mean);
  expected["variance 0"] = BytesOfValues(variance);
  AddMarker(recording);
}

void PutStatistics(CRecordingFile& recording, Delivered& expected) {
  PutAverage(recording, expected);
  const std::vector<float> first = Microvolts(kSweeps, 9);
  const std::vector<float> second = Microvolts(kSweeps, 10);
  recording.WriteAverageSection(first.data(), BytesOfFloats(first), 3);
  recording.WriteAverageSection(second.data(), BytesOfFloats(second), 4);
  expected["first values 0"] = BytesOfValues(first);
  expected["second values 0"] = BytesOfValues(second);
}

void PutPairs(CRecordingFile& recording, Delivered& expected) {
  CTFDPaired pairs(recording.GetSetup(), 1);
  pairs.pairIndex[1][0] = 1;
  const std::vector<float> values = Microvolts(kPoints / 2, 11);
  std::copy(values.begin(), values.end(), pairs.real[0]);
  std::copy(values.rbegin(), values.rend(), pairs.imaginary[0]);
  ASSERT_TRUE(recording.WritePairedData(&pairs));
  expected["real"] = BytesOfValues(values);
}

struct Kind {
  const char* name;
  DataKind kind;
  std::function<void(CSetup&)> describe;
  std::function<void(CRecordingFile&, Delivered&)> put;
  DataKind saved;
};

const std::vector<Kind>& Kinds() {
  static const std::vector<Kind> kinds = {
      {"continuous", kContinuous, MakeContinuous, PutContinuous, kContinuous},
      {"epochs", kEpochs, MakeSets, PutEpochs, kEpochs},
      {"spectra", kEpochs, MakeSpectra, PutSpectra, kEpochs},
      {"average", kAverage, MakeSets, PutAverage, kAverage},
      {"average with statistics", kAverage, MakeSets, PutStatistics, kAverageWithStatistics},
      {"pairs", kTimeFrequency, MakeSpectra, PutPairs, kTimeFrequency}};
  return kinds;
}

// ---- created and opened

// Worked out by whoever reads a setup, or true of the one that came out of a file.
bool IsOfTheReader(const std::string& path) {
  constexpr const char* kPrefixes[] = {"writerVersion",   "setupFileName", "setupTitle",    "timeEnd",
                                       "waveforms",       "paramsB",       "auxInputs",     "modified",
                                       "channelCapacity", "detailKind",    "mainField8164", "mainField8168"};
  return path.ends_with(".gain") || path.ends_with(".signalRatio") ||
         std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                     [&path](const char* prefix) { return path.starts_with(prefix); });
}

// The paths of fields that differ, a few of them at most.
std::vector<std::string> Differences(const CSetup& before, const CSetup& after) {
  const FieldValues old = ValuesOf(before);
  const FieldValues now = ValuesOf(after);
  if (old.size() != now.size()) return {"not the same fields"};
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < old.size() && paths.size() < 10; ++i) {
    if (!(old[i] == now[i]) && !IsOfTheReader(old[i].path)) paths.push_back(old[i].path);
  }
  return paths;
}

void ExpectDelivered(CRecordingFile& recording, const Delivered& expected) {
  const Delivered all = EverythingIn(recording);
  for (const auto& [name, bytes] : expected) {
    EXPECT_EQ(all.count(name), 1u) << name;
    EXPECT_TRUE(all.count(name) == 0 || all.at(name) == bytes) << name;
  }
}

TEST(RoundTrip, EveryKindIsOpenedAsItWasCreated) {
  for (const Kind& kind : Kinds()) {
    for (const int width : {2, 4}) {
      SCOPED_TRACE(testing::Message() << kind.name << " of " << width << " bytes");
      CreatedRecording created(kind.kind, width);
      kind.describe(created.Setup());
      created.Setup().subject->operatorName = "operator";
      created.Setup().channels[1].position = {1, 2, 3};
      created.Create();
      Delivered expected;
      kind.put(created.recording, expected);
      const Bytes file = created.Saved();
      OpenedRecording opened(file);
      ASSERT_TRUE(opened.isOpen);
      EXPECT_THAT(opened.test.user.messages, testing::IsEmpty());
      EXPECT_EQ(opened.recording.GetFileClass(&opened.recording.rawHeader), kind.saved);
      EXPECT_EQ(opened.recording.sampleWidth, width);
      ExpectDelivered(opened.recording, expected);
      EXPECT_EQ(opened.recording.markerList.GetCount(), created.recording.markerList.GetCount());
      EXPECT_EQ(opened.recording.labelList.Entries().size(), created.recording.labelList.Entries().size());
      EXPECT_THAT(Differences(created.Setup(), opened.Setup()), testing::IsEmpty());
    }
  }
}

// ---- opened, edited, saved and opened

TEST(RoundTrip, EditsOfEveryKindAreSavedAndTheDataStay) {
  for (const Kind& kind : Kinds()) {
    for (const int width : {2, 4}) {
      SCOPED_TRACE(testing::Message() << kind.name << " of " << width << " bytes");
      CreatedRecording created(kind.kind, width);
      kind.describe(created.Setup());
      created.Create();
      Delivered expected;
      kind.put(created.recording, expected);
      OpenedRecording opened(created.Saved());
      ASSERT_TRUE(opened.isOpen);
      CRecordingFile& recording = opened.recording;
      opened.Setup().sourceName = "another source";
      opened.Setup().channels[0].label = "Pz";
      opened.Setup().subject->subjectTextA = "somebody";
      AddMarker(recording);
      const auto markers = recording.markerList.GetCount();
      EventRecord event{};
      event.stimType = 99;
      event.point = 1;
      ASSERT_TRUE(recording.GetEventTable().Append(event));
      const auto edited = std::as_bytes(recording.GetEventTable().Elements());
      if (kind.kind == kContinuous) expected["events"] = {edited.begin(), edited.end()};
      ASSERT_TRUE(recording.labelList.Add({"more", 1}));
      ASSERT_TRUE(recording.SaveAndClose(0));

      ASSERT_TRUE(recording.OpenFile("test.rec"));
      ExpectDelivered(recording, expected);
      EXPECT_EQ(opened.Setup().sourceName, "another source");
      EXPECT_EQ(opened.Setup().channels[0].label, "Pz");
      EXPECT_EQ(opened.Setup().subject->subjectTextA, "somebody");
      if (kind.kind == kContinuous) {
        EXPECT_EQ(recording.labelList.Entries().size(), 2u);
        EXPECT_EQ(recording.labelList.Entries()[0].text, "more") << "sorted by value";
      } else {
        EXPECT_EQ(recording.markerList.GetCount(), markers);
      }
    }
  }
}

// ---- samples of 4 bytes

std::vector<RecordingBuilder::Section> TailOf(CSetup& setup) {
  TestHost test;
  EXPECT_TRUE(setup.SaveTo("s", test.memory));
  std::vector<RecordingBuilder::Section> tail;
  for (const StoredRecord& record : StoredContainer(*test.memory.Contents("s")).records)
    tail.push_back({record.tag, record.version, record.payload});
  return tail;
}

std::int32_t Wide(std::uint64_t sample, int channel) {
  return static_cast<std::int32_t>(
      (sample * 7 + static_cast<std::uint64_t>(channel) + 1) * 0x9E3779B97F4A7C15 >> 32);
}

TEST(RoundTrip, WideSamplesOfEveryLayoutAreUpgradedBitByBit) {
  CreatedRecording setup(kContinuous, 4);
  for (const int revision : {14, 16}) {
    for (const int layout : {1, 2, 255}) {
      SCOPED_TRACE(testing::Message() << "revision " << revision << ", layout " << layout);
      OpenedRecording opened(RecordingBuilder()
                                 .Revision(revision)
                                 .Channels(2)
                                 .Width(4)
                                 .Layout(layout)
                                 .Samples(40, Wide)
                                 .Events({{.stimType = 1, .sample = 30}})
                                 .Tail(TailOf(setup.Setup())));
      ASSERT_TRUE(opened.isOpen);
      ASSERT_EQ(opened.recording.sampleWidth, 4);
      const Delivered before = EverythingIn(opened.recording);
      ASSERT_TRUE(opened.recording.SaveAndClose(0));
      ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
      EXPECT_EQ(opened.recording.sampleWidth, 4);
      EXPECT_EQ(opened.Header().sampleLayout, 1);
      EXPECT_EQ(opened.Raw<std::int32_t>(29, 30), (std::vector<std::int32_t>{Wide(29, 0), Wide(29, 1)}));
      EXPECT_TRUE(EverythingIn(opened.recording) == before);
    }
  }
}

// ---- averages that do not say the same of themselves everywhere

Bytes AverageOfKind(void (*put)(CRecordingFile&, Delivered&), std::int32_t kindInTail) {
  CreatedRecording created(kAverage, 2);
  MakeSets(created.Setup());
  created.Create();
  Delivered expected;
  put(created.recording, expected);
  Bytes file = created.Saved();
  std::uint32_t tail = 0;
  std::memcpy(&tail, file.data() + 12, sizeof tail);
  constexpr std::size_t kMainSection = 64 + 16;
  std::memcpy(file.data() + tail + kMainSection, &kindInTail, sizeof kindInTail);
  return file;
}

TEST(RoundTrip, AveragesKeepTheSectionsThatTheyHave) {
  const Bytes files[] = {AverageOfKind(PutAverage, kAverage), AverageOfKind(PutStatistics, kAverage),
                         AverageOfKind(PutStatistics, kAverageWithStatistics)};
  for (const Bytes& file : files) {
    OpenedRecording opened(file);
    ASSERT_TRUE(opened.isOpen);
    const Delivered before = EverythingIn(opened.recording);
    const int kind = opened.recording.GetFileClass(&opened.recording.rawHeader);
    for (int i = 0; i < 2; ++i) {
      ASSERT_TRUE(opened.recording.SaveAndClose(0));
      ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
      EXPECT_EQ(opened.test.memory.Contents("test.rec")->size(), file.size());
      EXPECT_EQ(opened.recording.GetFileClass(&opened.recording.rawHeader), kind);
      EXPECT_TRUE(EverythingIn(opened.recording) == before);
    }
  }
}

// ---- what the tail holds beside what a reader knows

TEST(RoundTrip, RecordsThatNobodyReadStayInTheTail) {
  CreatedRecording setup(kContinuous, 2);
  std::vector<RecordingBuilder::Section> tail = TailOf(setup.Setup());
  const Bytes payload = ByteWriter().Text("unknown").Written();
  tail.insert(tail.begin(), {123, 5, payload});
  tail.push_back({130000, 0, {}});
  tail.push_back({20001, 0, payload});  // of a derivation file that is not there
  OpenedRecording opened(RecordingBuilder().Channels(2).Samples({1, 2}).Tail(tail));
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(opened.recording.SaveAndClose(0));
    const Bytes saved = *opened.test.memory.Contents("test.rec");
    ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
    const std::span<const std::byte> file = saved;
    StoredContainer container(file.subspan(opened.recording.TailPosition()));
    EXPECT_EQ(container.Of(123).payload, payload);
    EXPECT_EQ(container.Of(123).version, 5);
    EXPECT_TRUE(container.Of(130000).payload.empty());
    EXPECT_EQ(container.Of(20001).payload, payload);
    EXPECT_EQ(container.records.back().tag, 70000u);
  }
}

}  // namespace
}  // namespace wavelock

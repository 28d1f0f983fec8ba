// What a program puts into a recording comes out of it again: created and opened, and opened, edited and
// saved.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "tests/support/annotated_recordings.h"
#include "tests/support/every_kind.h"
#include "tests/support/opened_recording.h"
#include "tests/support/setup_values.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

// A recording as a maker leaves it, and what it is to deliver.
struct Made {
  explicit Made(const NamedMaker& maker) {
    source.setup->subject->operatorName = "operator";
    source.setup->channels[1].position = {1, 2, 3};
    EXPECT_TRUE(maker.Make(source, "test.rec", &expected));
  }
  Bytes File() const { return test.memory.Contents("test.rec").value_or(Bytes()); }

  TestHost test;
  CRecordingFile source{0, test.host};
  Delivered expected;
};

void AddMarker(CRecordingFile& recording) {
  auto marker = std::make_unique<CMarker>();
  marker->SetName("peak");
  marker->epoch = 0;
  recording.markerList.Add(std::move(marker));
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
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    SCOPED_TRACE(maker.name);
    const Made made(maker);
    OpenedRecording opened(made.File());
    ASSERT_TRUE(opened.isOpen);
    EXPECT_THAT(opened.test.user.messages, testing::IsEmpty());
    EXPECT_EQ(opened.recording.GetFileClass(&opened.recording.rawHeader), maker.kind);
    EXPECT_EQ(opened.recording.sampleWidth, maker.width);
    ExpectDelivered(opened.recording, made.expected);
    EXPECT_EQ(opened.recording.markerList.GetCount(), made.source.markerList.GetCount());
    EXPECT_EQ(opened.recording.labelList.Entries().size(), made.source.labelList.Entries().size());
    EXPECT_THAT(Differences(*made.source.setup, opened.Setup()), testing::IsEmpty());
  }
}

// ---- opened, edited, saved and opened

TEST(RoundTrip, EditsOfEveryKindAreSavedAndTheDataStay) {
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    SCOPED_TRACE(maker.name);
    Made made(maker);
    OpenedRecording opened(made.File());
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
    recording.GetEventTable().Elements()[0].stimType = 42;
    const auto edited = std::as_bytes(recording.GetEventTable().Elements());
    if (maker.kind == kContinuous) made.expected["events"] = {edited.begin(), edited.end()};
    ASSERT_TRUE(recording.labelList.Add({"more", 1}));
    ASSERT_TRUE(recording.SaveAndClose(0));
    EXPECT_EQ(recording.file, nullptr);
    EXPECT_EQ(recording.GetFileName(), "");

    ASSERT_TRUE(recording.OpenFile("test.rec"));
    ExpectDelivered(recording, made.expected);
    EXPECT_EQ(opened.Setup().sourceName, "another source");
    EXPECT_EQ(opened.Setup().channels[0].label, "Pz");
    EXPECT_EQ(opened.Setup().subject->subjectTextA, "somebody");
    if (maker.kind == kContinuous) {
      EXPECT_EQ(recording.labelList.Entries().size(), 2u);
      EXPECT_EQ(recording.labelList.Entries()[0].text, "more") << "sorted by value";
    } else {
      EXPECT_EQ(recording.markerList.GetCount(), markers);
    }
  }
}

// ---- averages that do not say the same of themselves everywhere

TEST(RoundTrip, AveragesKeepTheSectionsThatTheyHave) {
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    for (const std::int32_t kindInTail : {kAverage, kAverageWithStatistics}) {
      if (maker.kind != kAverageWithStatistics) continue;
      Bytes file = Made(maker).File();
      std::uint32_t tail = 0;
      std::memcpy(&tail, file.data() + 12, sizeof tail);
      constexpr std::size_t kMainSection = 64 + 16;
      std::memcpy(file.data() + tail + kMainSection, &kindInTail, sizeof kindInTail);
      OpenedRecording opened(file);
      ASSERT_TRUE(opened.isOpen);
      const Delivered before = EverythingIn(opened.recording);
      EXPECT_EQ(before.count("second values 0"), 1u);
      for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(opened.recording.SaveAndClose(0));
        ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
        EXPECT_EQ(opened.test.memory.Contents("test.rec")->size(), file.size());
        EXPECT_EQ(opened.recording.GetFileClass(&opened.recording.rawHeader), maker.kind);
        EXPECT_TRUE(EverythingIn(opened.recording) == before);
      }
    }
  }
}

// ---- what the tail holds beside what a reader knows

TEST(RoundTrip, RecordsThatNobodyReadStayInTheTail) {
  std::vector<StoredRecord> tail = PlainSetupSections(2);
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

// Epochs have no labels and no corrections, and one marker that is not whole hides all of them.
TEST(RoundTrip, RecordsThatTheKindDoesNotReadAndThoseThatAreBrokenStay) {
  std::vector<StoredRecord> tail =
      PlainSetupSections(1, [](CSetup& setup) { setup.dataKind = kEpochs, setup.pointCount = 2; });
  const std::vector<StoredRecord> kept = {{tag::kMarker, 0, MarkerBytes({})},
                                          {tag::kMarker, 0, Bytes(40, std::byte{1})},
                                          {tag::kLabel, 0, LabelBytes("label", 7)},
                                          {tag::kOverlayParameters, 0, ParametersBytes()},
                                          {tag::kOverlayRow, 0, RowBytes(1, {100})}};
  tail.insert(tail.end(), kept.begin(), kept.end());
  OpenedRecording opened(
      RecordingBuilder().Epoched().Channels(1).Points(2).Epochs({{.samples = {1, 2}}}).Tail(tail));
  ASSERT_TRUE(opened.recording.SaveAndClose(0));
  ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
  const Bytes saved = *opened.test.memory.Contents("test.rec");
  StoredContainer container(std::span<const std::byte>(saved).subspan(opened.recording.TailPosition()));
  std::vector<Bytes> payloads;
  for (const StoredRecord& record : container.records) {
    if (record.tag == tag::kMarker || record.tag == tag::kLabel || record.tag == tag::kOverlayParameters ||
        record.tag == tag::kOverlayRow) {
      payloads.push_back(record.payload);
    }
  }
  std::vector<Bytes> expected;
  for (const StoredRecord& record : kept) expected.push_back(record.payload);
  EXPECT_EQ(payloads, expected);
}

// Parameters that ask not to be saved without rows still stand behind the segments that were read with them.
TEST(RoundTrip, SegmentsWithoutRowsGoOnBeingLaidOver) {
  std::vector<StoredRecord> tail = PlainSetupSections(1);
  tail.push_back({tag::kOverlayParameters, 0, ParametersBytes(0, 0, 1, 0)});
  for (StoredRecord& record : SegmentSections({{0, 4, 1, {2.0}}})) tail.push_back(std::move(record));
  OpenedRecording opened(RecordingBuilder().Channels(1).Samples({10, 20, 30, 40}).Tail(tail));
  const std::vector<float> before = opened.Microvolts(0, 4);
  ASSERT_TRUE(opened.recording.SaveAndClose(0));
  ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
  EXPECT_EQ(opened.Microvolts(0, 4), before);
  EXPECT_NE(before[0], 10.0F);
  EXPECT_TRUE(opened.recording.overlay.HasSegments());
}

}  // namespace
}  // namespace wavelock

// What a recording holds and what a program changes in it come out again when it is saved in the current
// form, whatever form it had.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "tests/support/annotated_recordings.h"
#include "tests/support/delivered.h"
#include "tests/support/every_kind.h"
#include "tests/support/opened_recording.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

Bytes Made(const NamedMaker& maker) {
  TestHost test;
  CRecordingFile recording(0, test.host);
  EXPECT_TRUE(maker.Make(recording, "test.rec"));
  return test.memory.Contents("test.rec").value_or(Bytes());
}

TEST(RoundTrip, EveryKindIsOpenedAndEditedAndSaved) {
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    SCOPED_TRACE(maker.name);
    OpenedRecording opened(Made(maker));
    ASSERT_TRUE(opened.isOpen);
    CRecordingFile& recording = opened.recording;
    EXPECT_THAT(opened.test.user.messages, testing::IsEmpty());
    EXPECT_EQ(recording.GetFileClass(&recording.rawHeader), maker.kind);
    EXPECT_EQ(recording.sampleWidth, maker.width);
    Delivered expected = EverythingIn(recording);
    EXPECT_FALSE(expected.empty());

    opened.Setup().channels[0].label = "Pz";
    opened.Setup().subject->subjectTextA = "somebody";
    recording.markerList.Add(std::make_unique<CMarker>());
    const auto markers = recording.markerList.GetCount();
    ASSERT_TRUE(recording.GetEventTable().Append(EventRecord{}));
    recording.GetEventTable().Elements()[0].stimType = 42;
    const auto edited = std::as_bytes(recording.GetEventTable().Elements());
    if (maker.kind == kContinuous) expected["events"] = {edited.begin(), edited.end()};
    ASSERT_TRUE(recording.labelList.Add({"more", 1}));
    ASSERT_TRUE(recording.SaveAndClose(0));
    EXPECT_EQ(recording.file, nullptr);
    EXPECT_EQ(recording.GetFileName(), "");

    ASSERT_TRUE(recording.OpenFile("test.rec"));
    EXPECT_TRUE(EverythingIn(recording) == expected);
    EXPECT_EQ(opened.Setup().channels[0].label, "Pz");
    EXPECT_EQ(opened.Setup().subject->subjectTextA, "somebody");
    if (maker.kind == kContinuous) {
      EXPECT_THAT(NumbersOf(opened.test.user.messages), testing::Contains(1778)) << "markers are lost";
      EXPECT_EQ(recording.labelList.Entries().size(), 2u);
      EXPECT_EQ(recording.labelList.Entries()[0].text, "more") << "sorted by value";
    } else {
      EXPECT_EQ(recording.markerList.GetCount(), markers);
    }
  }
}

// ---- from every form

// All recordings among the frozen cases, by their file names; but for those whose headers calibrate channels
// otherwise than their setups, as a save takes the setup's calibration, which changes what corrections add.
std::map<std::string, Bytes> FrozenRecordings() {
  std::map<std::string, Bytes> recordings;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(WAVELOCK_FROZEN_CASES)) {
    const std::filesystem::path& path = entry.path();
    if (!entry.is_regular_file() || path.extension() == ".json" || path.extension() == ".md") continue;
    const bool isOddlyCalibrated =
        path.parent_path().filename() == "corrections" && path.filename().string().starts_with("random");
    if (isOddlyCalibrated) continue;
    std::ifstream file(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const auto bytes = std::as_bytes(std::span(text));
    recordings[path.filename().string()] = {bytes.begin(), bytes.end()};
  }
  return recordings;
}

TEST(RoundTrip, EveryFormDeliversInTheCurrentOneWhatItDeliveredBefore) {
  int saved = 0;
  for (const auto& [name, bytes] : FrozenRecordings()) {
    SCOPED_TRACE(name);
    TestHost test;
    test.user.saysYesToAll = true;
    if (name == "writer_4_3.rec") test.user.ExpectDialog("CNewerVersionPrompt", {});
    test.memory.Put(name, bytes);
    CRecordingFile old(1, test.host);
    if (!old.OpenFile(name)) continue;
    const Delivered delivered = EverythingIn(old);
    const int kind = old.GetFileClass(&old.rawHeader);
    const std::uint64_t samples = old.GetContinuousSampleCount();
    if (!old.SaveAndClose(0)) {  // damaged
      EXPECT_TRUE(test.memory.Contents(name) == bytes);
      continue;
    }
    ++saved;
    CRecordingFile opened(1, test.host);
    for (int upgrade = 0; upgrade < 2; ++upgrade) {
      ASSERT_TRUE(opened.OpenFile(name));
      EXPECT_TRUE(EverythingIn(opened) == delivered);
      EXPECT_EQ(opened.rawHeader.header.headerRevision, 16);
      if (kind == kContinuous) {
        EXPECT_EQ(opened.rawHeader.header.sampleLayout, 1);
        EXPECT_EQ(opened.rawHeader.header.sampleCountField, samples);
      }
      EXPECT_EQ(opened.GetFileClass(&opened.rawHeader), kind);
      EXPECT_EQ(opened.sampleWidth, old.sampleWidth);
      EXPECT_EQ(opened.halveSpectrum, 0);
      ASSERT_TRUE(opened.SaveAndClose(0));
    }
  }
  EXPECT_GT(saved, 100);
}

TEST(RoundTrip, EventsThatNoByteOffsetHoldsStay) {
  OpenedRecording opened(
      RecordingBuilder().Samples({1}).EventTableKind(3).Events({{.stimType = 1, .sample = 0x7FFFFFFF}}));
  const Delivered delivered = EverythingIn(opened.recording);
  ASSERT_TRUE(opened.recording.SaveAndClose(0));
  ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
  EXPECT_EQ(EverythingIn(opened.recording), delivered);
}

TEST(RoundTrip, CopyLeavesTheRecordingOpenAndAsItWas) {
  const Bytes bytes = RecordingBuilder().Channels(2).Samples({1, 2, 3, 4}).Layout(3).Build();
  OpenedRecording opened(bytes);
  ASSERT_TRUE(opened.recording.SaveCopy("/elsewhere/copy.rec"));
  EXPECT_NE(opened.recording.file, nullptr);
  EXPECT_EQ(opened.test.memory.Contents("test.rec"), bytes);
  OpenedRecording copy(*opened.test.memory.Contents("/elsewhere/copy.rec"));
  EXPECT_EQ(EverythingIn(copy.recording), EverythingIn(opened.recording));
}

TEST(RoundTrip, DataThatAreNotUnderstoodStay) {
  const RecordingBuilder continuous =
      RecordingBuilder().Samples(std::vector<std::int32_t>(100)).Events({{.stimType = 1, .sample = 5}});
  RecordingBuilder uncounted;
  uncounted.Epoched().Channels(1).Points(2).Epochs({{.samples = {1, 2}}, {.samples = {3, 4}}}).PutU16(362, 1);
  for (const RecordingBuilder& builder :
       {RecordingBuilder(continuous).FileSize(continuous.EventTablePosition() + 4), uncounted,
        RecordingBuilder(continuous).Layout(3).PutU32(894, 0),
        RecordingBuilder().Averaged().Channels(1).Points(2).Data(Bytes(2 * (5 + 8)))}) {
    const Bytes bytes = builder.Build();
    OpenedRecording opened(bytes);
    EXPECT_TRUE(opened.isOpen);
    EXPECT_FALSE(opened.recording.SaveAndClose(0));
    EXPECT_TRUE(opened.recording.file || opened.recording.keptData);
    EXPECT_EQ(opened.test.memory.Contents("test.rec"), bytes);
    EXPECT_FALSE(opened.test.memory.Exists("test.rec.0.new"));
  }
}

TEST(RoundTrip, AFileThatHasGrownSinceItWasOpenedStays) {
  OpenedRecording opened(RecordingBuilder().Channels(2).Samples({1, 2, 3, 4}));
  const std::unique_ptr<File> recorder = opened.test.memory.Open("test.rec", OpenMode::kReadWrite);
  ASSERT_TRUE(recorder && recorder->Seek(0, SeekOrigin::kEnd) && recorder->Write(Bytes(40)));
  const auto grown = opened.test.memory.Contents("test.rec");
  EXPECT_FALSE(opened.recording.SaveAndClose(0));
  EXPECT_EQ(opened.test.memory.Contents("test.rec"), grown);
}

TEST(RoundTrip, AveragesKeepTheSectionsThatTheyHaveWhateverTheTailSays) {
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    if (maker.kind != kAverageWithStatistics) continue;
    Bytes file = Made(maker);
    std::uint32_t tail = 0;
    std::memcpy(&tail, file.data() + 12, sizeof tail);
    constexpr std::int32_t kKind = kAverage;
    constexpr std::size_t kMainSection = 64 + 16;
    std::memcpy(file.data() + tail + kMainSection, &kKind, sizeof kKind);
    OpenedRecording opened(file);
    const Delivered before = EverythingIn(opened.recording);
    EXPECT_EQ(before.count("second values 0"), 1u);
    ASSERT_TRUE(opened.recording.SaveAndClose(0));
    ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
    EXPECT_EQ(opened.test.memory.Contents("test.rec")->size(), file.size());
    EXPECT_EQ(opened.recording.GetFileClass(&opened.recording.rawHeader), maker.kind);
    EXPECT_TRUE(EverythingIn(opened.recording) == before);
  }
}

// ---- what the tail holds beside what a reader knows

// Epochs have no labels and no corrections, one marker that is not whole hides all of them, and the
// derivation file of a derived channel may not be there.
TEST(RoundTrip, RecordsThatWereNotReadStayInTheTail) {
  std::vector<StoredRecord> tail =
      PlainSetupSections(1, [](CSetup& setup) { setup.dataKind = kEpochs, setup.pointCount = 2; });
  const std::vector<StoredRecord> kept = {
      {123, 5, ByteWriter().Text("unknown")},          {130000, 0, {}},
      {20001, 0, ByteWriter().Text("derived")},        {tag::kMarker, 0, MarkerBytes({})},
      {tag::kMarker, 0, Bytes(40, std::byte{1})},      {tag::kLabel, 0, LabelBytes("label", 7)},
      {tag::kOverlayParameters, 0, ParametersBytes()}, {tag::kOverlayRow, 0, RowBytes(1, {100})}};
  const std::size_t known = tail.size();
  tail.insert(tail.end(), kept.begin(), kept.end());
  OpenedRecording opened(
      RecordingBuilder().Epoched().Channels(1).Points(2).Epochs({{.samples = {1, 2}}}).Tail(tail));
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(opened.recording.SaveAndClose(0));
    const Bytes saved = *opened.test.memory.Contents("test.rec");
    ASSERT_TRUE(opened.recording.OpenFile("test.rec"));
    StoredContainer container(std::span<const std::byte>(saved).subspan(opened.recording.TailPosition()));
    ASSERT_EQ(container.records.size(), known + kept.size() + 1);
    EXPECT_EQ(container.records.back().tag, 70000u);
    for (std::size_t k = 0; k < kept.size(); ++k) {
      const StoredRecord& record = container.records[known + k];
      EXPECT_EQ(record.tag, kept[k].tag);
      EXPECT_EQ(record.version, kept[k].version);
      EXPECT_EQ(record.payload, kept[k].payload);
    }
  }
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

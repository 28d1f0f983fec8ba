// Recordings that are created: every byte of their data, and what the header says of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

#include "tests/support/byte_writer.h"
#include "tests/support/created_recording.h"
#include "tests/support/stored_container.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;
constexpr std::size_t kDataStart = CreatedRecording::kDataStart;

Bytes Part(const Bytes& bytes, std::size_t from, std::size_t count) {
  if (from + count > bytes.size()) return {};
  const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(from);
  return {first, first + static_cast<std::ptrdiff_t>(count)};
}

std::uint32_t U32At(const Bytes& bytes, std::size_t at) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

// The data stand behind the header, the tail behind the data, and its last record closes it.
void ExpectDataAndTail(const Bytes& file, const ByteWriter& data, int width, bool hasEvents = false) {
  const std::size_t size = data.Written().size();
  EXPECT_EQ(Part(file, kDataStart, size), data.Written());
  const std::size_t tail = U32At(file, 12);
  if (!hasEvents) {
    EXPECT_EQ(tail, kDataStart + size);
  }
  ASSERT_LT(tail, file.size());
  const StoredContainer container(Part(file, tail, file.size() - tail));
  EXPECT_EQ(container.flags, width == 4 ? 1 : 0);
  ASSERT_FALSE(container.records.empty());
  EXPECT_EQ(container.records.front().tag, 1000u);
  EXPECT_EQ(container.records.back().tag, 70000u);
  EXPECT_EQ(container.records.back().payload, ByteWriter().U32(1).Written());
}

class CreatedBytes : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(Widths, CreatedBytes, testing::Values(2, 4));

TEST_P(CreatedBytes, ContinuousSamplesAndEventsByTheirOffsets) {
  const auto width = static_cast<std::size_t>(GetParam());
  CreatedRecording created(kContinuous, GetParam());
  created.Create();
  const std::vector<float> values = {1, -3, 2.3F, 2.6F, -0.3F, 40000};  // the last is beyond 16 bits
  ASSERT_TRUE(created.recording.AppendContinuousFloat(values.data(), BytesOfFloats(values)));
  EventRecord event{};
  event.stimType = 0x0102;
  event.SetKeypad(3);
  event.SetSegmentClass(0xB);
  event.point = 2;
  event.extraF = 9;
  ASSERT_TRUE(created.recording.GetEventTable().Append(event));
  ASSERT_TRUE(created.recording.labelList.Add({"two", 2}) && created.recording.labelList.Add({"one", 1}));
  const Bytes file = created.Saved();

  ByteWriter data;
  for (const std::int32_t count : {2, -3, 5, 3, -1, width == 2 ? 32767 : 40000})
    data.Word(static_cast<std::uint32_t>(count), width);
  const std::size_t table = kDataStart + data.Written().size();
  data.U8(2).U32(19).U32(0).U16(0x0102).U8(0).U8(0xB3);
  data.U32(static_cast<std::uint32_t>(kDataStart + 2 * 2 * width)).Zeros(10).U8(9);
  ExpectDataAndTail(file, data, GetParam(), true);
  EXPECT_EQ(U32At(file, 886), table);
  EXPECT_EQ(U32At(file, 12), kDataStart + data.Written().size());
  EXPECT_EQ(U32At(file, 864), 3u) << "samples";
  EXPECT_EQ(U32At(file, 353), 1u) << "events";
  const auto messages = NumbersOf(created.test.user.messages);
  EXPECT_EQ(messages, width == 2 ? std::vector<int>{1764} : std::vector<int>{});
}

TEST_P(CreatedBytes, EpochsWithTheirHeads) {
  const auto width = static_cast<std::size_t>(GetParam());
  CreatedRecording created(kEpochs, GetParam());
  created.Setup().pointCount = 2;
  created.Setup().averagedSweeps = 2;
  created.Create();
  ByteWriter data;
  for (std::uint16_t i = 0; i < 2; ++i) {
    const std::vector<float> values = {1, 2, 3, static_cast<float>(4 + i)};
    ASSERT_TRUE(created.recording.AppendEpochHead(0x0201, 1, 7, 0.5F, i));
    ASSERT_TRUE(created.recording.AppendEpochFloat(values.data(), BytesOfFloats(values)));
    data.U8(1).U16(0x0201).U16(7).F32(0.5F).U16(i).Zeros(2);
    for (const int count : {2, 2, 6, 4 + i}) data.Word(static_cast<std::uint64_t>(count), width);
  }
  const std::vector<float> values = {1, 2, 3};
  ASSERT_TRUE(created.recording.AppendEpochFloat(values.data(), BytesOfFloats(values)));
  for (const int count : {2, 2, 6}) data.Word(static_cast<std::uint64_t>(count), width);
  ExpectDataAndTail(created.Saved(), data, GetParam());
  EXPECT_FALSE(created.recording.AppendEpochHead(1, 1, 1, 1, 1));
  EXPECT_FALSE(created.recording.AppendEpochFloat(values.data(), BytesOfFloats(values)));
}

TEST_P(CreatedBytes, SpectraAreRowsOfFloats) {
  CreatedRecording created(kEpochs, GetParam());
  CSetup& setup = created.Setup();
  setup.frequencyDomain = setup.hasImaginary = 1;
  setup.pointCount = 2;
  setup.spectrumPoints = 4;
  created.Create();
  CTFDEpoch set(&setup, 0);
  std::copy_n(std::vector<float>{1, 2, 3, 4}.begin(), 4, set.mainBlock);
  std::copy_n(std::vector<float>{5, 6, 7, 8}.begin(), 4, set.imaginaryBlock);
  ByteWriter data;
  for (int i = 0; i < 2; ++i) {  // in whatever order the values lie in memory
    ASSERT_TRUE(created.recording.AppendEpochHead(0, 0, 0, 0, 0));
    ASSERT_TRUE(created.recording.WriteTimeFrequencyData(&set));
    data.Zeros(13).F32(1).F32(2).F32(5).F32(6).F32(3).F32(4).F32(7).F32(8);
    ASSERT_TRUE(set.Multiplex());
  }
  set.FreeImaginary();
  EXPECT_FALSE(created.recording.WriteTimeFrequencyData(&set));
  EXPECT_FALSE(created.recording.WriteTimeFrequencyData(nullptr));
  ExpectDataAndTail(created.Saved(), data, GetParam());
}

TEST_P(CreatedBytes, AveragesAreSumsOfUnscaledValuesWithVarianceAndStatistics) {
  CreatedRecording created(kAverage, GetParam());
  CSetup& setup = created.Setup();
  setup.pointCount = 2;
  setup.acceptedSweeps = 3;
  setup.channels[0].sweeps = 3;
  setup.channels[1].sweeps = 2;
  created.Create();
  const std::vector<float> values = {1, 10, 2, 20};
  const std::vector<float> sweeps = {1, 4, 2, 5, 3, 6};
  CRecordingFile& recording = created.recording;
  EXPECT_EQ(recording.WriteAverageSection(values.data(), BytesOfFloats(values), 1), 2 * (5 + 2 * 4));
  EXPECT_EQ(recording.WriteVarianceSection(values.data(), BytesOfFloats(values)), 2 * 2 * 4);
  EXPECT_EQ(recording.WriteAverageSection(sweeps.data(), BytesOfFloats(sweeps), 3), 2 * 3 * 4);
  EXPECT_EQ(recording.WriteAverageSection(sweeps.data(), BytesOfFloats(sweeps), 4), 2 * 3 * 4);
  EXPECT_EQ(recording.WriteAverageSection(sweeps.data(), BytesOfFloats(sweeps), 2), 0);
  ByteWriter data;
  data.Zeros(5).F32(1.5F).F32(3).Zeros(5).F32(20).F32(40);  // times 3 and 2 sweeps, by a scale of 2 and of 1
  data.F32(1).F32(2).F32(10).F32(20);
  for (int i = 0; i < 2; ++i) data.F32(1).F32(2).F32(3).F32(4).F32(5).F32(6);
  const Bytes file = created.Saved();
  ExpectDataAndTail(file, data, GetParam());
  EXPECT_EQ(std::to_integer<int>(file[375]), 1) << "has a variance";
  EXPECT_EQ(std::to_integer<int>(file[538]), 6) << "has statistics";
}

TEST_P(CreatedBytes, PairsAndTheMatrixThatFindsThem) {
  CreatedRecording created(kTimeFrequency, GetParam());
  CSetup& setup = created.Setup();
  setup.frequencyDomain = setup.hasImaginary = 1;
  setup.pointCount = 2;
  setup.spectrumPoints = 4;
  created.Create();
  CTFDPaired pairs(&setup, 2);
  pairs.pairIndex[0][0] = pairs.pairIndex[0][1] = pairs.pairIndex[1][1] = 1;
  std::iota(pairs.real.All().begin(), pairs.real.All().end(), 1.0F);
  std::iota(pairs.imaginary.All().begin(), pairs.imaginary.All().end(), 5.0F);
  ASSERT_TRUE(created.recording.WritePairedData(&pairs));
  const std::uint32_t apart = GetParam() == 4 ? 40 : 24;
  ByteWriter data;
  data.U16(1).U16(0).U32(0).F32(1).F32(2).F32(5).F32(6).Zeros(apart - 24);
  data.U16(1).U16(1).U32(0).F32(3).F32(4).F32(7).F32(8);
  data.U32(0).U32(kDataStart).U32(kDataStart).U32(kDataStart + apart);
  pairs.pairIndex[1][0] = 2;
  EXPECT_FALSE(created.recording.WritePairedData(&pairs)) << "there is no such channel";
  EXPECT_FALSE(created.recording.WritePairedData(nullptr));
  ExpectDataAndTail(created.Saved(), data, GetParam());
}

// ---- the header

// A header as it is filled from a setup that `change` has changed.
template <class Change>
RecordingHeader Filled(Change&& change) {
  CreatedRecording created(kAverage, 2);
  change(created.Setup());
  HeaderImage image{};
  EXPECT_TRUE(created.recording.FillHeader(&created.Setup(), &image));
  return image.header;
}

TEST(FilledHeader, KindsHaveTheirCodes) {
  const int codes[][5] = {// form, mode, time-frequency, layout
                          {kAverage, 0, 1, 0, 0},
                          {kEpochs, 1, 0, 0, 0},
                          {kContinuous, 2, 3, 0, 1},
                          {kAverageWithStatistics, 0, 6, 0, 0},
                          {kTimeFrequency, 1, 0, 1, 0}};
  for (const auto& [kind, form, mode, timeFrequency, layout] : codes) {
    const RecordingHeader header = Filled([kind = kind](CSetup& setup) { setup.dataKind = kind; });
    EXPECT_EQ(header.fileForm, form);
    EXPECT_EQ(header.acquisitionMode, mode);
    EXPECT_EQ(header.timeFrequencyFlag, timeFrequency);
    EXPECT_EQ(header.sampleLayout, layout);
    EXPECT_EQ(header.headerRevision, 16);
    EXPECT_EQ(header.blockBytes, 1u);
    EXPECT_EQ(header.countD, 1);
  }
}

TEST(FilledHeader, UnknownKindsStopHalfWay) {
  CreatedRecording created(kAverage, 2);
  for (const int kind : {-1, 5}) {
    HeaderImage image{};
    created.Setup().dataKind = kind;
    EXPECT_FALSE(created.recording.FillHeader(&created.Setup(), &image));
    EXPECT_EQ(image.header.versionText.View(), "Version 3.0");
    EXPECT_EQ(image.header.headerRevision, 0);
  }
  EXPECT_FALSE(created.recording.FillHeader(nullptr, nullptr));
}

TEST(FilledHeader, ValuesThatCannotStandThereAreReplacedInTheSetupToo) {
  const struct { float value, stored; } kSummaries[] = {{200, 200}, {200.5F, 0}, {-0.5F, 0}};
  for (const auto& [value, stored] : kSummaries) {
    CreatedRecording created(kAverage, 2);
    HeaderImage image{};
    created.Setup().summaryA = value;
    created.Setup().indexA = 516;
    created.Setup().valueB = -1;
    created.Setup().triggerMode = 1;
    created.Setup().adcRangeVolts = 0;
    ASSERT_TRUE(created.recording.FillHeader(&created.Setup(), &image));
    EXPECT_EQ(image.header.summaryA, stored);
    EXPECT_EQ(created.Setup().summaryA, stored);
    EXPECT_EQ(image.header.indexA, 0);
    EXPECT_EQ(image.header.valueB, 20);
    EXPECT_EQ(image.header.triggerMode, 2);
    EXPECT_EQ(created.Setup().triggerMode, 2);
    EXPECT_EQ(created.Setup().adcRangeVolts, 5.5F);
    EXPECT_EQ(created.Setup().adcCounts, 65536);
  }
}

TEST(FilledHeader, RatesAreCoded) {
  const int codes[][2] = {{1, 1}, {60000, 60000}, {60100, 60601}, {100000, 61000}};
  for (const auto& [rate, code] : codes) {
    const RecordingHeader header = Filled([rate = rate](CSetup& setup) {
      setup.fromRecording = 0;
      setup.sampleRate = rate;
    });
    EXPECT_EQ(header.rateCode, code);
  }
}

TEST(FilledHeader, TimesAreSeconds) {
  const RecordingHeader header = Filled([](CSetup& setup) {
    setup.actualRate = 1000;
    setup.pointCount = 500;
    setup.timeStart = -0.125F;
    setup.windowSeconds = 0.4F;
    setup.windowAStart = -100;
    setup.windowBEnd = 250;
    setup.displayStart = -1000;
    setup.displayEnd = 250;
  });
  EXPECT_EQ(header.windowPoints, 401);
  EXPECT_EQ(header.windowAStart, -0.1F);
  EXPECT_EQ(header.windowBEnd, 0.25F);
  EXPECT_EQ(header.timeStart, -0.125F);
  EXPECT_EQ(header.timeEnd, 0.375F);
  EXPECT_EQ(header.viewEnd, 0.375F);
  EXPECT_EQ(header.displayStart, -0.125F) << "raised to the axis";
  EXPECT_EQ(header.displayEnd, 0.25F);
}

TEST(FilledHeader, SubjectAmplifierAndChannelsHaveTheirCodes) {
  CreatedRecording created(kContinuous, 2);
  CSetup& setup = created.Setup();
  setup.subject->sex = 1;
  setup.subject->hand = 2;
  setup.subject->operatorName = "a name of more than nineteen";
  setup.mainsFrequency = 60;
  setup.triggerCommon = 1;
  setup.adcCounts = 65536;
  setup.adcRangeVolts = 5.5F;
  SetupChannel& channel = setup.channels[1];
  channel.label = "a long label";
  channel.countScale = 5.5F * 1e6F / (65536.0F * 500);
  channel.lowpassHz = 100;
  channel.highpassHz = 0.03F;
  channel.disabled = 1;
  channel.layoutSelected = {};
  channel.layoutSelected[7] = 1;
  channel.boxLeft[0] = 0.5F;
  channel.boxTop[0] = 0.5F;
  HeaderImage image{};
  ASSERT_TRUE(created.recording.FillHeader(&setup, &image));
  EXPECT_EQ(image.header.subjectSex, 'F');
  EXPECT_EQ(image.header.subjectHand, 'M');
  EXPECT_EQ(image.header.operatorName.View(), "a name of more than");
  EXPECT_EQ(image.header.mainsCode, 2);
  EXPECT_EQ(image.header.triggerFlagCode, 2);
  EXPECT_EQ(image.header.gainBase, 150);
  const ChannelRecord& record = image.channels[1];
  EXPECT_EQ(record.label.View(), "a long la");
  EXPECT_EQ(record.gainIndex, 2);
  EXPECT_EQ(record.lowpassIndex, 4);
  EXPECT_EQ(record.highpassIndex, 2);
  EXPECT_EQ(record.enabled, 0);
  EXPECT_EQ(record.layoutIndex, 7);
  EXPECT_EQ(record.channelLink, -1);
  EXPECT_EQ(record.boxX, 320.0F);
  EXPECT_EQ(record.boxY, 106.5F);
  EXPECT_NEAR(record.calibration, 34.375, 1e-5);
}

// ---- saving as such

TEST(Creating, StampsBecomeDateAndTimeOfTheSubject) {
  CreatedRecording created(kContinuous, 2);
  created.Create();
  ASSERT_TRUE(created.recording.SaveAndClose(1119522600));
  EXPECT_EQ(created.Setup().subject->recordDate, "06/23/2005");
  EXPECT_EQ(created.Setup().subject->recordTime, "10:30:00");
}

TEST(Creating, ClosedRecordingsCannotBeSavedAndKeepTheirSetup) {
  CreatedRecording created(kContinuous, 2);
  EXPECT_FALSE(created.recording.SaveAndClose(0));
  EXPECT_FALSE(created.recording.WriteEventTable());
  created.Create();
  EXPECT_TRUE(created.recording.WriteEventTable());
  EXPECT_EQ(created.test.memory.Contents(CreatedRecording::kPath)->size(), kDataStart + 9);
  created.Saved();
  EXPECT_EQ(created.recording.file, nullptr);
  EXPECT_EQ(created.recording.GetFileName(), "");
  EXPECT_EQ(created.Setup().channelCount, 2);
  EXPECT_FALSE(created.recording.SaveAndClose(0));
  created.test.user.ExpectSavePath("own.ast");
  EXPECT_TRUE(created.recording.SaveSetupAs());
  EXPECT_TRUE(created.test.memory.Exists("own.ast"));
}

TEST(Creating, ImpossibleWidthsAndFullDisksLeaveNoFile) {
  CreatedRecording created(kContinuous, 2);
  EXPECT_FALSE(created.recording.CreateFile(CreatedRecording::kPath, 3));
  created.test.memory.LimitSize(100);
  EXPECT_FALSE(created.recording.CreateFile(CreatedRecording::kPath, 2));
  EXPECT_FALSE(created.test.memory.Exists(CreatedRecording::kPath));
  EXPECT_EQ(created.recording.file, nullptr);
}

TEST(Creating, AFailureLetsGoOfWhatWasOpenAndLeavesItAsItWas) {
  for (const int kind : {kContinuous, kAverage}) {
    const std::vector<float> values = {1, 2, 3, 4};
    CreatedRecording created(static_cast<DataKind>(kind), 2);
    created.Setup().pointCount = 2;
    created.Create();
    if (kind == kContinuous) created.recording.AppendContinuousFloat(values.data(), 16);
    if (kind == kAverage) created.recording.WriteAverageSection(values.data(), 16, 1);
    const Bytes saved = created.Saved();
    ASSERT_TRUE(created.recording.OpenFile(CreatedRecording::kPath));
    created.test.memory.Put("/locked.rec", {});
    created.test.memory.SetStatus("/locked.rec", {.readOnly = true});
    EXPECT_FALSE(created.recording.CreateFile("/locked.rec", 4));
    EXPECT_FALSE(created.recording.AppendContinuousFloat(values.data(), 16));
    EXPECT_FALSE(created.recording.SaveAndClose(0));
    EXPECT_EQ(created.test.memory.Contents(CreatedRecording::kPath), saved);
  }
}

TEST(Creating, NothingIsWrittenIntoARecordingThatWasOpened) {
  CreatedRecording created(kContinuous, 2);
  created.Create();
  const Bytes saved = created.Saved();
  ASSERT_TRUE(created.recording.OpenFile(CreatedRecording::kPath));
  const float values[4] = {};
  EXPECT_FALSE(created.recording.AppendContinuousFloat(values, sizeof values));
  EXPECT_FALSE(created.recording.AppendEpochHead(1, 1, 1, 1, 1));
  EXPECT_FALSE(created.recording.AppendEpochFloat(values, sizeof values));
  EXPECT_EQ(created.recording.WriteAverageSection(values, sizeof values, 1), 0);
  EXPECT_EQ(created.recording.WriteVarianceSection(values, sizeof values), 0);
  EXPECT_FALSE(created.recording.WriteEventTable());
  CTFDEpoch data(&created.Setup(), 0);
  EXPECT_FALSE(created.recording.WriteTimeFrequencyData(&data));
  EXPECT_EQ(created.test.memory.Contents(CreatedRecording::kPath), saved);
}

TEST(Creating, AnotherNumberOfChannelsThanThereIsRoomForIsNotWhole) {
  CreatedRecording created(kContinuous, 2);
  created.Create();
  created.Setup().channelCount = 1;
  EXPECT_TRUE(created.recording.SaveAndClose(0));
  EXPECT_FALSE(created.recording.IsSavedWhole());
}

TEST(Creating, FilesAreReadOnlyWhenTheProfileWantsIt) {
  for (const int wanted : {0, 1}) {
    CreatedRecording created(kContinuous, 2);
    created.test.profile.SetInt(profile::kState, profile::kAutoReadOnly, wanted);
    created.Create();
    created.Saved();
    EXPECT_EQ(created.test.memory.Status(CreatedRecording::kPath)->readOnly, wanted != 0);
    ASSERT_TRUE(created.recording.OpenFile(CreatedRecording::kPath));
    EXPECT_TRUE(created.test.user.messages.empty());
    EXPECT_EQ(created.recording.IsFileWritable(), wanted == 0);
    EXPECT_EQ(created.recording.SaveAndClose(0), wanted == 0);
  }
}

TEST(Creating, ValuesThatWereLimitedAreToldOnce) {
  CreatedRecording created(kContinuous, 2);
  for (const float value : {40'000.0F, 4.0F}) {
    const std::vector<float> values = {value, value};
    created.Create();
    ASSERT_TRUE(created.recording.AppendContinuousFloat(values.data(), BytesOfFloats(values)));
    created.Saved();
    EXPECT_EQ(created.test.user.messages.size(), 1u) << value;
  }
}

TEST(Creating, SamplesOfManyPiecesArriveInTheirOrder) {
  CreatedRecording created(kContinuous, 2);
  created.Create();
  std::vector<float> values(200'000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(i % 1009);
  ASSERT_TRUE(created.recording.AppendContinuousFloat(values.data(), BytesOfFloats(values)));
  const Bytes file = created.Saved();
  ByteWriter data;
  for (std::size_t i = 0; i < values.size(); ++i)
    data.U16(static_cast<std::uint16_t>(i % 2 == 0 ? 2 * (i % 1009) : i % 1009));
  EXPECT_TRUE(Part(file, kDataStart, data.Written().size()) == data.Written());
}

TEST(Creating, RecordingsThatWereNeverSavedCannotBeOpened) {
  TestHost test;
  {
    CRecordingFile recording(1, test.host);
    ASSERT_TRUE(recording.CreateFile(CreatedRecording::kPath, 2));
    const std::vector<float> values(320, 3.0F);
    ASSERT_TRUE(recording.AppendContinuousFloat(values.data(), 1280));
  }
  EXPECT_EQ(test.memory.Contents(CreatedRecording::kPath)->size(), 900u + 32 * 75 + 640);
  CRecordingFile recording(1, test.host);
  EXPECT_FALSE(recording.OpenFile(CreatedRecording::kPath));
}

}  // namespace
}  // namespace wavelock

// Recordings that are created: what is refused, what a failure leaves, and what the header cannot hold. The
// bytes of all kinds are those of the frozen cases.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/byte_writer.h"
#include "tests/support/created_recording.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;
constexpr std::size_t kDataStart = CreatedRecording::kDataStart;

Bytes Part(const Bytes& bytes, std::size_t from, std::size_t count) {
  if (from + count > bytes.size()) return {};
  const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(from);
  return {first, first + static_cast<std::ptrdiff_t>(count)};
}

// ---- data

TEST(Creating, PairsLieTwiceAsFarApartInWideRecordings) {
  for (const int width : {2, 4}) {
    CreatedRecording created(kTimeFrequency, width);
    CSetup& setup = created.Setup();
    setup.frequencyDomain = setup.hasImaginary = 1;
    setup.pointCount = 2;
    setup.spectrumPoints = 4;
    created.Create();
    CTFDPaired pairs(&setup, 2);
    pairs.pairIndex[0][0] = pairs.pairIndex[0][1] = pairs.pairIndex[1][1] = 1;
    std::fill(pairs.real.All().begin(), pairs.real.All().end(), 1.0F);
    std::fill(pairs.imaginary.All().begin(), pairs.imaginary.All().end(), 5.0F);
    ASSERT_TRUE(created.recording.WritePairedData(&pairs));
    pairs.pairIndex[1][0] = 2;
    EXPECT_FALSE(created.recording.WritePairedData(&pairs)) << "there is no such channel";
    EXPECT_FALSE(created.recording.WritePairedData(nullptr));
    const std::uint32_t apart = width == 4 ? 40 : 24;
    ByteWriter data;
    data.U16(1).U16(0).U32(0).F32(1).F32(1).F32(5).F32(5).Zeros(apart - 24);
    data.U16(1).U16(1).U32(0).F32(1).F32(1).F32(5).F32(5);
    data.U32(0).U32(kDataStart).U32(kDataStart).U32(kDataStart + apart);
    EXPECT_EQ(Part(created.Saved(), kDataStart, data.Written().size()), data.Written());
  }
}

TEST(Creating, WhatIsNoDataIsRefused) {
  CreatedRecording created(kEpochs, 2);
  CSetup& setup = created.Setup();
  setup.frequencyDomain = setup.hasImaginary = 1;
  setup.pointCount = 2;
  setup.spectrumPoints = 4;
  created.Create();
  CRecordingFile& recording = created.recording;
  CTFDEpoch set(&setup, 0);
  std::copy_n(std::vector<float>{1, 2, 3, 4}.begin(), 4, set.mainBlock);
  std::copy_n(std::vector<float>{5, 6, 7, 8}.begin(), 4, set.imaginaryBlock);
  ASSERT_TRUE(set.Multiplex()) << "in whatever order the values lie in memory";
  EXPECT_TRUE(recording.WriteTimeFrequencyData(&set));
  const Bytes rows = ByteWriter().F32(1).F32(2).F32(5).F32(6).F32(3).F32(4).F32(7).F32(8);
  set.FreeImaginary();
  EXPECT_FALSE(recording.WriteTimeFrequencyData(&set));
  EXPECT_FALSE(recording.WriteTimeFrequencyData(nullptr));
  const float values[] = {1, 2, 3, 4};
  EXPECT_EQ(recording.WriteAverageSection(values, sizeof values, 2), 0) << "there is no such section";
  EXPECT_EQ(Part(created.Saved(), kDataStart, rows.size()), rows);
  EXPECT_FALSE(recording.AppendEpochHead(1, 1, 1, 1, 1));
  EXPECT_FALSE(recording.AppendEpochFloat(values, sizeof values));
}

TEST(Creating, SamplesOfManyPiecesArriveInTheirOrder) {
  CreatedRecording created(kContinuous, 2);
  created.Create();
  std::vector<float> values(200'000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(i % 1009);
  ASSERT_TRUE(created.recording.AppendContinuousFloat(values.data(), BytesOfFloats(values)));
  ByteWriter data;
  for (std::size_t i = 0; i < values.size(); ++i)
    data.U16(static_cast<std::uint16_t>(i % 2 == 0 ? 2 * (i % 1009) : i % 1009));
  EXPECT_TRUE(Part(created.Saved(), kDataStart, data.Written().size()) == data.Written());
}

TEST(Creating, ValuesThatWereLimitedAreToldOnce) {
  CreatedRecording created(kContinuous, 2);
  for (const float value : {40'000.0F, 4.0F}) {
    const std::vector<float> values = {value, value};
    created.Create();
    ASSERT_TRUE(created.recording.AppendContinuousFloat(values.data(), BytesOfFloats(values)));
    created.Saved();
    EXPECT_FALSE(created.recording.SaveAndClose(0));
    EXPECT_EQ(NumbersOf(created.test.user.messages), std::vector<int>{1764}) << value;
  }
  const std::vector<float> values = {40'000.0F, 4.0F};
  created.Create();
  ASSERT_TRUE(created.recording.AppendContinuousFloat(values.data(), BytesOfFloats(values)));
  created.Create();
  created.Saved();
  EXPECT_EQ(created.test.user.messages.size(), 1u) << "what was begun anew is forgotten";
}

// ---- the header

TEST(FilledHeader, RatesAbove60000AreCodedByTheirHundreds) {
  CreatedRecording created(kAverage, 2);
  EXPECT_FALSE(created.recording.FillHeader(nullptr, nullptr));
  const int codes[][2] = {{1, 1}, {60000, 60000}, {60100, 60601}, {100000, 61000}};
  for (const auto& [rate, code] : codes) {
    HeaderImage image{};
    created.Setup().actualRate = static_cast<float>(rate);
    EXPECT_TRUE(created.recording.FillHeader(&created.Setup(), &image));
    EXPECT_EQ(image.header.rateCode, code);
  }
}

TEST(FilledHeader, WhatCannotStandThereIsReplacedInTheSetupToo) {
  CreatedRecording created(kAverage, 2);
  CSetup& setup = created.Setup();
  setup.indexA = 516;
  setup.valueB = -1;
  setup.windowSeconds = -1;
  setup.triggerMode = 1;
  setup.displayStart = -1000;
  setup.channels[1].lowpassHz = 100;
  setup.channels[1].layoutSelected = {0, 1, 1};
  HeaderImage image{};
  ASSERT_TRUE(created.recording.FillHeader(&setup, &image));
  const RecordingHeader& header = image.header;
  EXPECT_TRUE(header.indexA == 0 && setup.indexA == 0);
  EXPECT_TRUE(header.valueB == 20 && setup.valueB == 20);
  EXPECT_EQ(setup.windowSeconds, 0.6F);
  EXPECT_TRUE(header.triggerMode == 2 && setup.triggerMode == 2);
  EXPECT_EQ(header.displayStart, header.timeStart) << "raised to the axis";
  EXPECT_EQ(image.channels[1].lowpassIndex, 4);
  EXPECT_EQ(image.channels[1].layoutIndex, 1) << "the first behind layout 0";
}

// ---- saving as such

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

TEST(Creating, StatisticsThatWereNotWrittenAreNotTold) {
  CreatedRecording created(kAverageWithStatistics, 2);
  created.Create();
  created.Saved();
  EXPECT_EQ(created.Setup().dataKind, kAverage);
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

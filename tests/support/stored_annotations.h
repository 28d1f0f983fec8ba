// Records of markers, labels and corrections as a container stores them, written without the library's help,
// and a container to keep them in.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tests/support/byte_writer.h"
#include "tests/support/stored_container.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {

// A container of these records alone, with its position behind them.
struct ContainerInMemory {
  explicit ContainerInMemory(const std::vector<StoredRecord>& records = {}) {
    EXPECT_EQ(tff.WriteHeader(), 64);
    for (const StoredRecord& record : records) {
      EXPECT_TRUE(tff.WriteSection(record.tag, static_cast<std::uint32_t>(record.payload.size()),
                                   record.payload.data(), record.version));
    }
  }

  TestHost test;
  std::unique_ptr<File> file = test.memory.Open("/c", OpenMode::kCreate);
  CTffFile tff{*file, 0};
};

inline std::vector<std::byte> Padded(ByteWriter writer, std::size_t size) {
  return writer.Zeros(size - writer.Written().size());
}

// ---- markers

struct StoredMarker {
  std::string_view name = {};
  std::string_view text = {};
  std::int32_t channel = 2;
  std::int32_t locked = 1;
  std::int32_t sampleIndex = 77;
  std::int32_t epoch = 4;
  double value = 2.5;
  std::uint32_t colour = 0x8040FF;
};

inline std::vector<std::byte> MarkerBytes(const StoredMarker& marker) {
  ByteWriter record;
  record.U32(marker.colour).Bytes(Padded(ByteWriter().Text(marker.name), 52));
  record.I32(11).I32(12).I32(13).I32(marker.sampleIndex).F64(marker.value);
  record.I32(marker.channel).I32(marker.epoch).I32(marker.locked);
  record.Bytes(Padded(ByteWriter().Text(marker.text), 52));
  return record.I32(14).I32(3);
}

// ---- labels

inline std::vector<std::byte> LabelBytes(std::string_view text, std::uint32_t value) {
  return ByteWriter().Bytes(Padded(ByteWriter().Text(text), 256)).U32(value);
}

// ---- corrections

inline std::vector<std::byte> ParametersBytes(int shift = 0, int order = 3, int channels = 0,
                                              int alwaysSave = 1) {
  ByteWriter params;
  params.F32(1).U32(2).F32(3).F32(4).F32(5).I32(shift).U32(6).U32(7).U32(8).U32(9).U32(10).F32(11).F32(12);
  return params.I32(order).I32(channels).I32(alwaysSave).U32(13).U32(14);
}

inline std::vector<std::byte> RowBytes(std::uint32_t start, const std::vector<float>& values) {
  ByteWriter row;
  row.U32(start);
  for (const float value : values) row.F32(value);
  return Padded(row, 2052);
}

struct StoredSegment {
  std::uint32_t first = 0;
  std::uint32_t end = 0;
  std::uint32_t id = 0;
  std::vector<double> coefficients = {};
};

inline std::vector<StoredRecord> SegmentSections(const std::vector<StoredSegment>& segments) {
  constexpr std::uint32_t kSegment = 60002;
  constexpr std::uint32_t kCoefficient = 60003;
  std::vector<StoredRecord> sections;
  for (const StoredSegment& segment : segments) {
    sections.push_back({kSegment, 0, ByteWriter().U32(segment.first).U32(segment.end).U32(segment.id)});
    for (const double value : segment.coefficients)
      sections.push_back({kCoefficient, 0, ByteWriter().F64(value).U32(segment.id).U32(0)});
  }
  return sections;
}

}  // namespace wavelock

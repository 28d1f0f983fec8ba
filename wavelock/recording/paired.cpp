// The channel pairs of a time-frequency recording: a matrix of the places of their entries, and the entries.
#include <algorithm>
#include <new>

#include "wavelock/numerics/positions.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// What an entry begins with; real and imaginary values follow.
struct PairHead {
  Stored<std::uint16_t> first;
  Stored<std::uint16_t> second;
  Stored<std::uint32_t> reserved;
};
static_assert(sizeof(PairHead) == 2 + 2 + 4);

constexpr int kFirstRevisionWithTail = 14;

// The smallest place that counts as one.
constexpr std::int32_t kLeastPosition = 2;

template <class Visit>
void VisitPairs(const Matrix<std::int32_t>& matrix, Visit&& visit) {
  for (std::size_t i = 0; i < matrix.Rows(); ++i) {
    for (std::size_t j = i + 1; j < matrix.Columns(); ++j) {
      if (matrix[i][j] >= kLeastPosition && !visit(i, j, matrix[i][j])) return;
    }
  }
}

std::int32_t CountPairs(const Matrix<std::int32_t>& matrix) {
  std::int32_t count = 0;
  VisitPairs(matrix, [&count](std::size_t, std::size_t, std::int32_t) {
    ++count;
    return true;
  });
  return count;
}

}  // namespace

// The matrix ends where the tail begins, or with the file where there is none.
bool CRecordingFile::LoadPairMatrix() {
  FreeMatrix(pairMatrix);
  if (!file) return false;
  const std::size_t channels = rawHeader.header.channelCount;
  const std::uint64_t bytes = std::uint64_t{channels} * channels * sizeof(std::int32_t);
  const std::uint64_t end =
      headerRevision >= kFirstRevisionWithTail ? std::uint64_t{rawHeader.header.tailPositionLow} : fileSize;
  if (end < bytes || !LiesInside(end - bytes, bytes, fileSize)) return false;
  if (file->SeekTo(end - bytes) && pairMatrix.Make(channels, channels) &&
      file->ReadExactly(std::as_writable_bytes(pairMatrix.All()))) {
    return true;
  }
  FreeMatrix(pairMatrix);
  return false;
}

CTFDPaired* CRecordingFile::BuildPairedData() {
  if (pairedData) return pairedData.get();
  if (!setup || !file) return nullptr;
  const std::int32_t pairs = CountPairs(pairMatrix);
  if (pairs == 0 || !IsPlausibleSet(std::int64_t{2} * pairs, setup->pointCount)) return nullptr;
  if (!IsPlausibleSet(1, setup->channelCount)) return nullptr;
  pairedData.reset(new (std::nothrow) CTFDPaired(setup.get(), pairs));
  if (!pairedData || pairedData->valid == 0) {
    pairedData.reset();
    return nullptr;
  }
  return ReadPairs(*pairedData) ? pairedData.get() : nullptr;
}

// A short read leaves the object as far as it was filled.
bool CRecordingFile::ReadPairs(CTFDPaired& data) {
  std::size_t pair = 0;
  bool isWhole = true;
  const auto rowOf = [&pair](FloatMatrix& matrix) {
    return std::as_writable_bytes(std::span(matrix[pair], matrix.Columns()));
  };
  VisitPairs(pairMatrix, [&](std::size_t first, std::size_t second, std::int32_t position) {
    data.pairIndex[0][pair] = static_cast<std::int32_t>(first);
    data.pairIndex[1][pair] = static_cast<std::int32_t>(second);
    isWhole = file->SeekTo(static_cast<std::uint64_t>(position) + sizeof(PairHead)) &&
              file->ReadExactly(rowOf(data.real)) && file->ReadExactly(rowOf(data.imaginary));
    ++pair;
    return isWhole;
  });
  return isWhole;
}

// Entries lie as far apart as if their values had the width of a sample, the matrix right behind the last
// one.
bool CRecordingFile::WritePairedData(CTFDPaired* data) {
  if (data == nullptr || data->valid == 0 || !file) return false;
  const std::int32_t channels = data->GetChannelCount();
  if (!IsChannelCount(channels)) return false;
  const std::uint64_t step = sizeof(PairHead) + std::uint64_t{sizeof(float)} * data->real.Columns() *
                                                    static_cast<unsigned>(sampleWidth);
  const auto headerBytes = static_cast<int>(HeaderSizeFor(channels));
  FillHeader(data->GetConfig(), &rawHeader);
  if (!file->SeekTo(0) || !WriteHeaderBlock(&rawHeader, file.get(), headerBytes)) return false;

  Matrix<std::int32_t> positions;
  if (!positions.Make(static_cast<std::size_t>(channels), static_cast<std::size_t>(channels))) return false;
  auto position = static_cast<std::uint64_t>(headerBytes);
  for (std::size_t pair = 0; pair < data->real.Rows(); ++pair) {
    const auto first = static_cast<std::size_t>(data->pairIndex[0][pair]);
    const auto second = static_cast<std::size_t>(data->pairIndex[1][pair]);
    if (first >= positions.Rows() || second >= positions.Rows()) return false;
    positions[first][second] = positions[second][first] = static_cast<std::int32_t>(position);
    if (!file->SeekTo(position) || !WritePair(*data, pair)) return false;
    position += step;
  }
  return file->Write(std::as_bytes(positions.All()));
}

bool CRecordingFile::WritePair(const CTFDPaired& data, std::size_t pair) {
  PairHead head;
  head.first = static_cast<std::uint16_t>(data.pairIndex[0][pair]);
  head.second = static_cast<std::uint16_t>(data.pairIndex[1][pair]);
  const auto rowOf = [pair](const FloatMatrix& matrix) {
    return std::as_bytes(std::span(matrix[pair], matrix.Columns()));
  };
  return file->Write(BytesOf(head)) && file->Write(rowOf(data.real)) && file->Write(rowOf(data.imaginary));
}

}  // namespace wavelock

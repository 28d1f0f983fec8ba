// The channel pairs of a time-frequency recording: a matrix of the places of their entries, and the entries.
#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "wavelock/numerics/positions.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {
namespace {

// An entry begins with its two channels and a zero; real and imaginary values follow.
struct PairHead {
  Stored<std::uint16_t> first;
  Stored<std::uint16_t> second;
  StoredBytes<4> reserved{};
};
constexpr std::uint64_t kPairHeadBytes = sizeof(PairHead);
static_assert(kPairHeadBytes == 2 + 2 + 4);

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
std::uint64_t CRecordingFile::PairMatrixEnd() const {
  return headerRevision >= kFirstRevisionWithTail ? std::uint64_t{rawHeader.header.tailPositionLow}
                                                  : fileSize;
}

bool CRecordingFile::LoadPairMatrix() {
  FreeMatrix(pairMatrix);
  if (!file) return false;
  const std::size_t channels = rawHeader.header.channelCount;
  const std::uint64_t bytes = std::uint64_t{channels} * channels * sizeof(std::int32_t);
  const std::uint64_t end = PairMatrixEnd();
  if (end < bytes || !LiesInside(end - bytes, bytes, fileSize)) return false;
  if (file->SeekTo(end - bytes) && pairMatrix.Make(channels, channels) &&
      file->ReadExactly(std::as_writable_bytes(pairMatrix.All()))) {
    return true;
  }
  FreeMatrix(pairMatrix);
  return false;
}

CTFDPaired* CRecordingFile::BuildPairedData() try {
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
} catch (const std::bad_alloc&) {
  return nullptr;
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

// ---- writing

// Where the entries will lie, one behind the other. Nothing for pairs of channels that there are not, and for
// more than the matrix can point to.
bool CRecordingFile::PlacePairs(const CTFDPaired& data, std::vector<std::int32_t>& positions) const {
  const auto channels = data.GetChannelCount();
  const std::uint64_t points = data.real.Columns();
  const std::uint64_t stride =
      static_cast<std::uint64_t>(sampleWidth) * sizeof(float) * points + kPairHeadBytes;
  std::uint64_t position = HeaderSizeFor(channels);
  for (std::int32_t k = 0; k < data.GetPairCount(); ++k) {
    const auto pair = static_cast<std::size_t>(k);
    const std::int32_t first = data.pairIndex[0][pair];
    const std::int32_t second = data.pairIndex[1][pair];
    if (std::min(first, second) < 0 || std::max(first, second) >= channels) return false;
    if (position > std::numeric_limits<std::int32_t>::max()) return false;
    positions.push_back(static_cast<std::int32_t>(position));
    position += stride;
  }
  return true;
}

bool CRecordingFile::WritePair(const CTFDPaired& data, std::size_t pair, std::int32_t position) {
  const std::size_t rowBytes = data.real.Columns() * sizeof(float);
  const std::span<std::byte> entry = readBuffer_.Take(kPairHeadBytes + 2 * rowBytes);
  if (entry.empty()) return false;
  PairHead head;
  head.first = static_cast<std::uint16_t>(data.pairIndex[0][pair]);
  head.second = static_cast<std::uint16_t>(data.pairIndex[1][pair]);
  std::memcpy(entry.data(), &head, sizeof head);
  if (rowBytes > 0) {
    std::memcpy(entry.data() + sizeof head, data.real[pair], rowBytes);
    std::memcpy(entry.data() + sizeof head + rowBytes, data.imaginary[pair], rowBytes);
  }
  return file->SeekTo(static_cast<std::uint64_t>(position)) && file->Write(entry);
}

bool CRecordingFile::WritePairedData(CTFDPaired* data) try {
  if (data == nullptr || data->ready == 0 || !IsBeingMade() || !IsChannelCount(data->GetChannelCount()))
    return false;
  const auto channels = static_cast<std::size_t>(data->GetChannelCount());
  std::vector<std::int32_t> positions;
  Matrix<std::int32_t> matrix;
  if (!PlacePairs(*data, positions) || !matrix.Make(channels, channels)) return false;
  rawHeader = {};
  if (!FillHeader(data->GetConfig(), &rawHeader) || !file->SeekTo(0)) return false;
  if (!WriteHeaderBlock(&rawHeader, file.get(), static_cast<int>(HeaderSizeFor(data->GetChannelCount())))) {
    return false;
  }
  for (std::size_t k = 0; k < positions.size(); ++k) {
    const auto first = static_cast<std::size_t>(data->pairIndex[0][k]);
    const auto second = static_cast<std::size_t>(data->pairIndex[1][k]);
    matrix[first][second] = matrix[second][first] = positions[k];
    if (!WritePair(*data, k, positions[k])) return false;
  }
  return file->Write(std::as_bytes(matrix.All()));
} catch (const std::bad_alloc&) {
  return false;
}

// ---- copying

// Entries stay as they lie to each other; the matrix, which follows the last of them, points to their new
// places.
bool CRecordingFile::CopyPairs(File& target, int start) {
  const std::uint64_t matrixBytes = pairMatrix.All().size_bytes();
  const std::uint64_t matrixEnd = PairMatrixEnd();
  const auto from = static_cast<std::uint64_t>(dataStart);
  if (matrixEnd < matrixBytes || matrixEnd - matrixBytes < from) return false;
  const std::uint64_t entryBytes = matrixEnd - matrixBytes - from;
  Matrix<std::int32_t> moved;
  return MovePairs(entryBytes, start, moved) && CopyBytes(from, entryBytes, target) &&
         target.Write(std::as_bytes(moved.All()));
}

// False for entries that do not lie in the `bytes` bytes between header and matrix, or would lie where the
// matrix cannot point to.
bool CRecordingFile::MovePairs(std::uint64_t bytes, int start, Matrix<std::int32_t>& moved) {
  const std::uint64_t points = static_cast<std::uint32_t>(std::max(setup->pointCount, 0));
  const std::uint64_t entry = kPairHeadBytes + 2 * points * sizeof(float);
  constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
  if (bytes + static_cast<std::uint64_t>(start) > kMost) return false;
  if (!moved.Make(pairMatrix.Rows(), pairMatrix.Columns())) return false;
  bool isInside = true;
  VisitPairs(pairMatrix, [&](std::size_t first, std::size_t second, std::int32_t position) {
    const auto offset = static_cast<std::uint64_t>(std::int64_t{position} - dataStart);
    isInside = LiesInside(offset, entry, bytes);
    moved[first][second] = moved[second][first] = static_cast<std::int32_t>(offset) + start;
    return isInside;
  });
  return isInside;
}

}  // namespace wavelock

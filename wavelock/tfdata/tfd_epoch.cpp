#include "wavelock/tfdata/tfd_epoch.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "wavelock/numerics/transpose.h"

namespace wavelock {
namespace {

// Bytes of `rows` x `columns` floats; nothing for negative counts and for more than a field for bytes holds.
std::optional<std::uint32_t> FloatBytes(std::int32_t rows, std::int32_t columns) {
  constexpr std::int64_t kMost = std::numeric_limits<std::uint32_t>::max() / sizeof(float);
  if (rows < 0 || columns < 0 || std::int64_t{rows} * columns > kMost) return std::nullopt;
  return static_cast<std::uint32_t>(rows) * static_cast<std::uint32_t>(columns) *
         std::uint32_t{sizeof(float)};
}

void FreeBlock(FloatMatrix& matrix, float*& block) {
  FreeMatrix(matrix);
  block = nullptr;
}

// What both have room for.
void CopyValues(std::span<const float> from, std::span<float> to) {
  std::copy_n(from.begin(), std::min(from.size(), to.size()), to.begin());
}

}  // namespace

CTFDEpoch::CTFDEpoch(const CSetup* setup, int isMultiplexed)
    : CTFDataConfig(setup), multiplexed(isMultiplexed != 0 ? 1 : 0) {
  if (valid != 0) MakeBlocks();
}

CTFDEpoch::CTFDEpoch(const CTFDEpoch& source)
    : CTFDataConfig(source), epochInfo(source.epochInfo), multiplexed(source.multiplexed) {
  if (valid != 0) MakeBlocks();
  if (valid == 0 || CopyBlocks(source)) return;
  FreeAll();
  valid = 0;
}

void CTFDEpoch::MakeBlocks() {
  const bool hasImaginary = HasImaginary();
  const bool hasVariance = HasVariance();
  const bool hasFsp = HasFsp();
  if (AllocMain() && (!hasImaginary || AllocImaginary()) && (!hasVariance || AllocVariance()) &&
      (!hasFsp || AllocFsp())) {
    return;
  }
  FreeAll();
  valid = 0;
}

bool CTFDEpoch::CopyBlocks(const CTFDEpoch& source) {
  if (source.mainBlock == nullptr || source.blockBytes != blockBytes) return false;
  CopyValues(source.main.All(), main.All());
  CopyValues(source.imaginary.All(), imaginary.All());
  CopyValues(source.variance.All(), variance.All());
  CopyValues(source.varianceImaginary.All(), varianceImaginary.All());
  CopyValues(source.fspFirst.All(), fspFirst.All());
  CopyValues(source.fspSecond.All(), fspSecond.All());
  return markers.Assign(source.markers);
}

bool CTFDEpoch::Fail(const char* text) {
  errorText = text;
  return false;
}

bool CTFDEpoch::MakeMatrix(FloatMatrix& matrix, float*& block, const char* failure) {
  const std::int32_t rows = multiplexed != 0 ? GetPointCount() : GetChannelCount();
  const std::int32_t columns = multiplexed != 0 ? GetChannelCount() : GetPointCount();
  if (!config || !FloatBytes(rows, columns) ||
      !AllocFloatMatrix(matrix, static_cast<std::uint32_t>(rows), static_cast<std::uint32_t>(columns))) {
    return Fail(failure);
  }
  block = matrix[0];
  return true;
}

bool CTFDEpoch::AllocMain() {
  FreeMain();
  if (!MakeMatrix(main, mainBlock, "Memory allocation failed (main)")) return false;
  blockBytes = FloatBytes(GetChannelCount(), GetPointCount()).value_or(0);
  return true;
}

bool CTFDEpoch::AllocImaginary() {
  FreeImaginary();
  if (!MakeMatrix(imaginary, imaginaryBlock, "Memory allocation failed (imaginary)")) return false;
  config->hasImaginary = 1;
  return true;
}

bool CTFDEpoch::AllocVariance() {
  constexpr char kFailure[] = "Memory allocation failed (variance)";
  FreeVariance();
  if (!MakeMatrix(variance, varianceBlock, kFailure)) return false;
  if (config->hasImaginary == 1 && !MakeMatrix(varianceImaginary, varianceImaginaryBlock, kFailure)) {
    FreeVariance();
    return false;
  }
  config->hasVariance = 1;
  return true;
}

bool CTFDEpoch::AllocFsp() {
  FreeFsp();
  const auto bytes = FloatBytes(GetChannelCount(), config ? config->acceptedSweeps : 0);
  if (!config || !bytes || !fspFirst.Make(*bytes / sizeof(float)) ||
      !fspSecond.Make(*bytes / sizeof(float))) {
    FreeFsp();
    return Fail("Memory allocation failed (Fsp)");
  }
  fspBytes = *bytes;
  config->dataKind = kAverageWithStatistics;
  return true;
}

void CTFDEpoch::FreeMain() {
  FreeBlock(main, mainBlock);
  FreeMatrix(spare_);
  blockBytes = 0;
}

void CTFDEpoch::FreeImaginary() {
  FreeBlock(imaginary, imaginaryBlock);
  if (config) config->hasImaginary = 0;
}

void CTFDEpoch::FreeVariance() {
  FreeBlock(variance, varianceBlock);
  FreeBlock(varianceImaginary, varianceImaginaryBlock);
  if (config) config->hasVariance = 0;
}

void CTFDEpoch::FreeFsp() {
  fspFirst.Free();
  fspSecond.Free();
  fspBytes = 0;
  if (config) config->dataKind = 0;
}

void CTFDEpoch::FreeAll() {
  markers.RemoveAll();
  FreeFsp();
  FreeVariance();
  FreeImaginary();
  FreeMain();
}

bool CTFDEpoch::Turn(int order, const char* failure) {
  if (valid == 0) return false;
  if (multiplexed == order) return true;
  multiplexed = order;
  const bool isTurned = TurnMatrix(main, mainBlock) && TurnMatrix(imaginary, imaginaryBlock) &&
                        TurnMatrix(variance, varianceBlock) &&
                        TurnMatrix(varianceImaginary, varianceImaginaryBlock);
  return isTurned || Fail(failure);
}

bool CTFDEpoch::TurnMatrix(FloatMatrix& matrix, float*& block) {
  if (!matrix) return true;
  const std::size_t rows = matrix.Rows();
  const std::size_t columns = matrix.Columns();
  if (!spare_.MakeForOverwrite(columns, rows)) return false;
  Transpose(matrix[0], rows, columns, columns, spare_[0], rows);
  matrix.Swap(spare_);
  block = matrix[0];
  return true;
}

}  // namespace wavelock

// One data set in memory: an average, or one epoch.
#pragma once

#include <cstdint>

#include "wavelock/annotations/epoch_info.h"
#include "wavelock/annotations/marker_list.h"
#include "wavelock/numerics/matrices.h"
#include "wavelock/tfdata/tf_data.h"

namespace wavelock {

// Every matrix has the same shape: points x channels when the set is sample-major, else channels x points.
// Each is one block that can be read or written whole.
//
// What the set has shows in its setup, and the operations keep it so: `hasImaginary` and `hasVariance` are 1
// where the matrices exist, and `dataKind` is 3 where the two arrays do.
class CTFDEpoch : public CTFDataConfig {
 public:
  // Makes the blocks that the setup's flags tell of. Not valid, and without blocks, for negative dimensions,
  // for a matrix of 4 GiB or more, and when memory ran out.
  CTFDEpoch(const CSetup* setup, int isMultiplexed);

  // Everything with its content, markers as well.
  CTFDEpoch(const CTFDEpoch& source);

  const char* GetRuntimeClassName() const override { return "CTFDEpoch"; }

  // Make blocks anew, all zero, in the present shape. False, with none left and `errorText` set, when that
  // cannot be done.
  bool AllocMain();
  bool AllocImaginary();
  bool AllocVariance();  // that of the imaginary part as well, where there is one
  bool AllocFsp();

  void FreeMain();
  void FreeImaginary();
  void FreeVariance();
  void FreeFsp();  // the set is then a plain average, whatever it was before
  void FreeAll();

  int IsMultiplexed() const { return multiplexed; }

  // Bring the set to sample-major or channel-major order; nothing happens when it lies so already. False for
  // a set that is not valid, and, with undefined content, when memory ran out. The memory that a turn needs
  // stays for the next one.
  bool Multiplex() { return Turn(1, "Memory allocation failed (multiplex)"); }
  bool Demultiplex() { return Turn(0, "Memory allocation failed (demultiplex)"); }

  CMarkerList markers;

  std::uint32_t blockBytes = 0;  // of each matrix
  float* mainBlock = nullptr;    // the first element of each, null where there is no matrix
  FloatMatrix main;

  // Points are sweeps here: acceptedSweeps x channels, whatever the order of the matrices.
  std::uint32_t fspBytes = 0;
  OwnedVector<float> fspFirst;
  OwnedVector<float> fspSecond;

  float* imaginaryBlock = nullptr;
  FloatMatrix imaginary;
  float* varianceBlock = nullptr;
  FloatMatrix variance;
  float* varianceImaginaryBlock = nullptr;
  FloatMatrix varianceImaginary;

  EpochInfo epochInfo;
  int multiplexed;  // 1: sample-major, 0: channel-major

 private:
  void MakeBlocks();
  bool MakeMatrix(FloatMatrix& matrix, float*& block, const char* failure);
  bool CopyBlocks(const CTFDEpoch& source);
  bool Turn(int order, const char* failure);
  bool TurnMatrix(FloatMatrix& matrix, float*& block);
  bool Fail(const char* text);

  FloatMatrix spare_;  // what the last turn left behind
};

}  // namespace wavelock

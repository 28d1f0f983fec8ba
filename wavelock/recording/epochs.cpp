// Epochs: how many there are.
#include "wavelock/recording/recording_file.h"

namespace wavelock {

std::uint32_t CRecordingFile::GetEpochCount() {
  return GetFileClass(&rawHeader) == kEpochs ? std::uint32_t{rawHeader.header.averagedSweeps} : 1;
}

}  // namespace wavelock

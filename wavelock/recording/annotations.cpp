// What stands beside the samples: markers, corrections and labels, from the tail of a recording.
#include "wavelock/recording/overlay_pass.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock {

// Whatever of it is damaged is missing afterwards; the recording opens all the same.
void CRecordingFile::ReadAnnotations(CTffFile& tail, int fileClass) {
  opened_.markersAreKnown = markerList.Load(tail, setup->channelCount);
  if (fileClass != kContinuous) return;
  overlay.Load(tail);
  labelList.Load(tail);
}

std::unique_ptr<OverlayPass> CRecordingFile::StartCorrections(std::uint64_t start, int skipPolynomials,
                                                              int skipRows) {
  const OverlaySwitches switches{applyRows != 0 && skipRows == 0,
                                 applyPolynomials != 0 && skipPolynomials == 0};
  return StartOverlayPass(overlay, rawHeader.ChannelsInUse(), sampleWidth, start, switches);
}

}  // namespace wavelock

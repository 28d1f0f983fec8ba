// What changed in the header from revision to revision, and how an older one is brought to the current form.
#pragma once

#include "wavelock/recording/recording_header.h"

namespace wavelock {

// Fields that a block of the versioned layout lacks, by the revision that it states. `image` was read whole.
void CompleteVersionedHeader(HeaderImage& image);

// Hertz per point, and the display values that old headers left at 0. Both layouts need them.
void FillBinWidth(RecordingHeader& header);
void FillDisplayDefaults(RecordingHeader& header);

// The fix-ups that come before the channel count is judged, in order.
void RepairGainBase(RecordingHeader& header);
void FillDeadRates(RecordingHeader& header);

// All that follow. False when the file holds spectra that no current reader can scale; the image is then as
// far as it was brought.
bool BringToCurrentRevision(HeaderImage& image);

}  // namespace wavelock

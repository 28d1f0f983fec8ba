// For tests and fuzz targets that only want to see an operation end.
#pragma once

#include "wavelock/recording/recording_file.h"

namespace wavelock {

// Reads all that a recording offers through its public operations, whether or not one is open. It trusts no
// count that came from the file, and every buffer is exactly as large as the call is told.
void ReadEverything(CRecordingFile& recording);

// The same without what is given as a string: all memory that it takes is taken by the recording.
void ReadIntoOwnBuffers(CRecordingFile& recording);

}  // namespace wavelock

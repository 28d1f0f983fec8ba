// Opens the recording that is named and tells its samples.
#include <cstdio>

#include "wavelock/recording/recording_file.h"

int main(int argc, char** argv) {
  wavelock::CRecordingFile recording(1);
  if (argc != 2 || !recording.OpenFile(argv[1])) return 1;
  std::printf("%d channels, %llu samples\n", int{recording.rawHeader.header.channelCount},
              static_cast<unsigned long long>(recording.GetContinuousSampleCount()));
}

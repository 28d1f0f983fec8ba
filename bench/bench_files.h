// The recordings that are measured, and the same samples in the formats of other libraries. Made when first
// asked for, in a folder that goes with the program.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace wavelock {
class CRecordingFile;
}

namespace wavelock::bench {

inline constexpr int kChannels = 64;
inline constexpr int kRate = 1000;  // samples per second, so a block of one second has as many

// Bytes of 16-bit samples in every file. Set once, before any file is made.
void SetSampleBytes(std::uint64_t bytes);
std::uint64_t SampleCount();  // per channel; whole seconds

std::string RecordingPath(int layout, int width);
std::string WavPath();
std::string EdfPath();
std::string HdfPath();  // a dataset "samples", samples x channels

// A short recording with that many events, no two alike, in a table of kind 1 to 3.
std::string EventsPath(int kind, int count, bool areInOrder = true);

// The samples of layout 1 in epochs of one second, and that many epochs of next to nothing.
std::string EpochsPath();
std::string ManyEpochsPath(int count);

// A recording with samples of 2 bytes that the library makes: of what `describe` puts into its setup, with
// what `append` writes. The latter is false when it could not.
std::string MadeByLibrary(
    const std::string& name, const std::function<void(CRecordingFile&)>& describe,
    const std::function<bool(CRecordingFile&)>& append = [](CRecordingFile&) { return true; });

// Reads a file once, so that what is measured next finds it in the page cache.
void Warm(const std::string& path);

}  // namespace wavelock::bench

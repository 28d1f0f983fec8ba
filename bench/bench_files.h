// The recordings that are measured, and the same samples in the formats of other libraries. Made when first
// asked for, in a folder that goes with the program.
#pragma once

#include <cstdint>
#include <string>

namespace wavelock::bench {

inline constexpr int kChannels = 64;
inline constexpr int kRate = 1000;  // samples per second, so a block of one second has as many

// Bytes of 16-bit samples in every file. Set once, before any file is made.
void SetSampleBytes(std::uint64_t bytes);
std::uint64_t SampleCount();  // per channel; whole seconds

std::string RecordingPath(int layout, int width);
std::string WavPath();
std::string EdfPath();

// A short recording with that many events, no two alike, in a table of kind 1 to 3.
std::string EventsPath(int kind, int count);

// Reads a file once, so that what is measured next finds it in the page cache.
void Warm(const std::string& path);

}  // namespace wavelock::bench

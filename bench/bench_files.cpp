#include "bench/bench_files.h"

#include <edflib.h>
#include <fcntl.h>
#include <hdf5.h>
#include <sndfile.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <vector>

#include "tests/support/recording_builder.h"
#include "wavelock/recording/recording_file.h"

namespace wavelock::bench {
namespace {

std::uint64_t sampleBytes = std::uint64_t{1} << 30;

// Removes what was made when the program ends.
class Folder {
 public:
  Folder()
      : path_(std::filesystem::temp_directory_path() / ("wavelock-bench-" + std::to_string(::getpid()))) {
    std::filesystem::create_directories(path_);
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  std::string Path(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

std::int16_t Value(std::uint64_t sample, int channel) {
  return static_cast<std::int16_t>(
      static_cast<std::uint32_t>(sample * 2654435761u + static_cast<std::uint32_t>(channel) * 40503u) >> 7);
}

void Fail(const std::string& what) {
  std::cerr << "wavelock_bench: " << what << "\n";
  std::exit(1);
}

// Writes the file out and lets reading bring it back into the page cache: pages lie there as they came, and
// those that writing left behind are read more slowly the smaller the pieces were.
void Settle(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY);
  if (file < 0 || ::fsync(file) != 0 || ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED) != 0) {
    Fail(path + " could not be written out");
  }
  ::close(file);
  Warm(path);
}

// `make(path)` writes the file unless it is there already.
template <class Make>
std::string Made(const std::string& name, Make make) {
  static Folder folder;
  static std::map<std::string, std::string> made;
  const auto found = made.find(name);
  if (found != made.end()) return found->second;
  const std::string path = folder.Path(name);
  std::cerr << "making " << name << "\n";
  if (!make(path)) Fail(path + " could not be written");
  Settle(path);
  return made[name] = path;
}

RecordingBuilder Base() {
  return RecordingBuilder().Channels(kChannels).Rate(kRate).Calibration(102.4f);
}

std::vector<short> SecondOf(std::uint64_t second) {
  std::vector<short> samples(static_cast<std::size_t>(kRate) * kChannels);
  for (std::size_t s = 0; s < kRate; ++s) {
    for (int c = 0; c < kChannels; ++c)
      samples[s * kChannels + static_cast<std::size_t>(c)] = Value(second * kRate + s, c);
  }
  return samples;
}

bool WriteWav(const std::string& path) {
  SF_INFO info{};
  info.samplerate = kRate;
  info.channels = kChannels;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  if (file == nullptr) return false;
  for (std::uint64_t second = 0; second < SampleCount() / kRate; ++second) {
    sf_writef_short(file, SecondOf(second).data(), kRate);
  }
  return sf_close(file) == 0;
}

bool WriteEdf(const std::string& path) {
  const int file = edfopen_file_writeonly(path.c_str(), EDFLIB_FILETYPE_EDFPLUS, kChannels);
  if (file < 0) return false;
  for (int c = 0; c < kChannels; ++c) {
    edf_set_samplefrequency(file, c, kRate);
    edf_set_digital_maximum(file, c, 32767);
    edf_set_digital_minimum(file, c, -32768);
    edf_set_physical_maximum(file, c, 16383.5);
    edf_set_physical_minimum(file, c, -16384);
  }
  std::vector<short> channels(static_cast<std::size_t>(kRate) * kChannels);
  for (std::uint64_t second = 0; second < SampleCount() / kRate; ++second) {
    const std::vector<short> samples = SecondOf(second);
    for (std::size_t s = 0; s < kRate; ++s) {
      for (std::size_t c = 0; c < kChannels; ++c) channels[c * kRate + s] = samples[s * kChannels + c];
    }
    if (edf_blockwrite_digital_short_samples(file, channels.data()) != 0) return false;
  }
  return edfclose_file(file) == 0;
}

bool WriteHdf(const std::string& path) {
  const hid_t file = H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT);
  const hsize_t shape[] = {SampleCount(), kChannels};
  const hid_t space = H5Screate_simple(2, shape, nullptr);
  const hid_t dataset =
      H5Dcreate2(file, "samples", H5T_STD_I16LE, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
  const hsize_t block[] = {kRate, kChannels};
  const hid_t inMemory = H5Screate_simple(2, block, nullptr);
  bool isWritten = dataset >= 0;
  for (std::uint64_t second = 0; second < SampleCount() / kRate && isWritten; ++second) {
    const hsize_t start[] = {second * kRate, 0};
    H5Sselect_hyperslab(space, H5S_SELECT_SET, start, nullptr, block, nullptr);
    isWritten =
        H5Dwrite(dataset, H5T_NATIVE_SHORT, inMemory, space, H5P_DEFAULT, SecondOf(second).data()) >= 0;
  }
  H5Sclose(inMemory);
  H5Dclose(dataset);
  H5Sclose(space);
  return H5Fclose(file) >= 0 && isWritten;
}

RecordingBuilder::Epoch EpochOf(const std::vector<short>& samples) {
  RecordingBuilder::Epoch epoch;
  epoch.samples.assign(samples.begin(), samples.end());
  return epoch;
}

}  // namespace

void SetSampleBytes(std::uint64_t bytes) {
  sampleBytes = bytes;
}

std::uint64_t SampleCount() {
  return sampleBytes / (2 * kChannels) / kRate * kRate;
}

std::string RecordingPath(int layout, int width) {
  return Made("layout" + std::to_string(layout) + "-" + std::to_string(8 * width) + ".rec",
              [=](const std::string& path) {
                return Base()
                    .Revision(layout == 0 ? 6 : 13)
                    .Layout(layout)
                    .Width(width)
                    .BlockSamples(kRate)
                    .Samples(SampleCount(), [](std::uint64_t s, int c) { return Value(s, c); })
                    .WriteTo(path);
              });
}

std::string WavPath() {
  return Made("samples.wav", WriteWav);
}
std::string EdfPath() {
  return Made("samples.edf", WriteEdf);
}

std::string HdfPath() {
  return Made("samples.h5", WriteHdf);
}

// One epoch after the other goes into the file, so that they are never all in memory.
std::string EpochsPath() {
  return Made("epochs.rec", [](const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    const auto count = static_cast<std::size_t>(SampleCount() / kRate);
    const auto base = [] { return Base().Epoched().Revision(13).Points(kRate); };
    const std::vector<std::byte> none = base().Build();
    std::vector<std::byte> block = base().Epochs(std::vector<RecordingBuilder::Epoch>(count)).Build();
    file.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(none.size()));
    for (std::uint64_t second = 0; second < count; ++second) {
      block = base().Epochs({EpochOf(SecondOf(second))}).Build();
      file.write(reinterpret_cast<const char*>(block.data() + none.size()),
                 static_cast<std::streamsize>(block.size() - none.size()));
    }
    return file.good();
  });
}

std::string ManyEpochsPath(int count) {
  return Made("epochs-" + std::to_string(count) + ".rec", [=](const std::string& path) {
    return RecordingBuilder()
        .Epoched()
        .Revision(13)
        .Channels(1)
        .Rate(kRate)
        .Points(2)
        .Epochs(std::vector<RecordingBuilder::Epoch>(static_cast<std::size_t>(count), EpochOf({1, 2})))
        .WriteTo(path);
  });
}

std::string MadeByLibrary(const std::string& name, const std::function<void(CRecordingFile&)>& describe,
                          const std::function<bool(CRecordingFile&)>& append) {
  return Made(name, [&](const std::string& path) {
    CRecordingFile recording(1);
    describe(recording);
    return recording.CreateFile(path, 2) && append(recording) && recording.SaveAndClose(0);
  });
}

std::string EventsPath(int kind, int count, bool areInOrder) {
  const std::string order = areInOrder ? "" : "-unordered";
  return Made("events" + std::to_string(kind) + "-" + std::to_string(count) + order + ".rec",
              [=](const std::string& path) {
                constexpr std::size_t kFarStep = 618033;  // shares no divisor with a power of ten
                std::vector<RecordingBuilder::Event> events(static_cast<std::size_t>(count));
                for (std::size_t i = 0; i < events.size(); ++i) {
                  events[i].stimType = static_cast<std::uint16_t>(i % 200);
                  events[i].sample =
                      static_cast<std::uint32_t>(areInOrder ? i : i * kFarStep % events.size());
                }
                return RecordingBuilder()
                    .Revision(13)
                    .Channels(1)
                    .Rate(kRate)
                    .Samples({1, 2, 3})
                    .EventTableKind(kind)
                    .Events(events)
                    .WriteTo(path);
              });
}

void Warm(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> buffer(1 << 20);
  while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
  }
}

}  // namespace wavelock::bench

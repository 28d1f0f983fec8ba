// Continuous samples: 64 channels, read whole and in blocks of one second.
#include <edflib.h>
#include <fcntl.h>
#include <hdf5.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "bench/bench_files.h"
#include "bench/benchmarks.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/recording/sample_conversion.h"

namespace wavelock::bench {
namespace {

constexpr std::size_t kBlockValues = static_cast<std::size_t>(kRate) * kChannels;

std::unique_ptr<CRecordingFile> Opened(int layout, int width) {
  const std::string path = RecordingPath(layout, width);
  Warm(path);
  auto recording = std::make_unique<CRecordingFile>(1);
  if (!recording->OpenFile(path)) std::abort();
  recording->sampleWidth = width;  // the files have no tail that would say so
  return recording;
}

// All of it in blocks, each into the same memory.
template <class Value, class Read>
void InBlocks(benchmark::State& state, Read read) {
  std::vector<Value> memory(kBlockValues);
  const std::span<Value> block(memory);
  const std::uint64_t samples = SampleCount();
  for (auto _ : state) {
    for (std::uint64_t start = 0; start < samples; start += kRate) read(start, start + kRate, block);
    benchmark::DoNotOptimize(block.data());
  }
}

// Room for all values, the same for everybody: how fast so much of it is depends on where the system has put
// it.
std::byte* Memory() {
  static std::vector<std::byte> memory(SampleCount() * kChannels * sizeof(float));
  return memory.data();
}

// All of it at once.
template <class Value, class Read>
void Whole(benchmark::State& state, Read read) {
  const std::uint64_t samples = SampleCount();
  const std::span<Value> all(reinterpret_cast<Value*>(Memory()), samples * kChannels);
  for (auto _ : state) {
    read(0, samples, all);
    benchmark::DoNotOptimize(all.data());
  }
}

auto FloatReader(CRecordingFile& recording) {
  return [&recording](std::uint64_t start, std::uint64_t end, std::span<float> out) {
    const auto bytes = static_cast<std::uint32_t>((end - start) * kChannels * sizeof(float));
    if (!recording.ReadContinuousFloat(start, end, out.data(), bytes, 0, 0)) std::abort();
  };
}

template <class Raw>
auto RawReader(CRecordingFile& recording) {
  return [&recording](std::uint64_t start, std::uint64_t end, std::span<Raw> out) {
    const auto bytes = static_cast<std::int32_t>((end - start) * kChannels * sizeof(Raw));
    if (!recording.ReadContinuousRaw(start, end, out.data(), bytes, 0, 0)) std::abort();
  };
}

auto PlainReader(int file) {
  return [file](std::uint64_t start, std::uint64_t end, auto out) {
    const std::size_t sample = kChannels * sizeof(out[0]);
    const auto bytes = static_cast<ssize_t>((end - start) * sample);
    if (::pread(file, out.data(), static_cast<std::size_t>(bytes), static_cast<off_t>(start * sample)) !=
        bytes)
      std::abort();
  };
}

class PlainFile {
 public:
  explicit PlainFile(const std::string& path) : number_(::open(path.c_str(), O_RDONLY)) { Warm(path); }
  ~PlainFile() { ::close(number_); }
  int Number() const { return number_; }

 private:
  int number_;
};

// The conversion alone, from a block that is in the cache to one that is.
void ConvertInCache(benchmark::State& state, int width) {
  const std::unique_ptr<CRecordingFile> recording = Opened(1, width);
  const std::vector<std::int32_t> raw(kBlockValues, 77);
  std::vector<float> out(kBlockValues);
  for (auto _ : state) {
    for (std::uint64_t start = 0; start < SampleCount(); start += kRate) {
      if (width == 2) {
        RawToFloat16(reinterpret_cast<const std::int16_t*>(raw.data()), out.data(), kRate, *recording->setup);
      } else {
        RawToFloat32(raw.data(), out.data(), kRate, *recording->setup);
      }
      benchmark::DoNotOptimize(out.data());
    }
  }
}

void CopyInMemory(benchmark::State& state) {
  const std::vector<std::int16_t> from(SampleCount() * kChannels, 1);
  std::vector<std::int16_t> to(from.size(), 2);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size() * sizeof from[0]);
    benchmark::DoNotOptimize(to.data());
  }
}

// ---- the peers

class WavFile {
 public:
  WavFile() {
    Warm(WavPath());
    SF_INFO info{};
    file_ = sf_open(WavPath().c_str(), SFM_READ, &info);
    sf_command(file_, SFC_SET_NORM_FLOAT, nullptr, SF_FALSE);
  }
  ~WavFile() { sf_close(file_); }

  auto FloatReader() {
    return [this](std::uint64_t start, std::uint64_t end, std::span<float> out) {
      sf_seek(file_, static_cast<sf_count_t>(start), SEEK_SET);
      const auto samples = static_cast<sf_count_t>(end - start);
      if (sf_readf_float(file_, out.data(), samples) != samples) std::abort();
    };
  }

 private:
  SNDFILE* file_;
};

void EdfBlocks(benchmark::State& state) {
  Warm(EdfPath());
  edf_hdr_struct header;
  if (edfopen_file_readonly(EdfPath().c_str(), &header, EDFLIB_DO_NOT_READ_ANNOTATIONS) != 0) std::abort();
  std::vector<double> block(kBlockValues);
  for (auto _ : state) {
    for (int c = 0; c < kChannels; ++c) edfrewind(header.handle, c);
    for (std::uint64_t start = 0; start < SampleCount(); start += kRate) {
      for (int c = 0; c < kChannels; ++c) {
        if (edfread_physical_samples(header.handle, c, kRate, block.data() + c * kRate) != kRate)
          std::abort();
      }
    }
    benchmark::DoNotOptimize(block.data());
  }
  edfclose_file(header.handle);
}

// Its own conversion to floats, which knows no factors.
void HdfBlocks(benchmark::State& state) {
  Warm(HdfPath());
  const hid_t file = H5Fopen(HdfPath().c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
  const hid_t dataset = H5Dopen2(file, "samples", H5P_DEFAULT);
  const hid_t space = H5Dget_space(dataset);
  const hsize_t block[] = {kRate, kChannels};
  const hid_t inMemory = H5Screate_simple(2, block, nullptr);
  std::vector<float> out(kBlockValues);
  for (auto _ : state) {
    for (std::uint64_t first = 0; first < SampleCount(); first += kRate) {
      const hsize_t start[] = {first, 0};
      H5Sselect_hyperslab(space, H5S_SELECT_SET, start, nullptr, block, nullptr);
      if (H5Dread(dataset, H5T_NATIVE_FLOAT, inMemory, space, H5P_DEFAULT, out.data()) < 0) std::abort();
    }
    benchmark::DoNotOptimize(out.data());
  }
  H5Sclose(inMemory);
  H5Sclose(space);
  H5Dclose(dataset);
  H5Fclose(file);
}

// Measured by the other program itself, without its start.
void NumpyBlocks(benchmark::State& state) {
  const std::string path = RecordingPath(1, 2);
  Warm(path);
  CRecordingFile recording(1);
  if (!recording.OpenFile(path)) std::abort();
  const std::string command = std::string(WAVELOCK_NUMPY_PEER) + " " + path + " " +
                              std::to_string(recording.dataStart) + " " + std::to_string(SampleCount()) +
                              " " + std::to_string(kChannels) + " " + std::to_string(kRate);
  for (auto _ : state) {
    std::FILE* const output = ::popen(command.c_str(), "r");
    double seconds[3] = {};
    if (output == nullptr || std::fscanf(output, "%lf %lf %lf", &seconds[0], &seconds[1], &seconds[2]) != 3)
      std::abort();
    ::pclose(output);
    std::sort(std::begin(seconds), std::end(seconds));
    state.SetIterationTime(seconds[1]);
  }
}

// ---- what is run

using benchmark::State;

void AddLayout(int layout, int width) {
  const std::string name = "layout" + std::to_string(layout) + "/" + std::to_string(8 * width);
  Add(name + "/float/blocks", [=](State& s) {
    auto r = Opened(layout, width);
    InBlocks<float>(s, FloatReader(*r));
  });
  Add(name + "/float/whole", [=](State& s) {
    auto r = Opened(layout, width);
    Whole<float>(s, FloatReader(*r));
  });
  if (width == 2) {
    Add(name + "/raw/blocks", [=](State& s) {
      auto r = Opened(layout, 2);
      InBlocks<std::int16_t>(s, RawReader<std::int16_t>(*r));
    });
    Add(name + "/raw/whole", [=](State& s) {
      auto r = Opened(layout, 2);
      Whole<std::int16_t>(s, RawReader<std::int16_t>(*r));
    });
  } else {
    Add(name + "/raw/blocks", [=](State& s) {
      auto r = Opened(layout, 4);
      InBlocks<std::int32_t>(s, RawReader<std::int32_t>(*r));
    });
  }
}

template <class Value>
void AddPlain(int width) {
  const std::string name = "pread/" + std::to_string(8 * width);
  Add(name + "/blocks", [=](State& s) {
    PlainFile f(RecordingPath(1, width));
    InBlocks<Value>(s, PlainReader(f.Number()));
  });
  Add(name + "/whole", [=](State& s) {
    PlainFile f(RecordingPath(1, width));
    Whole<Value>(s, PlainReader(f.Number()));
  });
}

}  // namespace

std::vector<Ratio> RegisterContinuous() {
  for (const int layout : {0, 1, 2, 3}) AddLayout(layout, 2);
  AddLayout(1, 4);
  AddPlain<std::int16_t>(2);
  AddPlain<std::int32_t>(4);
  Add("memcpy", CopyInMemory);
  Add("convert/16", [](State& s) { ConvertInCache(s, 2); });
  Add("convert/32", [](State& s) { ConvertInCache(s, 4); });
  Add("libsndfile/blocks", [](State& s) {
    WavFile f;
    InBlocks<float>(s, f.FloatReader());
  });
  Add("libsndfile/whole", [](State& s) {
    WavFile f;
    Whole<float>(s, f.FloatReader());
  });
  Add("edflib/blocks", EdfBlocks);
  Add("hdf5/blocks", HdfBlocks);
  benchmark::RegisterBenchmark("numpy/blocks", NumpyBlocks)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1);
  return {
      {"float blocks, beside pread and the conversion alone",
       "layout1/16/float/blocks",
       {"pread/16/blocks", "convert/16"},
       0.85},
      {"float blocks of 32 bits, beside the same",
       "layout1/32/float/blocks",
       {"pread/32/blocks", "convert/32"},
       0.85},
      {"float blocks, beside libsndfile", "layout1/16/float/blocks", {"libsndfile/blocks"}, 1.5},
      {"float blocks, beside EDFlib", "layout1/16/float/blocks", {"edflib/blocks"}, 10},
      {"float blocks, beside HDF5", "layout1/16/float/blocks", {"hdf5/blocks"}, 1},
      {"float blocks, beside a NumPy memmap", "layout1/16/float/blocks", {"numpy/blocks"}, 1},
      {"float whole, beside libsndfile's best", "layout1/16/float/whole", {"libsndfile/whole"}, 1},
      {"raw blocks of layout 1, beside pread", "layout1/16/raw/blocks", {"pread/16/blocks"}, 0.9},
      {"raw whole of layout 1, beside pread", "layout1/16/raw/whole", {"pread/16/whole"}, 0.9},
      {"raw blocks of layout 3, beside layout 1", "layout3/16/raw/blocks", {"layout1/16/raw/blocks"}, 0.5},
      {"raw whole of layout 3, beside layout 1", "layout3/16/raw/whole", {"layout1/16/raw/whole"}, 0.5},
      {"raw blocks of layout 0, beside layout 1", "layout0/16/raw/blocks", {"layout1/16/raw/blocks"}, 0.5},
      {"raw blocks of layout 2, beside layout 1", "layout2/16/raw/blocks", {"layout1/16/raw/blocks"}, 0.5},
  };
}

}  // namespace wavelock::bench

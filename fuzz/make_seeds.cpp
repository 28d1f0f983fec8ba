// Writes the inputs that a search starts from, a folder for each target, each input small:
//
//   wavelock_fuzz_seeds DIR
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/demo_recordings.h"
#include "fuzz/fuzz_host.h"
#include "tests/support/recording_builder.h"
#include "wavelock/annotations/correction_overlay.h"
#include "wavelock/annotations/label_list.h"
#include "wavelock/annotations/marker_list.h"
#include "wavelock/recording/recording_file.h"
#include "wavelock/recording/recording_header.h"
#include "wavelock/setup/section_tags.h"
#include "wavelock/setup/setup.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::byte>;
using Seeds = std::map<std::string, Bytes>;  // by path

constexpr int kChannels = 2;
const char kContainer[] = "container";

Bytes BytesOfText(std::string_view text) {
  return ByteWriter().Text(text);
}

using Sections = std::vector<RecordingBuilder::Section>;

// The records of a container as the builder takes them, without those that can be missed and would make every
// input large.
Sections SectionsOf(const Bytes& container) {
  constexpr std::uint32_t kMostBytes = 16384;
  FuzzHost fuzz;
  fuzz.memory.Put(kContainer, container);
  CTffFile file(fuzz.host);
  file.Open(kContainer, OpenMode::kReadOnly);
  Sections sections;
  for (const auto& [position, record] : file.Entries()) {
    if (record.length > kMostBytes) continue;
    const auto payload = std::span(container).subspan(position + sizeof record, record.length);
    sections.push_back({record.tag, record.version, Bytes(payload.begin(), payload.end())});
  }
  return sections;
}

Bytes ContainerOf(const Sections& sections) {
  FuzzHost fuzz;
  CTffFile file(fuzz.host);
  file.Open(kContainer, OpenMode::kCreate);
  file.WriteHeader();
  for (const auto& [tag, version, payload] : sections)
    file.WriteSection(tag, static_cast<std::uint32_t>(payload.size()), payload.data(), version);
  return fuzz.memory.Contents(kContainer).value_or(Bytes());
}

Bytes SetupFile() {
  FuzzHost fuzz;
  CSetup setup(0, fuzz.host);
  setup.channelCount = kChannels;
  setup.channelCapacity = kChannels;
  setup.MakeChannels();
  for (std::int32_t i = 0; i < kChannels; ++i) setup.ResetChannel(i);
  setup.ResetArtifactLabels();
  setup.dataKind = kContinuous;
  CTffFile file(fuzz.host);
  file.Open(kContainer, OpenMode::kCreate);
  setup.Write(file);
  return ContainerOf(SectionsOf(fuzz.memory.Contents(kContainer).value_or(Bytes())));
}

void AddMarkers(CTffFile& file, Host& host) {
  CMarkerList markers(host);
  for (const char* name : {"Start", "Start", "End"}) {
    auto marker = std::make_unique<CMarker>();
    marker->SetName(name);
    marker->locked = 1;
    marker->channel = 0;
    marker->labelMode = CMarker::kShowBothValues;
    markers.Add(std::move(marker));
  }
  markers.Save(file);
  const Bytes timedMarker(104);  // the form before
  file.WriteSection(tag::kMarker, static_cast<std::uint32_t>(timedMarker.size()), timedMarker.data(), 0);
}

void AddLabels(CTffFile& file) {
  CLabelList labels;
  labels.Add({"second", 2});
  labels.Add({"first", 1});
  labels.Save(file);
}

void AddCorrections(CTffFile& file, Host& host) {
  CCorrectionOverlay overlay(host);
  overlay.params.polyOrder = 1;
  overlay.params.polyChannels = kChannels;
  OverlayRow row{};
  row.startSample = 3;
  row.channelValue[1] = 10;
  overlay.AddRow(row);
  for (const std::uint32_t first : {0u, 20u}) {
    auto segment = std::make_unique<OverlaySegment>();
    segment->firstSample = first;
    segment->endSample = first + 20;
    for (const double value : {1.0, 2.0, 0.5, -0.5}) segment->coefficients.Append(value);
    overlay.AddSegment(std::move(segment));
  }
  overlay.Save(file);
}

Bytes AnnotationsFile() {
  FuzzHost fuzz;
  CTffFile file(fuzz.host);
  file.Open(kContainer, OpenMode::kCreate);
  file.WriteHeader();
  AddMarkers(file, fuzz.host);
  AddLabels(file);
  AddCorrections(file, fuzz.host);
  const Stored<std::int32_t> revision{1};
  file.WriteSection(tag::kTailRevision, sizeof revision, &revision, 0);
  return fuzz.memory.Contents(kContainer).value_or(Bytes());
}

// One of every kind as a program of today makes it, a few seconds long.
void AddDemo(Seeds& seeds) {
  FuzzHost fuzz;
  command::MakeDemoFiles(fuzz.memory, "", {.seconds = 5, .channels = kChannels});
  for (const std::string& name : command::DemoFileNames()) {
    const Bytes whole = fuzz.memory.Contents(name).value_or(Bytes());
    if (fs::path(name).extension() != ".rec") continue;
    RecordingHeader header;
    std::memcpy(&header, whole.data(), sizeof header);
    const auto tail = whole.begin() + header.tailPositionLow;
    Bytes seed(whole.begin(), tail);
    const Bytes smallTail = ContainerOf(SectionsOf(Bytes(tail, whole.end())));
    seed.insert(seed.end(), smallTail.begin(), smallTail.end());
    seeds["recording/demo_" + fs::path(name).stem().string()] = std::move(seed);
  }
}

void AddContinuous(Seeds& seeds) {
  const auto ramp = [](std::uint64_t sample, int channel) {
    return static_cast<std::int32_t>(sample) * 100 + channel;
  };
  const std::vector<RecordingBuilder::Event> events = {{.stimType = 1, .sample = 3},
                                                       {.stimType = 2, .keypad = 3, .sample = 9}};
  for (const int layout : {0, 1, 2, 3}) {
    RecordingBuilder builder;
    builder.Channels(kChannels).Layout(layout).BlockSamples(8).Samples(20, ramp).Events(events);
    seeds["recording/layout_" + std::to_string(layout)] = builder.Build();
  }
  Sections tail = SectionsOf(SetupFile());
  for (RecordingBuilder::Section& section : SectionsOf(AnnotationsFile())) tail.push_back(std::move(section));
  for (const int width : {2, 4}) {
    seeds["recording/tail_width_" + std::to_string(width)] = RecordingBuilder()
                                                                 .Channels(kChannels)
                                                                 .Width(width)
                                                                 .Samples(40, ramp)
                                                                 .Events(events)
                                                                 .Tail(tail)
                                                                 .Build();
  }
}

void AddOtherKinds(Seeds& seeds) {
  const std::vector<RecordingBuilder::Epoch> epochs = {{.trialType = 1, .samples = {1, 2, 3, 4}},
                                                       {.trialType = 2, .samples = {5, 6, 7, 8}}};
  const RecordingBuilder::Epoch spectrum = {.spectrum = {1, 2, 3, 4, 5, 6, 7, 8}};
  RecordingBuilder builder;
  builder.Channels(kChannels).Points(2);
  seeds["recording/epoched"] = RecordingBuilder(builder).Epoched().Epochs(epochs).Build();
  seeds["recording/spectra"] =
      RecordingBuilder(builder).Epoched().FrequencyDomain().Epochs({spectrum}).Build();
  seeds["recording/averaged"] = RecordingBuilder(builder).Averaged().Data(Bytes(200)).Build();
  seeds["recording/statistics"] = RecordingBuilder(builder).AveragedWithStatistics().Data(Bytes(200)).Build();
  seeds["recording/time_frequency"] = RecordingBuilder(builder).TimeFrequency().Data(Bytes(200)).Build();
}

// Every generation, with the samples of its time.
void AddGenerations(Seeds& seeds) {
  for (int revision = 0; revision <= 16; ++revision) {
    seeds["recording/revision_" + std::to_string(revision)] =
        RecordingBuilder().Revision(revision).Channels(kChannels).Samples({1, 2, 3, 4}).Build();
  }
  for (const int firstByte : {1, 2, 3, 5}) {
    RecordingBuilder builder;
    builder.OldestLayout(firstByte).Channels(kChannels);
    seeds["recording/oldest_" + std::to_string(firstByte)] = builder.Samples({1, 2, 3, 4}).Build();
  }
}

void AddHeaders(Seeds& seeds) {
  seeds["header/continuous"] = RecordingBuilder().Channels(kChannels).Build();
  seeds["header/epoched"] = RecordingBuilder().Epoched().Channels(kChannels).Points(10).Build();
  seeds["header/spectra"] = RecordingBuilder().Epoched().FrequencyDomain().Points(10).Build();
  seeds["header/averaged"] = RecordingBuilder().Averaged().Points(10).Build();
  seeds["header/old"] = RecordingBuilder().Revision(3).Channels(kChannels).Build();
}

void AddTexts(Seeds& seeds) {
  seeds["derivation/pair"] = BytesOfText("1 2\nCz Pz\nCz-Pz 1 -1\n");
  seeds["derivation/matrix"] = BytesOfText("2 3 Cz Pz 1 a 1e-3 .5 -2 b +1.25E2 0 nan");
  seeds["profile/profile"] =
      BytesOfText("; note\n[section]\nkey = value\npath = C:\\\\a\\x20\n[other]\nk=\n");
  seeds["profile/registry"] = BytesOfText("[CLSID/{1}]\n@ = Wavelock\nVersion = 1.0\n");
}

// Of a method that reads a block, the id and the kind of its block argument.
using BlockMethod = std::pair<std::uint8_t, std::uint8_t>;
constexpr BlockMethod kContinuousBlocks[] = {{3, 7}, {4, 9}, {18, 8}};
constexpr BlockMethod kEpochBlocks[] = {{7, 7}, {8, 9}, {17, 8}};

// Opens a file, which is the first argument of the first call, and asks for all there is.
Bytes Calls(std::uint8_t file) {
  ByteWriter calls;
  calls.U8(1).U8(1).U8(5).U8(file);
  for (const int id : {5, 6, 9, 10, 11, 12, 13, 15}) calls.U8(static_cast<std::uint8_t>(id)).U8(0);
  for (const auto& [id, block] : kContinuousBlocks)
    calls.U8(id).U8(4).U8(3).U8(0).U8(3).U8(2).U8(block).U8(8).U8(0).U8(3).U8(16);
  for (const auto& [id, block] : kEpochBlocks)
    calls.U8(id).U8(3).U8(3).U8(0).U8(block).U8(8).U8(0).U8(3).U8(16);
  calls.U8(14).U8(5);
  for (int i = 0; i < 5; ++i) calls.U8(8).U8(1).U8(0);
  return calls.U8(2).U8(0);
}

Seeds AllSeeds() {
  Seeds seeds;
  AddDemo(seeds);
  AddContinuous(seeds);
  AddOtherKinds(seeds);
  AddGenerations(seeds);
  AddHeaders(seeds);
  AddTexts(seeds);
  seeds["setup/defaults"] = SetupFile();
  seeds["annotations/all"] = AnnotationsFile();
  seeds["dispatch/continuous"] = Calls(0);
  seeds["dispatch/epoched"] = Calls(1);
  return seeds;
}

bool WriteFile(const fs::path& path, const Bytes& bytes) {
  std::error_code ignored;  // shows when the file is written
  fs::create_directories(path.parent_path(), ignored);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return !file.fail();
}

}  // namespace
}  // namespace wavelock

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: wavelock_fuzz_seeds DIR\n", stderr);
    return 2;
  }
  for (const auto& [path, bytes] : wavelock::AllSeeds()) {
    if (!wavelock::WriteFile(std::filesystem::path(arguments[1]) / path, bytes)) return 1;
  }
  return 0;
}

// A container with what stands beside the samples: its records one by one, then markers, labels and
// corrections, which are used, saved and loaded again. The same bytes also make up an archive of markers.
#include <memory>
#include <vector>

#include "fuzz/fuzz_host.h"
#include "wavelock/annotations/correction_overlay.h"
#include "wavelock/annotations/label_list.h"
#include "wavelock/annotations/marker_list.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock {
namespace {

constexpr std::int32_t kChannels = 2;

struct Annotations {
  explicit Annotations(Host& host) : markers(host), overlay(host) {}

  void Load(CTffFile& container) {
    markers.Load(container, kChannels);
    labels.Load(container);
    overlay.Load(container);
  }

  CMarkerList markers;
  CLabelList labels;
  CCorrectionOverlay overlay;
};

void ReadRecords(CTffFile& container) {
  container.HasWideSamples();
  for (const CTffFile::Entry& entry : std::vector(container.Entries())) {
    std::vector<std::byte> payload(100);
    std::uint64_t length = payload.size();
    container.ReadSection(entry.record.tag, length, payload.data(), 2);
    container.FindSection(entry.record.tag);
    container.SeekTo(static_cast<std::int64_t>(entry.position), SeekOrigin::kStart);
    length = payload.size();
    container.ReadNextSection(entry.record.tag, length, payload.data());
  }
}

void Use(Annotations& beside) {
  for (std::int32_t i = 0; i < beside.markers.GetCount(); ++i) beside.markers.GetAt(i)->GetLabel(false);
  beside.labels.SortByValue();
  for (const std::uint32_t sample : {0u, 10u, 1000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    const FirstFitMap::Run run = beside.overlay.FindRowRun(sample);
    for (const std::uint32_t channel : {0u, 511u, 512u})
      beside.overlay.GetRowValue(static_cast<std::int32_t>(run.index) - 1, channel);
    beside.overlay.EnterSegment(sample);
    beside.overlay.EvaluateAt(sample);
  }
}

void Save(const Annotations& beside, CTffFile& container) {
  container.WriteHeader();
  beside.markers.Save(container);
  beside.labels.Save(container);
  beside.overlay.Save(container);
}

void LoadFromArchive(std::span<const std::byte> bytes) {
  for (int schema = 0; schema <= CMarker::kSchema; ++schema) {
    Archive archive(bytes, schema);
    CMarker marker;
    if (marker.Serialize(archive)) marker.GetLabel(false);
  }
}

}  // namespace
}  // namespace wavelock

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace wavelock;
  FuzzHost fuzz;
  fuzz.memory.Put("input.tff", InputBytes(data, size));
  LoadFromArchive(InputBytes(data, size));
  CTffFile container(fuzz.host);
  container.Open("input.tff", OpenMode::kReadOnly);
  container.ReadHeader();
  ReadRecords(container);
  Annotations beside(fuzz.host);
  beside.Load(container);
  Use(beside);

  CTffFile copy(fuzz.host);
  copy.Open("copy.tff", OpenMode::kCreate);
  Save(beside, copy);
  Annotations again(fuzz.host);
  again.Load(copy);
  Use(again);
  return 0;
}

// Whatever request for memory fails, every operation ends with a result, nothing is thrown and nothing
// leaks, and a file that is saved is the old one or a whole new one. A program of its own: it has its own
// memory.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "tests/support/annotated_recordings.h"
#include "tests/support/delivered.h"
#include "tests/support/every_kind.h"
#include "tests/support/read_everything.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/control/dispatch.h"
#include "wavelock/control/identifiers.h"
#include "wavelock/control/module.h"
#include "wavelock/control/wavelock_dispatch.h"
#include "wavelock/numerics/derivation_file.h"
#include "wavelock/platform/posix_files.h"

namespace {

// Requests of that many bytes and more are counted while armed, and the one of number `failing` is refused.
std::size_t smallest = 1;
bool armed = false;
std::size_t requests = 0;
std::size_t failing = 0;

bool IsRefused(std::size_t bytes) {
  return armed && bytes >= smallest && requests++ == failing;
}

}  // namespace

// The linker leads all calls of the library here, and hands out the system's own under the other names.
extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __wrap_malloc(std::size_t bytes) {
  return IsRefused(bytes) ? nullptr : __real_malloc(bytes);
}
void* __wrap_calloc(std::size_t count, std::size_t bytes) {
  return IsRefused(count * bytes) ? nullptr : __real_calloc(count, bytes);
}
}

namespace {

void* Request(std::size_t bytes) {
  return IsRefused(bytes) ? nullptr : __real_malloc(bytes == 0 ? 1 : bytes);
}

void* RequestOrThrow(std::size_t bytes) {
  void* const memory = Request(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t bytes) {
  return RequestOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
  return RequestOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return Request(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return Request(bytes);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

namespace wavelock {
namespace {

// What an operation of the library gives while its memory may fail; what it throws is a failure of the test.
template <class Call>
auto Armed(Call&& call) -> decltype(call()) {
  struct Arm {
    Arm() { armed = true; }
    ~Arm() { armed = false; }
  } const arm;
  try {
    return call();
  } catch (...) {
    armed = false;
    ADD_FAILURE() << "an exception came out of the library";
    throw;
  }
}

// Lets each request fail in turn, until a run has none left, and gives their number.
std::size_t FailEveryRequest(const std::function<void()>& run) {
  failing = 0;
  for (bool wasReached = true; wasReached && !testing::Test::HasFailure(); ++failing) {
    SCOPED_TRACE(testing::Message() << "request " << failing);
    requests = 0;
    try {
      run();
    } catch (const std::bad_alloc&) {
      break;
    }
    wasReached = requests > failing;
  }
  return failing;
}

// Files on the disk: those in memory would take part.
struct Disk {
  TemporaryFolder folder;
  PosixFiles files;
  TestHost test{files};
  Host& host = test.host;
  std::string path = folder.Path("test.rec");
};

std::optional<Delivered> DeliveredFrom(Disk& disk) {
  CRecordingFile recording(1, disk.host);
  if (!recording.OpenFile(disk.path)) return std::nullopt;
  return EverythingIn(recording);
}

// Larger than those of every kind, so that each has requests that count.
std::vector<NamedRecording> Recordings() {
  std::vector<NamedRecording> all = RecordingsOfEveryKind();
  std::vector<RecordingBuilder::Event> events;
  for (std::uint32_t i = 0; i < 400; ++i) events.push_back({.stimType = 1, .sample = i});
  const auto ramp = [](std::uint64_t s, int) { return static_cast<std::int32_t>(s); };
  all.push_back({"many events", RecordingBuilder().Layout(3).Channels(20).Samples(900, ramp).Events(events)});
  all.push_back(
      {"many triggers", RecordingBuilder().Revision(6).Channels(4).Samples(900, ramp).Events(events)});
  std::vector<StoredRecord> tail = PlainSetupSections(2);
  for (std::uint32_t i = 0; i < 300; ++i) {
    tail.push_back({tag::kLabel, 0, LabelBytes("label", 300 - i)});
    tail.push_back({tag::kMarker, 0, MarkerBytes({.name = "m", .epoch = 0})});
    tail.push_back({tag::kOverlayRow, 0, RowBytes(i, {1, 2})});
  }
  tail.push_back({tag::kOverlayParameters, 0, ParametersBytes(0, 1, 2)});
  for (auto& section : SegmentSections({{0, 900, 1, std::vector<double>(4)}}))
    tail.push_back(std::move(section));
  all.push_back({"much beside", RecordingBuilder().Channels(2).Samples(900, ramp).Tail(tail)});
  const RecordingBuilder::Epoch epoch{.samples = std::vector<std::int32_t>(4000, 5)};
  all.push_back({"long epochs",
                 RecordingBuilder().Epoched().Channels(2).Points(2000).Epochs({epoch, epoch}).Tail(tail)});
  return all;
}

TEST(MemoryFaults, OpeningAndReadingEnds) {
  std::size_t total = 0;
  for (const NamedRecording& recording : Recordings()) {
    SCOPED_TRACE(recording.name);
    Disk disk;
    ASSERT_TRUE(recording.builder.WriteTo(disk.path));
    total += FailEveryRequest([&] {
      CRecordingFile opened(1, disk.host);
      std::string path = disk.path;
      Armed([&] { opened.OpenFile(std::move(path)); });
      Armed([&] { ReadIntoOwnBuffers(opened); });
      Armed([&] { opened.CloseFile(); });
    });
  }
  EXPECT_GT(total, 100u);
}

TEST(MemoryFaults, SavingAnOpenedRecordingLeavesTheOldFileOrAWholeNewOne) {
  std::size_t total = 0;
  for (const NamedRecording& recording : Recordings()) {
    SCOPED_TRACE(recording.name);
    Disk disk;
    const auto restore = [&] { ASSERT_TRUE(recording.builder.WriteTo(disk.path)); };
    restore();
    const auto delivered = DeliveredFrom(disk);
    total += FailEveryRequest([&] {
      CRecordingFile opened(1, disk.host);
      ASSERT_TRUE(opened.OpenFile(disk.path));
      const bool isSaved = Armed([&] { return opened.SaveAndClose(0); });
      EXPECT_EQ(DeliveredFrom(disk), delivered);
      EXPECT_FALSE(disk.files.Exists(disk.path + ".0.new"));
      if (isSaved) restore();
    });
  }
  EXPECT_GT(total, 100u);
}

// Makers have small requests of their own.
TEST(MemoryFaults, AMadeRecordingIsWholeOrNone) {
  smallest = 4000;
  std::size_t total = 0;
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    SCOPED_TRACE(maker.name);
    Disk disk;
    total += FailEveryRequest([&] {
      CRecordingFile recording(1, disk.host);
      const bool isMade = Armed([&] { return maker.Make(recording, disk.path); });
      recording.CloseFile();
      const auto delivered = DeliveredFrom(disk);
      EXPECT_TRUE(isMade || maker.kind == kTimeFrequency || !delivered);
      disk.files.Delete(disk.path);
    });
  }
  EXPECT_GT(total, MakersOfEveryKind().size());
  smallest = 1;
}

TEST(MemoryFaults, SetupsAndDerivationFiles) {
  Disk disk;
  const std::string derivations = disk.folder.Path("d.ldr");
  {
    std::string text = "2 500\n1 2\n";
    for (int i = 0; i < 500; ++i) text += "out" + std::to_string(i) + " 1 0.5\n";
    const auto file = disk.files.Open(derivations, OpenMode::kCreate);
    ASSERT_TRUE(file->Write(std::as_bytes(std::span(text))));
  }
  FailEveryRequest([&] {
    CSetup setup(0, disk.host);
    Armed([&] { setup.ResetToDefaults(); });
    setup.setupFileName = disk.folder.Path("s.ast");
    setup.ldrEnabled[0] = 1;
    setup.ldrFile[0].Assign(derivations);
    setup.derivedBuild[0] = 1;
    Armed([&] { setup.SaveFile(); });
    Armed([&] { setup.LoadFile(); });
    const std::vector<std::string> labels = {"1", "2"};
    CDerivationFile file(disk.host);
    file.showNotices = 0;
    Armed([&] { file.Read(derivations, 2, 10, labels.data()); });
  });
}

TEST(MemoryFaults, ControlsAnswer) {
  Disk disk;
  ASSERT_TRUE(CorrectedRecording().WriteTo(disk.path));
  FailEveryRequest([&] {
    MemoryRegistry registry;
    CControlModule module(disk.host, registry, "/control.so");
    Reference<ClassFactory> factory;
    Reference<Dispatch> control;
    Armed([&] { module.RegisterServer(); });
    Armed([&] { module.GetClassObject(kControlClassId, ClassFactory::kId, factory.Receive()); });
    Armed([&] { factory->CreateInstance(Dispatch::kId, control.Receive()); });
    CWavelockCtrl own(disk.host);
    const Variant path(disk.path.c_str());
    const std::span open(&path, 1);
    Variant result;
    const auto& methods = DispatchMethods();
    Armed([&] { InvokeMethod(own, methods[0].id, open, &result, nullptr); });
    if (control) Armed([&] { control->Invoke(methods[0].id, open.data(), 1, &result, nullptr); });
  });
}

}  // namespace
}  // namespace wavelock

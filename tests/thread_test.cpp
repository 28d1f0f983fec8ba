// Any number of recordings, controls and setups live in any number of threads over one host, and each does
// what it does alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <sstream>
#include <thread>

#include "tests/support/delivered.h"
#include "tests/support/every_kind.h"
#include "tests/support/setup_values.h"
#include "tests/support/temporary_folder.h"
#include "wavelock/control/dispatch.h"
#include "wavelock/control/identifiers.h"
#include "wavelock/control/module.h"
#include "wavelock/control/wavelock_dispatch.h"
#include "wavelock/platform/console_modal_interface.h"
#include "wavelock/platform/file_profile_store.h"
#include "wavelock/platform/file_registry.h"
#include "wavelock/platform/posix_files.h"
#include "wavelock/platform/posix_process.h"

namespace wavelock {
namespace {

namespace fs = std::filesystem;

// The services of the default host, but for whom they speak to and where they keep the profile; and what else
// a process has only one of.
struct Shared {
  TemporaryFolder folder;
  std::istringstream answers;
  std::ostringstream words;
  PosixFiles files;
  FileProfileStore profile{files, folder.Path("profile.ini")};
  ConsoleModalInterface modal{answers, words, false};
  PosixProcess process;
  Host host{files, profile, modal, process};
  FileRegistry registry{files, folder.Path("registry.ini")};
  CControlModule module{host, registry, "/lib/control.so"};
};

using Outcome = std::vector<std::string>;

// `home` is a folder that no other thread uses.
using Job = std::function<Outcome(Shared& shared, const std::string& home)>;

std::string Text(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Outcome ReadByDefault(const std::string& path) {
  CRecordingFile recording(1);
  recording.OpenFile(path);
  Outcome outcome = {std::to_string(recording.markerList.GetCount())};
  for (const auto& [what, bytes] : EverythingIn(recording)) outcome.push_back(what + Text(bytes));
  for (const auto& [field, value] : ValuesOf(*recording.setup)) outcome.push_back(value);
  for (const LabelEntry& label : recording.labelList.Entries()) outcome.push_back(label.text);
  return outcome;
}

Outcome Upgrade(Host& host, const std::string& from, const std::string& path) {
  fs::copy_file(from, path, fs::copy_options::overwrite_existing);
  CRecordingFile recording(0, host);
  recording.OpenFile(path);
  return {std::to_string(recording.SaveAndClose(0)), FileText(path)};
}

Outcome Make(Host& host, const NamedMaker& maker, const std::string& path) {
  CRecordingFile recording(0, host);
  return {std::to_string(maker.Make(recording, path)), FileText(path)};
}

// Opens the recording with a control of the module and reads its first samples.
Outcome Dispatched(CControlModule& module, const std::string& path) {
  Reference<ClassFactory> factory;
  Reference<Dispatch> control;
  module.GetClassObject(kControlClassId, ClassFactory::kId, factory.Receive());
  factory->CreateInstance(Dispatch::kId, control.Receive());
  const Variant name(path.c_str());
  Variant opened;
  control->Invoke(FindMethodId("OpenInputDataFile").value(), &name, 1, &opened, nullptr);
  std::vector<float> block(9);
  const Variant request[] = {0, 3, Variant::Block(std::span(block)), 36};
  Variant read;
  control->Invoke(FindMethodId("GetContinuousFloatBlock").value(), request, 4, &read, nullptr);
  return {std::to_string(opened.BoolBits()), std::to_string(read.BoolBits()),
          Text(std::as_bytes(std::span(block)))};
}

// Changes of one thread must not lose those of another.
Outcome KeptByProfileAndRegistry(Shared& shared, const std::string& home) {
  Outcome outcome;
  for (const char* key : {"a", "b"}) {
    shared.profile.SetString(home, key, key);
    outcome.push_back(shared.profile.GetString(home, key, "missing"));
  }
  outcome.push_back(std::to_string(static_cast<int>(shared.module.RegisterServer())));
  shared.registry.Change([&](RegistryTree& tree) { tree[home][""] = "mine"; });
  const auto tree = shared.registry.Read();
  outcome.push_back(tree ? FindValue(*tree, home).value_or("missing") : "unread");
  return outcome;
}

std::map<std::string, Job> Jobs(const std::string& recordings) {
  std::map<std::string, Job> jobs;
  for (const auto& [name, builder] : RecordingsOfEveryKind()) {
    const std::string path = recordings + "/" + name + ".rec";
    EXPECT_TRUE(builder.WriteTo(path));
    jobs["read by default " + name] = [path](Shared&, const std::string&) { return ReadByDefault(path); };
    jobs["control " + name] = [path](Shared& s, const std::string&) { return Dispatched(s.module, path); };
    jobs["upgrade " + name] = [path](Shared& s, const std::string& home) {
      return Upgrade(s.host, path, home + "/upgraded.rec");
    };
  }
  for (const NamedMaker& maker : MakersOfEveryKind()) {
    jobs["make " + maker.name] = [maker](Shared& s, const std::string& home) {
      return Make(s.host, maker, home + "/made.rec");
    };
  }
  jobs["profile and registry"] = KeptByProfileAndRegistry;
  return jobs;
}

// The jobs whose outcome is not as expected.
std::vector<std::string> RunShuffled(Shared& shared, const std::map<std::string, Job>& jobs,
                                     const std::map<std::string, Outcome>& expected, unsigned thread) {
  const std::string home = shared.folder.Path("thread " + std::to_string(thread));
  fs::create_directory(home);
  std::vector<std::string> order;
  for (const auto& [name, job] : jobs) order.push_back(name);
  std::shuffle(order.begin(), order.end(), std::mt19937(thread));
  std::erase_if(order, [&](const auto& name) { return jobs.at(name)(shared, home) == expected.at(name); });
  return order;
}

TEST(Threads, RecordingsInManyThreadsDoWhatTheyDoAlone) {
  const TemporaryFolder recordings;
  const std::map<std::string, Job> jobs = Jobs(recordings.Path());
  std::map<std::string, Outcome> expected;
  {
    Shared alone;
    const std::string home = alone.folder.Path("home");
    fs::create_directory(home);
    for (const auto& [name, job] : jobs) expected[name] = job(alone, home);
  }
  for (const char* saved : {"make wide continuous", "make pairs", "upgrade corrected", "upgrade marked"})
    EXPECT_EQ(expected[saved].front(), "1") << saved;

  Shared shared;
  constexpr unsigned kThreads = 8;
  std::vector<std::vector<std::string>> wrong(kThreads);
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] { wrong[i] = RunShuffled(shared, jobs, expected, i); });
  for (std::thread& thread : threads) thread.join();
  for (const auto& differences : wrong) EXPECT_EQ(differences, std::vector<std::string>());
  EXPECT_EQ(shared.module.CanUnloadNow(), Result::kDone);
  for (unsigned i = 0; i < kThreads; ++i) {
    const std::string home = shared.folder.Path("thread " + std::to_string(i));
    EXPECT_EQ(shared.profile.GetString(home, "b", ""), "b");
    EXPECT_TRUE(shared.registry.Read()->contains(home));
  }
}

}  // namespace
}  // namespace wavelock

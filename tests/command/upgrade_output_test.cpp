// wavelock upgrade: what it writes where, what it tells of, and what it leaves alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/command/run_command.h"
#include "tests/support/setup_tail.h"

namespace wavelock {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

RecordingBuilder Plain() {
  return RecordingBuilder()
      .Channels(2)
      .Calibration(34.375f)
      .Samples({1, -2, 3, -4, 5, -6})
      .Events({{.stimType = 7, .sample = 1}});
}

// With all sections of a setup, so that the header alone decides nothing.
RecordingBuilder WithTail(const std::vector<StoredRecord>& more = {}) {
  std::vector<StoredRecord> tail = TailOf([](CSetup&) {}).records;
  tail.insert(tail.end(), more.begin(), more.end());
  return Plain().Tail(tail);
}

class UpgradeOutput : public testing::Test {
 protected:
  // The lines of --json, by which a program learns what happened.
  std::vector<nlohmann::json> Json(const std::string& words, int exitCode) {
    const Outcome outcome = folder.Wavelock("upgrade --json " + words);
    EXPECT_EQ(outcome.exitCode, exitCode) << outcome.err;
    std::vector<nlohmann::json> results;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) results.push_back(nlohmann::json::parse(line));
    return results;
  }

  std::string Generation(const std::string& name) {
    return nlohmann::json::parse(folder.Wavelock("info --json " + name).out).at("generation");
  }

  std::vector<std::string> Names(const std::string& name) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path(name)))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  CommandFolder folder;
};

TEST_F(UpgradeOutput, CopiesGoIntoTheFolderAndTheRecordingsStay) {
  folder.Put("new.rec", WithTail({{4711, 3, ByteWriter().Text("whatever it is")}}));
  folder.Put("old.rec", Plain().Revision(3));
  const std::string before = folder.Text("old.rec");
  const auto results = Json("-o deep/out new.rec old.rec", 3);
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results[0], nlohmann::json({{"path", "new.rec"},
                                        {"output", "deep/out/new.rec"},
                                        {"status", "done"},
                                        {"losses", nlohmann::json::array()}}));
  EXPECT_EQ(results[1].at("status"), "done with loss");  // the gains of its amplifier
  EXPECT_EQ(folder.Text("old.rec"), before);
  EXPECT_THAT(Names("deep/out"), ElementsAre("new.rec", "old.rec"));
  EXPECT_EQ(Generation("deep/out/old.rec"), "revision 16");
  EXPECT_THAT(folder.Wavelock("sections deep/out/new.rec").out, HasSubstr("\n  4711  unknown "));
  for (const std::string command : {"samples --raw", "events"}) {
    EXPECT_EQ(folder.Wavelock(command + " deep/out/old.rec").out, folder.Wavelock(command + " old.rec").out);
  }
}

TEST_F(UpgradeOutput, InPlaceThereIsNothingMoreToLoseAndSoonNothingToChange) {
  folder.Put("a.rec", Plain().Revision(6));
  const Outcome first = folder.Wavelock("upgrade --in-place a.rec");
  EXPECT_EQ(first.exitCode, 3);
  EXPECT_THAT(first.out, HasSubstr("a.rec: done with loss\n  "));
  EXPECT_EQ(Generation("a.rec"), "revision 16");
  EXPECT_EQ(folder.Wavelock("upgrade --in-place a.rec").out, "a.rec: done\n");  // fits windows to the axis
  const std::string upgraded = folder.Text("a.rec");
  EXPECT_EQ(folder.Wavelock("upgrade --in-place a.rec").out, "a.rec: done\n");
  EXPECT_TRUE(folder.Text("a.rec") == upgraded);
  EXPECT_THAT(Names("."), ElementsAre("a.rec"));
}

// ---- losses

TEST_F(UpgradeOutput, WhatHasNoPlaceIsTold) {
  const std::vector<std::byte> empty(4);
  const StoredRecord marker{50000, 0, std::vector<std::byte>(152)};
  const struct {
    const char* told;
    RecordingBuilder recording;
  } kCases[] = {
      {"bits behind the keypad in 2 words",
       Plain().Revision(3).TriggerWords(0, 0, 0x0105).TriggerWords(2, 1, 0x10)},
      {"3 words ahead of samples", Plain().Layout(2).LeadingWord(7)},
      {"the tail of a modified recording", WithTail().Revision(15)},
      {"1 record of the tail (tag 5010, channel)", WithTail({{5010, 0, empty}})},
      {"1 record of the tail (tag 1010, ", WithTail({{1010, 0, empty}})},
      {"2 bytes of the header that no field has", Plain().PutU8(251, 1).PutChannelU8(1, 27, 1)},
      {"header lowpassIndex: 5 became ", Plain().PutChannelU8(1, 65, 5)},
      {"header spectrumSource: 3 became 0", Plain().PutU8(559, 3)},
      {"1 marker, which a continuous", WithTail({marker})},
      {"3 bytes behind the data", RecordingBuilder()
                                      .Epoched()
                                      .Channels(1)
                                      .Points(2)
                                      .Epochs({{.samples = {1, 2}}})
                                      .Append(std::vector<std::byte>(3))},
      {"a text of the header, \\\"- electrode 5 fell off", Plain().PutText(257, "- electrode 5 fell off")},
  };
  for (const auto& [told, recording] : kCases) {
    SCOPED_TRACE(told);
    folder.Put("a.rec", recording);
    const auto results = Json("--force -o out a.rec", 3);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_THAT(results[0].at("losses").dump(), HasSubstr(told));
  }
}

// ---- refusals

TEST_F(UpgradeOutput, OneBadFileDoesNotStopTheOthers) {
  folder.Put("cut.rec", Plain().FileSize(Plain().EventTablePosition() + 4));
  folder.PutText("text.rec", "no recording");
  folder.Put("good.rec", WithTail());
  const std::string cut = folder.Text("cut.rec");
  for (const std::string where : {"-o out", "--in-place"}) {
    const auto results = Json(where + " cut.rec missing.rec text.rec good.rec", 1);
    ASSERT_EQ(results.size(), 4u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(results[i].at("status"), "failed");
    EXPECT_EQ(results[3].at("status"), "done");
    EXPECT_EQ(folder.Text("cut.rec"), cut);
  }
  EXPECT_THAT(Names("out"), ElementsAre("good.rec"));
  EXPECT_THAT(Names("."), ElementsAre("cut.rec", "good.rec", "out", "text.rec"));
  EXPECT_THAT(folder.Wavelock("upgrade -o out cut.rec").err,
              HasSubstr("cut.rec: It cannot be upgraded: its events"));
}

TEST_F(UpgradeOutput, NothingIsOverwrittenUnasked) {
  folder.Put("a.rec", WithTail());
  const std::string recording = folder.Text("a.rec");
  std::filesystem::create_directory(folder.Path("out"));
  folder.PutText("out/a.rec", "mine");
  EXPECT_THAT(folder.Wavelock("upgrade -o out a.rec").err, HasSubstr("--force"));
  EXPECT_EQ(folder.Text("out/a.rec"), "mine");
  EXPECT_EQ(folder.Wavelock("upgrade -o out a.rec --force").exitCode, 0);
  EXPECT_EQ(Generation("out/a.rec"), "revision 16");
  EXPECT_THAT(folder.Wavelock("upgrade -o . a.rec --force").err, HasSubstr("--in-place"));
  folder.PutText("a.rec.unverified", "mine");
  EXPECT_EQ(folder.Wavelock("upgrade --in-place a.rec").exitCode, 1);
  EXPECT_EQ(folder.Text("a.rec.unverified"), "mine");
  EXPECT_TRUE(folder.Text("a.rec") == recording);
}

TEST_F(UpgradeOutput, NoForceOverwritesARecordingThatIsToBeUpgradedOrWhatWasJustMade) {
  std::filesystem::create_directory(folder.Path("a"));
  std::filesystem::create_directory(folder.Path("b"));
  folder.Put("a/x.rec", WithTail());
  folder.Put("b/x.rec", Plain());
  const std::string mine = folder.Text("b/x.rec");
  EXPECT_THAT(folder.Wavelock("upgrade --force -o b a/x.rec b/x.rec").err,
              HasSubstr("another of the recordings"));
  EXPECT_TRUE(folder.Text("b/x.rec") == mine);
  EXPECT_THAT(folder.Wavelock("upgrade --force -o out a/x.rec b/x.rec").err, HasSubstr("of the same name"));
  std::filesystem::permissions(folder.Path("out/x.rec"), std::filesystem::perms::owner_read);
  EXPECT_THAT(folder.Wavelock("upgrade --force -o out a/x.rec").err, HasSubstr("read-only"));
}

TEST_F(UpgradeOutput, NamesArePathsAsTheyStand) {
  folder.Put("n.rec", WithTail());
  folder.Put("n.rec ", Plain().Revision(9));
  const std::string mine = folder.Text("n.rec ");
  EXPECT_EQ(folder.Wavelock("upgrade --in-place 'n.rec '").exitCode, 1);
  EXPECT_TRUE(folder.Text("n.rec ") == mine);
  const std::string longName(250, 'x');
  folder.Put(longName, Plain());
  EXPECT_THAT(Json("--in-place " + longName + " n.rec", 1).back().at("status"), "done");
}

TEST_F(UpgradeOutput, CopiesAreReadByThoseWhoMayReadTheRecording) {
  folder.Put("a.rec", WithTail());
  constexpr auto kOwner = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
  std::filesystem::permissions(folder.Path("a.rec"), kOwner);
  EXPECT_EQ(folder.Wavelock("upgrade -o out a.rec").exitCode, 0);
  EXPECT_EQ(std::filesystem::status(folder.Path("out/a.rec")).permissions(), kOwner);
}

TEST_F(UpgradeOutput, ReadOnlyRecordingsStay) {
  folder.Put("fixed.rec", WithTail());
  std::filesystem::permissions(folder.Path("fixed.rec"), std::filesystem::perms::owner_read);
  const std::string fixed = folder.Text("fixed.rec");
  const Outcome outcome = folder.Wavelock("upgrade --in-place fixed.rec");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.err, HasSubstr("fixed.rec: The recording is read-only"));
  EXPECT_EQ(outcome.out, "fixed.rec: failed\n");
  EXPECT_TRUE(folder.Text("fixed.rec") == fixed);
}

}  // namespace
}  // namespace wavelock

// wavelock setup, sections and format: what is in a setup, as fields, as records and byte by byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

#include "tests/command/run_command.h"
#include "tests/support/stored_container.h"
#include "tests/support/test_host.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::byte> SetupOfTwoChannels() {
  TestHost test;
  const auto setup = std::make_unique<CSetup>(0, test.host);
  EXPECT_TRUE(setup->ResetToDefaults());
  setup->channelCount = 2;
  setup->channels[1].label = "C\xE9";
  setup->setupFileName = "s";
  setup->SaveFile();
  return *test.memory.Contents("s");
}

class SetupOutput : public testing::Test {
 protected:
  SetupOutput() {
    const std::vector<std::byte> setup = SetupOfTwoChannels();
    folder.PutText("s.ast", {reinterpret_cast<const char*>(setup.data()), setup.size()});
    folder.PutText("cut.ast", {reinterpret_cast<const char*>(setup.data()), setup.size() - 1});
    std::vector<RecordingBuilder::Section> tail;
    for (const StoredRecord& record : StoredContainer(setup).records)
      tail.push_back({record.tag, record.version, record.payload});
    folder.Put("a.rec", RecordingBuilder().Channels(2).Samples({1, 2}).Tail(tail));
    tail.erase(tail.begin());
    folder.Put("bad.rec", RecordingBuilder().Channels(2).Samples({1, 2}).Tail(tail));
    folder.Put("none.rec", RecordingBuilder().Channels(2).Samples({1, 2}));
  }

  CommandFolder folder;
};

TEST_F(SetupOutput, FieldsAreToldByName) {
  for (const std::string file : {"s.ast", "a.rec"}) {
    const std::string lines = folder.Wavelock("setup " + file).out;
    EXPECT_THAT(lines, HasSubstr("\nchannels[1].label\tC\xC3\xA9\n"));
    EXPECT_THAT(lines, HasSubstr("\nchannels[0].countScale\t0.167847\n"));
    EXPECT_THAT(lines, HasSubstr("\nchannels[0].filterSpec\t[1,30,1,0,1,"));
    EXPECT_THAT(lines, HasSubstr("\nsubject.sex\t2\n"));
    const auto json = nlohmann::json::parse(folder.Wavelock("setup --json " + file).out);
    EXPECT_EQ(json.at("channels").size(), 2u);
    EXPECT_EQ(json.at("bands").at(4).at("bandName"), "Beta2");
  }
}

TEST_F(SetupOutput, SetupIsSavedWithoutOverwritingByAccident) {
  EXPECT_EQ(folder.Wavelock("setup a.rec --save out.ast").exitCode, 0);
  // Loading fills in what the first file leaves open; from then on nothing changes any more.
  EXPECT_EQ(folder.Wavelock("setup s.ast --save full.ast").exitCode, 0);
  EXPECT_EQ(folder.Wavelock("setup full.ast --save again.ast").exitCode, 0);
  EXPECT_TRUE(folder.Text("again.ast") == folder.Text("full.ast"));
  EXPECT_EQ(folder.Wavelock("setup out.ast --save again.ast").exitCode, 1);
  EXPECT_TRUE(folder.Text("again.ast") == folder.Text("full.ast"));
  EXPECT_EQ(folder.Wavelock("setup out.ast --save again.ast --force").exitCode, 0);
  EXPECT_EQ(folder.Wavelock("setup a.rec --save a.rec --force").exitCode, 1);
  EXPECT_EQ(folder.Wavelock("setup a.rec --save no/folder/out.ast").exitCode, 1);
  EXPECT_EQ(folder.Wavelock("setup a.rec").exitCode, 0);
}

TEST_F(SetupOutput, SectionsAreListedAsTheyStandAlsoInFilesThatCannotBeOpened) {
  const auto json = nlohmann::json::parse(folder.Wavelock("sections --json s.ast").out);
  EXPECT_EQ(json.size(), 44u);
  EXPECT_EQ(json.at(1), nlohmann::json::parse(R"({"tag": 1001, "name": "time axis, display and sweep counts",
                                                  "version": 2, "length": 1396, "position": 12160})"));
  const Outcome bad = folder.Wavelock("sections bad.rec");
  EXPECT_EQ(bad.exitCode, 0);
  EXPECT_THAT(bad.out, HasSubstr("110015  auxiliary input"));
  EXPECT_EQ(folder.Wavelock("sections cut.ast").exitCode, 3);
  EXPECT_EQ(folder.Wavelock("sections none.rec").exitCode, 1);
  EXPECT_EQ(folder.Wavelock("sections missing.rec").exitCode, 1);
}

TEST_F(SetupOutput, FormatTellsWhatStandsWhere) {
  EXPECT_THAT(folder.Wavelock("format").out, HasSubstr("\n1000        12080  2 "));
  const std::string main = folder.Wavelock("format 1000").out;
  EXPECT_THAT(main, HasSubstr("\n  8044  i32            adcCounts"));
  EXPECT_THAT(main, HasSubstr("\n  6916  char[20]       bands[4].bandName"));
  EXPECT_THAT(folder.Wavelock("format 5003").out, HasSubstr("channelScale"));
  EXPECT_EQ(folder.Wavelock("format 4").exitCode, 1);
  EXPECT_EQ(folder.Wavelock("format x").exitCode, 2);
}

TEST_F(SetupOutput, PageOfTheFormatIsUpToDate) {
  std::ifstream page(WAVELOCK_FORMAT_PAGE, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(page), {}};
  EXPECT_TRUE(text == folder.Wavelock("format --markdown").out)
      << "wavelock format --markdown > docs/format.md brings it up to date";
}

}  // namespace
}  // namespace wavelock

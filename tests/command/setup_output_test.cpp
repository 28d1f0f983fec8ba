// wavelock setup, sections and format: what is in a setup, as fields, as records and byte by byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "tests/command/run_command.h"
#include "tests/support/setup_tail.h"

namespace wavelock {
namespace {

using testing::HasSubstr;

class SetupOutput : public testing::Test {
 protected:
  SetupOutput() {
    StoredContainer tail = TailOf([](CSetup& setup) { setup.channels[1].label = "C\xE9"; });
    const std::vector<std::byte> setup = tail.Bytes();
    folder.PutText("s.ast", {reinterpret_cast<const char*>(setup.data()), setup.size()});
    folder.PutText("cut.ast", {reinterpret_cast<const char*>(setup.data()), setup.size() - 1});
    folder.Put("a.rec", RecordingBuilder().Channels(2).Samples({1, 2}).Tail(tail.records));
    tail.Remove(1000);
    folder.Put("bad.rec", RecordingBuilder().Channels(2).Samples({1, 2}).Tail(tail.records));
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

TEST_F(SetupOutput, PageOfTheFormatIsUpToDate) {
  std::ifstream page(WAVELOCK_FORMAT_PAGE, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(page), {}};
  EXPECT_TRUE(text == folder.Wavelock("format --markdown").out)
      << "wavelock format --markdown > docs/format.md brings it up to date";
}

}  // namespace
}  // namespace wavelock

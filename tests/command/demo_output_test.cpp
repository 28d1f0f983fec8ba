// wavelock demo: recordings of every kind that belong together.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/command/run_command.h"

namespace wavelock {
namespace {

using testing::HasSubstr;

const std::map<std::string, std::string> kKinds = {
    {"continuous.rec", "continuous"}, {"continuous_32bit.rec", "continuous"},
    {"epochs.rec", "epoched"},        {"spectra.rec", "epoched"},
    {"average.rec", "averaged"},      {"average_statistics.rec", "averaged with statistics"},
    {"pairs.rec", "time-frequency"}};

class DemoOutput : public testing::Test {
 protected:
  DemoOutput() { EXPECT_EQ(folder.Wavelock("demo d").exitCode, 0); }

  std::map<std::string, std::string> KindsIn(const std::string& where) {
    std::istringstream lines(folder.Wavelock("info --json " + where + "/*.rec").out);
    std::map<std::string, std::string> kinds;
    for (std::string line; std::getline(lines, line);) {
      const auto info = nlohmann::json::parse(line);
      const auto name = info.at("file").get<std::string>().substr(where.size() + 1);
      kinds[name] = info.at("kind");
      EXPECT_EQ(info.at("bits"), name == "continuous_32bit.rec" ? 32 : 16);
      EXPECT_EQ(info.at("rate"), 256.0);
    }
    return kinds;
  }

  CommandFolder folder;
};

TEST_F(DemoOutput, EveryFileOpensAsWhatItsNameSays) {
  EXPECT_EQ(KindsIn("d"), kKinds);
  EXPECT_EQ(folder.Wavelock("demo small --seconds 5 --channels 2").exitCode, 0);
  EXPECT_EQ(KindsIn("small"), kKinds);
  EXPECT_EQ(folder.Wavelock("demo short --seconds 4").exitCode, 2);
  EXPECT_EQ(folder.Wavelock("demo narrow --channels 1").exitCode, 2);
  EXPECT_THAT(folder.Wavelock("setup d/demo.ast").out, HasSubstr("channels[9].label\tCz\n"));
  EXPECT_THAT(folder.Wavelock("labels d/continuous.rec").out, HasSubstr("0\teyes closed\n"));
  EXPECT_THAT(folder.Wavelock("markers d/average_statistics.rec").out, HasSubstr("Late wave"));
  const auto upgrade = folder.Wavelock("upgrade -o u d/*.rec");
  EXPECT_THAT(upgrade.out, testing::Not(HasSubstr("loss")));
  EXPECT_EQ(upgrade.exitCode, 0);
}

TEST_F(DemoOutput, OneSeedGivesTheSameBytesEverywhere) {
  EXPECT_EQ(folder.Shell("TZ=Asia/Tokyo LC_ALL=de_DE.UTF-8 HOME=/nowhere $W demo --seed 1 again").exitCode,
            0);
  EXPECT_EQ(folder.Wavelock("demo --seed 2 other").exitCode, 0);
  for (const auto& [name, kind] : kKinds) {
    EXPECT_TRUE(folder.Text("d/" + name) == folder.Text("again/" + name)) << name;
    EXPECT_FALSE(folder.Text("d/" + name) == folder.Text("other/" + name)) << name;
  }
  EXPECT_TRUE(folder.Text("d/demo.ast") == folder.Text("again/demo.ast"));
}

TEST_F(DemoOutput, FilesThatExistAreOverwrittenByForceAlone) {
  folder.PutText("d/pairs.rec", "mine");
  const Outcome refused = folder.Wavelock("demo d");
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("--force"));
  EXPECT_EQ(folder.Text("d/pairs.rec"), "mine");
  EXPECT_EQ(folder.Wavelock("demo d --force").exitCode, 0);
  EXPECT_THAT(folder.Wavelock("info d/pairs.rec").out, HasSubstr("time-frequency"));
}

}  // namespace
}  // namespace wavelock

// wavelock demo: recordings of every kind that belong together.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/command/run_command.h"
#include "wavelock/recording/recording_file.h"

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

// ---- what the files hold belongs together

constexpr std::size_t kChannels = 32;
constexpr std::size_t kPoints = 256;
constexpr std::uint16_t kRare = 2;

TEST_F(DemoOutput, AveragesAreThoseOfTheEpochsThatTheContinuousRecordingHas) {
  CRecordingFile continuous(1);
  CRecordingFile epochs(1);
  CRecordingFile average(1);
  ASSERT_TRUE(continuous.OpenFile(folder.Path("d/continuous.rec")));
  ASSERT_TRUE(epochs.OpenFile(folder.Path("d/epochs.rec")));
  ASSERT_TRUE(average.OpenFile(folder.Path("d/average_statistics.rec")));
  std::vector<std::uint32_t> tones;
  for (const EventRecord& event : continuous.GetEventTable().Elements()) {
    if (event.stimType != 0) tones.push_back(event.point);
  }
  ASSERT_EQ(epochs.GetEpochCount(), tones.size());
  std::vector<double> sums(kPoints * kChannels);
  std::vector<float> samples(sums.size());
  int accepted = 0;
  for (std::uint32_t i = 0; i < epochs.GetEpochCount(); ++i) {
    const CTFDEpoch* const epoch = epochs.LoadDataObject(i);
    ASSERT_NE(epoch, nullptr);
    const auto values = epoch->main.All();
    ASSERT_TRUE(continuous.ReadContinuousFloat(tones[i] - 64, tones[i] + 192, samples.data(),
                                               kPoints * kChannels * 4, 0, 0));
    ASSERT_TRUE(std::equal(values.begin(), values.end(), samples.begin(), samples.end())) << i;
    if (epoch->epochInfo.accept == 0 || epoch->epochInfo.trialType != kRare) continue;
    ++accepted;
    for (std::size_t v = 0; v < values.size(); ++v) sums[v] += values[v];
  }
  EXPECT_EQ(average.GetSetup()->acceptedSweeps, accepted);
  const auto mean = average.LoadDataObject(0)->main.All();
  for (std::size_t v = 0; v < mean.size(); ++v) ASSERT_NEAR(mean[v], sums[v] / accepted, 1e-4) << v;
}

}  // namespace
}  // namespace wavelock

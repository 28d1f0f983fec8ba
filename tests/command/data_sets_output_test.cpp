// wavelock epochs, epoch, average and pairs give what such recordings hold, and info tells of averages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/command/run_command.h"

namespace wavelock {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

RecordingBuilder TwoEpochs() {
  return RecordingBuilder()
      .Epoched()
      .Labels({"Fz", "Cz"})
      .Points(2)
      .Sensitivity(0.5f)
      .Epochs({{.accept = 1,
                .trialType = 7,
                .correct = 1,
                .reactionTime = 0.25f,
                .response = 2,
                .samples = {1, 2, 3, 4}},
               {.accept = 0, .trialType = 300, .samples = {5, -6, 7, 8}}});
}

RecordingBuilder Average() {
  ByteWriter data;
  data.Zeros(5).F32(1.5f).F32(2).Zeros(5).F32(-3).F32(4).F32(0.1f).F32(0.2f).F32(0.3f).F32(0.4f);
  return RecordingBuilder()
      .Averaged()
      .Labels({"Fz", "Cz"})
      .Points(2)
      .PutU8(375, 1)
      .PutU16(364, 80)
      .PutU16(366, 3)
      .Data(data);
}

TEST(EpochsOutput, ALineForEachEpoch) {
  CommandFolder folder;
  folder.Put("a.rec", TwoEpochs());
  EXPECT_EQ(folder.Wavelock("epochs a.rec").out,
            "epoch\taccepted\ttype\tcorrect\treaction_time\tresponse\n"
            "0\t1\t7\t1\t0.25\t2\n"
            "1\t0\t300\t0\t0\t0\n");
  EXPECT_EQ(nlohmann::json::parse(folder.Wavelock("epochs a.rec --format json").out),
            nlohmann::json::parse(R"([
    {"epoch": 0, "accepted": 1, "type": 7, "correct": 1, "reaction_time": 0.25, "response": 2},
    {"epoch": 1, "accepted": 0, "type": 300, "correct": 0, "reaction_time": 0, "response": 0}])"));
  folder.Put("cut.rec", TwoEpochs().FileSize(900 + 150 + 30));
  EXPECT_EQ(folder.Wavelock("epochs cut.rec").exitCode, 1);
}

TEST(EpochOutput, TableOfPointsAndChannels) {
  CommandFolder folder;
  folder.Put("a.rec", TwoEpochs());
  EXPECT_EQ(folder.Wavelock("epoch a.rec 1").out, "Fz,Cz\n2.5,-3\n3.5,4\n");
  EXPECT_EQ(folder.Wavelock("epoch a.rec 0 --raw").out, "Fz,Cz\n1,2\n3,4\n");
  EXPECT_THAT(folder.Wavelock("epoch a.rec 0 --raw --format npy").out,
              HasSubstr("'<i2', 'fortran_order': False, 'shape': (2, 2)"));
  const Outcome none = folder.Wavelock("epoch a.rec 2");
  EXPECT_EQ(none.exitCode, 2);
  EXPECT_THAT(none.err, HasSubstr("a.rec: "));
  EXPECT_THAT(none.out, IsEmpty());
}

TEST(EpochOutput, SpectrumHasTwoColumnsForEachChannel) {
  CommandFolder folder;
  folder.Put("a.rec",
             TwoEpochs().FrequencyDomain().PutU8(675, 1).Epochs({{.spectrum = {1, 2, 3, 4, 5, 6, 7, 8}}}));
  EXPECT_EQ(folder.Wavelock("epoch a.rec 0").out,
            "Fz real,Fz imaginary,Cz real,Cz imaginary\n1,3,5,7\n2,4,6,8\n");
  EXPECT_EQ(folder.Wavelock("epoch a.rec 0 --raw").exitCode, 2);
}

TEST(AverageOutput, AverageOrItsVariance) {
  CommandFolder folder;
  folder.Put("a.rec", Average());
  EXPECT_EQ(folder.Wavelock("average a.rec").out, "Fz,Cz\n1.5,-3\n2,4\n");
  EXPECT_EQ(folder.Wavelock("average a.rec --variance").out, "Fz,Cz\n0.1,0.3\n0.2,0.4\n");
  folder.Put("plain.rec", Average().PutU8(375, 0));
  EXPECT_EQ(folder.Wavelock("average plain.rec --variance").exitCode, 1);
  folder.Put("c.rec", RecordingBuilder().Samples({1}));
  const Outcome other = folder.Wavelock("average c.rec");
  EXPECT_EQ(other.exitCode, 1);
  EXPECT_THAT(other.err, HasSubstr("continuous"));
}

TEST(PairsOutput, ALineForEachPoint) {
  CommandFolder folder;
  const auto pairs = [](std::uint32_t place) {
    ByteWriter data;
    data.Zeros(8).F32(1).F32(2).F32(3).F32(4).U32(0).U32(place).U32(place).U32(0);
    return RecordingBuilder().Revision(13).TimeFrequency().Labels({"", "C\tz"}).Points(2).Data(data);
  };
  folder.Put("a.rec", pairs(1050));
  folder.Put("none.rec", pairs(0));
  folder.Put("lost.rec", pairs(1'000'000));
  const std::string head = "first\tsecond\tpoint\treal\timaginary\n";
  EXPECT_EQ(folder.Wavelock("pairs a.rec").out, head + "\tC\\tz\t0\t1\t3\n\tC\\tz\t1\t2\t4\n");
  EXPECT_EQ(folder.Wavelock("pairs a.rec --format json").out,
            "[\n{\"first\":\"\",\"second\":\"C\\tz\",\"point\":0,\"real\":1,\"imaginary\":3},\n"
            "{\"first\":\"\",\"second\":\"C\\tz\",\"point\":1,\"real\":2,\"imaginary\":4}\n]\n");
  EXPECT_EQ(folder.Wavelock("pairs none.rec").out, head);
  const Outcome lost = folder.Wavelock("pairs lost.rec");
  EXPECT_EQ(lost.exitCode, 3);
  EXPECT_EQ(lost.out, head + "\tC\\tz\t0\t0\t0\n\tC\\tz\t1\t0\t0\n");
}

TEST(InfoOutput, TellsTheSweepsOfAverages) {
  CommandFolder folder;
  folder.Put("a.rec", Average());
  folder.Put("c.rec", RecordingBuilder().Samples({1}));
  const auto average = nlohmann::json::parse(folder.Wavelock("info --json a.rec").out);
  EXPECT_EQ(average.at("acceptedSweeps"), 80);
  EXPECT_EQ(average.at("rejectedSweeps"), 3);
  EXPECT_FALSE(average.contains("noise")) << "no time before zero to take it from";
  EXPECT_THAT(folder.Wavelock("info a.rec c.rec").out, HasSubstr("ACCEPTED"));
  EXPECT_THAT(folder.Wavelock("info c.rec").out, Not(HasSubstr("ACCEPTED")));
}

}  // namespace
}  // namespace wavelock

// wavelock markers and labels tell what stands beside the samples; samples leaves corrections out on request.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/command/run_command.h"
#include "tests/support/annotated_recordings.h"

namespace wavelock {
namespace {

using testing::HasSubstr;

TEST(AnnotationsOutput, MarkersAreListedAsTextAndAsJson) {
  CommandFolder folder;
  folder.Put("a.rec", MarkedRecording());
  EXPECT_EQ(folder.Wavelock("markers a.rec").out,
            "point\tepoch\tchannel\tname\ttext\tvalue\tlocked\tcolour\n"
            "77\t0\t1\tspike\ta\\tb\\\\\t2.5\ttrue\t#ff8040\n"
            "n/a\tn/a\tn/a\t\t\tn/a\tfalse\t#000000\n");
  EXPECT_EQ(nlohmann::json::parse(folder.Wavelock("markers a.rec --format json").out),
            nlohmann::json::parse(R"([
    {"point": 77, "epoch": 0, "channel": 1, "name": "spike", "text": "a\tb\\", "value": 2.5, "locked": true,
     "colour": "#ff8040"},
    {"point": null, "epoch": null, "channel": null, "name": "", "text": "", "value": null, "locked": false,
     "colour": "#000000"}])"));
}

TEST(AnnotationsOutput, LabelsAreListedInTheOrderOfTheFile) {
  CommandFolder folder;
  folder.Put("a.rec", CorrectedRecording());
  EXPECT_EQ(folder.Wavelock("labels a.rec").out, "value\ttext\n7\tlater\n4294967295\tlast\n");
  EXPECT_EQ(folder.Wavelock("labels a.rec --format json").out,
            "[\n{\"value\":7,\"text\":\"later\"},\n{\"value\":4294967295,\"text\":\"last\"}\n]\n");
  folder.Put("epochs.rec", MarkedRecording().Epoched());
  EXPECT_EQ(folder.Wavelock("labels epochs.rec").exitCode, 1);
}

TEST(AnnotationsOutput, CorrectionsAreLeftOutOnRequestAndTold) {
  CommandFolder folder;
  folder.Put("a.rec", CorrectedRecording());
  EXPECT_EQ(folder.Wavelock("samples a.rec --raw --to 3").out, "1\n0\n98\n98\n");
  EXPECT_EQ(folder.Wavelock("samples a.rec --raw --to 3 --no-rows").out, "1\n0\n-2\n-2\n");
  EXPECT_EQ(folder.Wavelock("samples a.rec --to 3 --no-polynomials").out, "1\n0\n100\n100\n");
  EXPECT_EQ(folder.Wavelock("samples a.rec --raw --no-rows --no-polynomials").out, "1\n0\n0\n0\n0\n");
  const Outcome gap = folder.Wavelock("samples a.rec");
  EXPECT_EQ(gap.exitCode, 1);
  EXPECT_THAT(gap.err, HasSubstr("--no-polynomials"));
  EXPECT_THAT(folder.Wavelock("info a.rec").out, HasSubstr("1 row, 1 segment"));
  const auto facts = nlohmann::json::parse(folder.Wavelock("info --json a.rec").out);
  EXPECT_EQ(facts["corrections"], nlohmann::json::parse(R"({"rows": 1, "segments": 1})"));
}

}  // namespace
}  // namespace wavelock

// wavelock events gives every event with its moment.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/command/run_command.h"

namespace wavelock {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

RecordingBuilder TwoEvents() {
  return RecordingBuilder()
      .Rate(250)
      .Samples(std::vector<std::int32_t>(500))
      .Events(
          {{.stimType = 300, .sample = 5}, {.keyboard = 7, .keypad = 2, .segmentClass = 11, .sample = 250}});
}

TEST(EventsOutput, TsvHasALineForEachEvent) {
  CommandFolder folder;
  folder.Put("a.rec", TwoEvents());
  EXPECT_EQ(folder.Wavelock("events a.rec").out,
            "onset\tsample\tstimulus\tkeyboard\tkeypad\tclass\n"
            "0.02\t5\t300\t0\t0\t0\n"
            "1\t250\t0\t7\t2\t11\n");
}

TEST(EventsOutput, JsonIsOneArray) {
  CommandFolder folder;
  folder.Put("a.rec", TwoEvents());
  folder.Put("none.rec", TwoEvents().Events({}));
  EXPECT_EQ(nlohmann::json::parse(folder.Wavelock("events a.rec --format json").out),
            nlohmann::json::parse(R"([
    {"onset": 0.02, "sample": 5, "stimulus": 300, "keyboard": 0, "keypad": 0, "class": 0},
    {"onset": 1, "sample": 250, "stimulus": 0, "keyboard": 7, "keypad": 2, "class": 11}])"));
  EXPECT_EQ(folder.Wavelock("events none.rec --format json").out, "[\n]\n");
}

TEST(EventsOutput, EventsThatCannotBeReadAreAFailure) {
  CommandFolder folder;
  folder.Put("a.rec", TwoEvents().EventTableKind(9));
  const Outcome outcome = folder.Wavelock("events a.rec");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, HasSubstr("a.rec: "));
}

}  // namespace
}  // namespace wavelock

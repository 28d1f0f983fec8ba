// wavelock info tells the truth about every kind of file, and goes on behind a bad one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/command/run_command.h"

namespace wavelock {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

RecordingBuilder OneSecond() {
  return RecordingBuilder()
      .Labels({"Fz", "Cz"})
      .Rate(250)
      .Samples(std::vector<std::int32_t>(500))
      .Events({{.stimType = 1, .sample = 5}, {.keypad = 2, .sample = 9}});
}

nlohmann::json Json(const CommandFolder& folder, const std::string& words) {
  return nlohmann::json::parse(folder.Wavelock("info --json " + words).out);
}

TEST(InfoOutput, JsonTellsWhatARecordingIs) {
  CommandFolder folder;
  folder.Put("a.rec", OneSecond());
  EXPECT_EQ(Json(folder, "a.rec"), nlohmann::json::parse(R"({
    "file": "a.rec", "kind": "continuous", "channels": 2, "labels": ["Fz", "Cz"], "rate": 250.0,
    "duration": 1.0, "points": 250, "epochs": 1, "events": 2,
    "corrections": {"rows": 0, "segments": 0}, "generation": "revision 16", "bits": 16,
    "bytes": 2097 })"));
}

TEST(InfoOutput, KindsAndGenerationsAreTold) {
  CommandFolder folder;
  folder.Put("oldest.rec", OneSecond().OldestLayout(0));
  folder.Put("old.rec", OneSecond().Revision(6));
  folder.Put("epochs.rec",
             RecordingBuilder().Epoched().Rate(100).Points(50).Epochs(
                 {{.samples = std::vector<std::int32_t>(50)}, {.samples = std::vector<std::int32_t>(50)}}));
  EXPECT_EQ(Json(folder, "oldest.rec")["generation"], "oldest");
  EXPECT_EQ(Json(folder, "old.rec")["generation"], "revision 6");
  const nlohmann::json epochs = Json(folder, "epochs.rec");
  EXPECT_EQ(epochs["kind"], "epoched");
  EXPECT_EQ(epochs["epochs"], 2);
  EXPECT_EQ(epochs["points"], 50);
  EXPECT_EQ(epochs["duration"], 1.0);
  EXPECT_TRUE(epochs["events"].is_null());
}

TEST(InfoOutput, TableHasARowForEachFile) {
  CommandFolder folder;
  folder.Put("a.rec", OneSecond());
  folder.Put("a much longer name.rec", OneSecond().Revision(6));
  const Outcome table = folder.Wavelock("info a.rec 'a much longer name.rec'");
  EXPECT_EQ(table.exitCode, 0);
  EXPECT_THAT(table.out, ContainsRegex("^FILE +KIND +CHANNELS +RATE +DURATION"));
  EXPECT_THAT(table.out,
              ContainsRegex("\na.rec +continuous +2 +250 Hz +0:00:01.000 +250 +1 +2 +- +revision 16"));
  EXPECT_THAT(table.out, HasSubstr("\na much longer name.rec  continuous"));
}

TEST(InfoOutput, BadFilesAreReportedAndTheRestGoOn) {
  CommandFolder folder;
  folder.Put("first.rec", OneSecond());
  folder.Put("last.rec", OneSecond());
  folder.PutText("empty.rec", "");
  folder.PutText("letter.rec", "Dear all,\nthis is no recording.\n");
  const Outcome outcome =
      folder.Wavelock("info --json first.rec empty.rec letter.rec missing.rec . last.rec");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.out,
              ContainsRegex("^\\{\"file\":\"first.rec\".*\\}\n\\{\"file\":\"last.rec\".*\\}\n$"));
  for (const char* file : {"empty.rec: ", "letter.rec: ", "missing.rec: No such file", ".: Is a directory"}) {
    EXPECT_THAT(outcome.err, HasSubstr(std::string("wavelock: ") + file));
  }
  EXPECT_THAT(outcome.err, Not(HasSubstr("first.rec")));
}

TEST(InfoOutput, EventsThatCannotBeReadAreALoss) {
  CommandFolder folder;
  folder.Put("a.rec", OneSecond().EventTableKind(9));
  const Outcome outcome = folder.Wavelock("info a.rec");
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_THAT(outcome.out, HasSubstr("continuous"));
  EXPECT_EQ(folder.Wavelock("info a.rec missing.rec").exitCode, 1);
}

TEST(InfoOutput, SubjectIsShownOnlyOnRequest) {
  constexpr std::size_t kAge = 141;
  constexpr std::size_t kText = 21;
  CommandFolder folder;
  folder.Put("a.rec", OneSecond().Date("06/23/2005").PutI16(kAge, 44).PutText(kText, "J. Doe"));
  for (const char* form : {"", "--json "}) {
    const std::string words = std::string("info ") + form;
    EXPECT_THAT(folder.Wavelock(words + "a.rec").out, Not(ContainsRegex("J. Doe|2005|44")));
    const Outcome asked = folder.Wavelock(words + "--subject a.rec");
    for (const char* value : {"J. Doe", "06/23/2005", "44"}) EXPECT_THAT(asked.out, HasSubstr(value));
  }
}

TEST(InfoOutput, TextsOfTheFileDoNotBreakTheOutput) {
  CommandFolder folder;
  const struct {
    const char* text;
    const char* shown;
  } kCases[] = {
      {"\x1b[31mred\x7f\xff", "?[31mred??"},
      {"\xC2\x9B\x33\x31m", "?31m"},
      {"\xE2\x80\xAEtsrif\xE2\x81\xA6", "?tsrif?"},
      {"\xC0\x9B \xED\xA0\x80 \xE2\x82", "?? ??? ??"},  // no characters of UTF-8
      {"\xC2\xA0\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xA7", "\xC2\xA0\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xA7"}};
  for (const auto& [text, shown] : kCases) {
    folder.Put("a.rec", OneSecond().PutText(21, text).PutChannelText(0, 0, "\x1b\xb5V\n\""));
    EXPECT_THAT(folder.Wavelock("info --subject a.rec").out, HasSubstr(std::string("  ") + shown + "\n"));
    EXPECT_EQ(Json(folder, "--subject a.rec")["labels"].size(), 2u);
  }
}

}  // namespace
}  // namespace wavelock

// The command's manners: help for everything, and exit codes that a script can go by.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/command/run_command.h"

namespace wavelock {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

TEST(CommandLine, HelpGoesToStandardOutputWithExamples) {
  const CommandFolder folder;
  std::istringstream lines(folder.Shell("$W --help | sed -n 's/^  \\([a-z][a-z]*\\) .*/\\1/p'").out);
  int subcommands = 0;
  for (std::string subcommand; lines >> subcommand; ++subcommands) {
    const Outcome help = folder.Wavelock(subcommand + " --help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("Examples:\n  wavelock " + subcommand));
    EXPECT_THAT(help.err, IsEmpty());
  }
  EXPECT_GE(subcommands, 15);
}

TEST(CommandLine, WrongUsageIsToldFromFailure) {
  CommandFolder folder;
  folder.Put("a.rec", RecordingBuilder().Labels({"Fz", "Cz", "Cz"}).Samples({1, 2, 3}));
  for (const char* words : {"", "frobnicate", "info", "info --frobnicate a.rec", "samples a.rec --format xls",
                            "samples a.rec --from -1", "samples a.rec --from 1x", "samples a.rec --to 2",
                            "samples a.rec --from 2 --to 1", "samples a.rec --channels Pz",
                            "samples a.rec --channels 4", "samples a.rec --channels Cz", "upgrade a.rec",
                            "upgrade --in-place -o out a.rec", "upgrade -o out"}) {
    const Outcome outcome = folder.Wavelock(words);
    EXPECT_EQ(outcome.exitCode, 2) << words;
    EXPECT_THAT(outcome.out, IsEmpty()) << words;
    EXPECT_THAT(outcome.err, HasSubstr("wavelock: ")) << words;
  }
  EXPECT_EQ(folder.Wavelock("samples b.rec").exitCode, 1);
}

TEST(CommandLine, ReaderThatGoesAwayIsNoFault) {
  CommandFolder folder;
  folder.Put("a.rec", RecordingBuilder().Samples(300'000, [](std::uint64_t, int) { return 7; }));
  for (const std::string words : {"samples a.rec", "samples a.rec --format npy"}) {
    const Outcome outcome = folder.Shell("{ $W " + words + "; echo $? >code; } | head -c 1");
    EXPECT_EQ(folder.Text("code"), "0\n");
    EXPECT_THAT(outcome.err, IsEmpty());
  }
}

TEST(CommandLine, FileThatExistsIsOverwrittenOnlyByForce) {
  CommandFolder folder;
  folder.Put("a.rec", RecordingBuilder().Samples({5}));
  folder.PutText("out", "precious");
  const Outcome refused = folder.Wavelock("samples a.rec -o out");
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("out: "));
  EXPECT_EQ(folder.Text("out"), "precious");
  EXPECT_EQ(folder.Wavelock("samples a.rec -o out --force").exitCode, 0);
  EXPECT_EQ(folder.Text("out"), "1\n5\n");
  EXPECT_EQ(folder.Wavelock("events a.rec -o new").exitCode, 0);
  EXPECT_TRUE(folder.Holds("new"));
}

TEST(CommandLine, RecordingIsNeverOverwrittenByItsOwnOutput) {
  CommandFolder folder;
  folder.Put("a.rec", RecordingBuilder().Samples({5}));
  const std::string before = folder.Text("a.rec");
  EXPECT_EQ(folder.Shell("ln a.rec b.rec; $W samples a.rec --force -o b.rec").exitCode, 1);
  EXPECT_EQ(folder.Text("a.rec"), before);
}

TEST(CommandLine, DataIsTakenAsItIsButDoesNotSteerATerminal) {
  CommandFolder folder;
  folder.Put("a.rec", RecordingBuilder().Labels({"\x1b]0;x\x07\xC2\x9B\r"}).Samples({5}));
  EXPECT_EQ(folder.Wavelock("samples a.rec").out, "\"\x1b]0;x\x07\xC2\x9B\r\"\n5\n");
  if (folder.Shell("script --version").exitCode != 0) GTEST_SKIP() << "nothing here makes a terminal";
  EXPECT_EQ(folder.Shell("script -qec \"$W samples a.rec\" /dev/null").out, "\"?]0;x???\"\r\n5\r\n");
}

TEST(CommandLine, OutputThatCannotBeWrittenIsAFailureAndLeavesNoFile) {
  CommandFolder folder;
  folder.Put("a.rec", RecordingBuilder().Samples(300'000, [](std::uint64_t, int) { return 7; }));
  EXPECT_EQ(folder.Wavelock("samples a.rec >/dev/full").exitCode, 1);
  EXPECT_EQ(folder.Wavelock("info a.rec >/dev/full").exitCode, 1);
  EXPECT_EQ(folder.Wavelock("samples a.rec -o missing/out").exitCode, 1);
  EXPECT_EQ(folder.Shell("ulimit -f 100; trap '' XFSZ; $W samples a.rec -o out").exitCode, 1);
  EXPECT_FALSE(folder.Holds("out"));
}

}  // namespace
}  // namespace wavelock

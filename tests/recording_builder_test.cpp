// The builder of test recordings puts every byte where the format has it, in each generation.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/recording_builder.h"
#include "tests/support/temporary_folder.h"

namespace wavelock {
namespace {

using Bytes = RecordingBuilder::Bytes;

// `count` bytes at `offset`, each as two hexadecimal digits.
std::string Hex(const Bytes& file, std::size_t offset, std::size_t count) {
  std::string text;
  for (std::size_t i = offset; i < offset + count; ++i) {
    constexpr char kDigits[] = "0123456789abcdef";
    text += kDigits[std::to_integer<unsigned>(file.at(i)) >> 4];
    text += kDigits[std::to_integer<unsigned>(file.at(i)) & 15];
  }
  return text;
}

std::string Text(const Bytes& file, std::size_t offset) {
  return reinterpret_cast<const char*>(file.data()) + offset;
}

TEST(RecordingBuilder, CurrentContinuousFileHoldsHeaderSamplesEventsAndTail) {
  const Bytes file = RecordingBuilder()
                         .Continuous()
                         .Labels({"Fz", "Cz"})
                         .Rate(120000)
                         .Samples({1, -2, 3, 4})
                         .Events({{.stimType = 0x102, .keypad = 5, .segmentClass = 14, .sample = 1}})
                         .Tail({{.tag = 70000, .version = 3, .payload = ByteWriter().I32(1)}})
                         .Build();
  EXPECT_EQ(Text(file, 0), "Version 3.0");
  EXPECT_EQ(Hex(file, 12, 8), "3e04000000000000");  // the tail, at 1058 + 9 + 19 = 1086
  EXPECT_EQ(Hex(file, 370, 2), "0200");
  EXPECT_EQ(Hex(file, 376, 2), "10ef");  // 61200
  EXPECT_EQ(Hex(file, 538, 1), "03");
  EXPECT_EQ(Hex(file, 804, 1), "10");
  EXPECT_EQ(Hex(file, 885, 5), "0122040000");  // layout 1, the event table at 900 + 2 x 75 + 8 = 1058
  EXPECT_EQ(Text(file, 975), "Cz");
  EXPECT_EQ(Hex(file, 1050, 8), "0100feff03000400");
  EXPECT_EQ(Hex(file, 1058, 9), "021300000000000000");
  EXPECT_EQ(Hex(file, 1067, 19), "020100e51e040000" + std::string(22, '0'));  // point 1050 + 1 x 4
  EXPECT_EQ(Hex(file, 1086, 8), "5156522054464600");
  EXPECT_EQ(Hex(file, 1086 + 64, 20),
            "70110100030000000400000004000000"
            "01000000");
  EXPECT_EQ(file.size(), 1086u + 64 + 20);
}

TEST(RecordingBuilder, SamplesLieInTheLayoutThatIsAskedFor) {
  const auto builder = RecordingBuilder().Channels(2).Samples({1, 2, 3, 4, 5, 6});
  const std::size_t at = 900 + 2 * 75;
  EXPECT_EQ(Hex(RecordingBuilder(builder).Layout(0).TriggerWords(1, 7, 0x1f).Build(), at, 24),
            "0100020000000000"
            "0300040007001f00"
            "0500060000000000");
  EXPECT_EQ(Hex(RecordingBuilder(builder).Layout(2).LeadingWord(-1).Build(), at, 18),
            "ffff01000200"
            "ffff03000400"
            "ffff05000600");
  const Bytes blocks = RecordingBuilder(builder).Layout(3).BlockSamples(2).Build();
  EXPECT_EQ(Hex(blocks, 894, 4), "04000000");
  EXPECT_EQ(Hex(blocks, at, 16),
            "0100030002000400"
            "0500000006000000");
  EXPECT_EQ(Hex(RecordingBuilder(builder).Width(4).Build(), at, 8), "0100000002000000");
}

TEST(RecordingBuilder, BlocksBelowRevision4AlwaysHave32Channels) {
  const Bytes file =
      RecordingBuilder().Revision(2).Epoched().Channels(1).Epochs({{.trialType = 9, .samples = {5}}}).Build();
  EXPECT_EQ(Hex(file, 3300, 5), "0109000500");  // a head of three bytes
  EXPECT_EQ(file.size(), 3300u + 3 + 2);
  EXPECT_EQ(RecordingBuilder().Revision(4).Channels(1).DataStart(), 975u);
}

TEST(RecordingBuilder, OldestLayoutHasABlockBeforeOrBehindItForSomeForms) {
  const auto builder =
      RecordingBuilder().Channels(2).Rate(250).ShortBlock("short", 1, 2).NoteBlock("note").Samples({1, 2});
  const Bytes plain = RecordingBuilder(builder).OldestLayout(0).Build();
  EXPECT_EQ(Hex(plain, 235, 2), "0200");
  EXPECT_EQ(Hex(plain, 240, 2), "fa00");
  EXPECT_EQ(Hex(plain, 357, 1), "03");
  EXPECT_EQ(Text(plain, 699 + 26), "2");
  EXPECT_EQ(Hex(plain, 2363, 8), "0100020000000000");
  const Bytes both = RecordingBuilder(builder).OldestLayout(5).Build();
  EXPECT_EQ(Hex(both, 0, 1), "05");
  EXPECT_EQ(Text(both, 1), "short");
  EXPECT_EQ(Hex(both, 31 + 8, 2), "0200");
  EXPECT_EQ(Text(both, 31 + 2136), "note");
  EXPECT_EQ(Hex(both, 2233, 8), "0100020000000000");
  EXPECT_EQ(RecordingBuilder(builder).OldestLayout(2).DataStart(), 2167u);
  EXPECT_EQ(RecordingBuilder(builder).OldestLayout(3).DataStart(), 2429u);
}

TEST(RecordingBuilder, FileOfSeveralGibibytesIsWrittenWithHoles) {
  constexpr std::uint64_t kTable = 975 + (5ull << 30) + 2;
  const TemporaryFolder folder;
  const std::string path = folder.Path("holes.rec");
  ASSERT_TRUE(RecordingBuilder()
                  .Channels(1)
                  .Samples({1})
                  .SamplesAt(5ull << 29, {2})
                  .EventTableAt(kTable)
                  .Events({{.sample = 77}})
                  .FileSize(kTable + 9 + 19 + 4)
                  .WriteTo(path));
  EXPECT_EQ(std::filesystem::file_size(path), kTable + 9 + 19 + 4);
  Bytes read(9 + 19 + 4);
  std::ifstream file(path, std::ios::binary);
  file.seekg(975 + (5ull << 30)).read(reinterpret_cast<char*>(read.data()), 2);
  EXPECT_EQ(Hex(read, 0, 2), "0200");
  file.seekg(kTable).read(reinterpret_cast<char*>(read.data()), 32);
  EXPECT_EQ(Hex(read, 0, 32),
            "031300000000000000"
            "000000004d000000" +
                std::string(30, '0'));
}

TEST(RecordingBuilder, FieldPutOutsideItsBlockIsAMistake) {
  EXPECT_THROW(RecordingBuilder().PutU16(899, 1).Build(), std::out_of_range);
  EXPECT_THROW(RecordingBuilder().PutChannelF32(0, 72, 1).Build(), std::out_of_range);
  EXPECT_THROW(RecordingBuilder().PutChannelU8(1, 0, 1).Build(), std::out_of_range);
}

}  // namespace
}  // namespace wavelock

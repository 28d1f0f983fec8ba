// wavelock samples gives the same numbers in every form, in bounded memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>

#include "tests/command/run_command.h"
#include "tests/support/annotated_recordings.h"

namespace wavelock {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// Three samples; a count of channel 2 is a quarter of a microvolt.
RecordingBuilder ThreeSamples() {
  return RecordingBuilder()
      .Labels({"Fz", "Cz", "1"})
      .Sensitivity(1, 0.25f)
      .Samples({1, -2, 3, 4, 5, -32768, 7, 8, 9});
}

template <class T>
std::vector<T> Numbers(const std::string& bytes) {
  std::vector<T> numbers(bytes.size() / sizeof(T));
  std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(T));
  return numbers;
}

TEST(SamplesOutput, CsvHasLabelsThenMicrovoltsOrStoredIntegers) {
  CommandFolder folder;
  folder.Put("a.rec", ThreeSamples());
  EXPECT_EQ(folder.Wavelock("samples a.rec").out, "Fz,Cz,1\n1,-0.5,3\n4,1.25,-32768\n7,2,9\n");
  EXPECT_EQ(folder.Wavelock("samples a.rec --raw").out, "Fz,Cz,1\n1,-2,3\n4,5,-32768\n7,8,9\n");
  folder.Put("odd.rec", RecordingBuilder().Labels({"a,b", "c\"d"}).Samples({1, 2}));
  EXPECT_EQ(folder.Wavelock("samples odd.rec").out, "\"a,b\",\"c\"\"d\"\n1,2\n");
}

TEST(SamplesOutput, ChannelsComeByLabelOrNumberInTheOrderAskedFor) {
  CommandFolder folder;
  folder.Put("a.rec", ThreeSamples());
  EXPECT_EQ(folder.Wavelock("samples --channels Cz,Fz,2 a.rec --from 1 --to 2 --raw").out,
            "Cz,Fz,Cz\n5,4,5\n");
  EXPECT_EQ(folder.Wavelock("samples --channels 1 a.rec --raw").out, "1\n3\n-32768\n9\n");  // a label first
}

TEST(SamplesOutput, BinHoldsTheNumbersAlone) {
  CommandFolder folder;
  folder.Put("a.rec", ThreeSamples());
  EXPECT_THAT(Numbers<float>(folder.Wavelock("samples a.rec --format bin --to 1").out),
              ElementsAre(1.0f, -0.5f, 3.0f));
  EXPECT_THAT(Numbers<std::int16_t>(folder.Wavelock("samples a.rec --format bin --raw --channels 2,1").out),
              ElementsAre(-2, 3, 5, -32768, 8, 9));
}

TEST(SamplesOutput, NpyHeadTellsTypeAndShapeAndAlignsTheData) {
  CommandFolder folder;
  folder.Put("a.rec", ThreeSamples());
  for (const auto& [words, type, width] : {std::tuple{"a.rec", "<f4", 4u}, {"--raw a.rec", "<i2", 2u}}) {
    const std::string npy = folder.Wavelock("samples --channels 1,2 --format npy " + std::string(words)).out;
    ASSERT_EQ(npy.size(), 128 + 6 * width);
    EXPECT_EQ(npy.substr(0, 10), std::string("\x93NUMPY\x01\x00\x76\x00", 10));
    EXPECT_THAT(npy.substr(10, 118), HasSubstr("{'descr': '" + std::string(type) +
                                               "', 'fortran_order': False, 'shape': (3, 2), }"));
    EXPECT_EQ(npy[127], '\n');
  }
}

TEST(SamplesOutput, WideSamplesStayWide) {
  CommandFolder folder;
  folder.Put(
      "wide.rec",
      RecordingBuilder().Channels(2).Width(4).Samples({100'000, -100'000}).Tail(PlainSetupSections(2)));
  const std::string npy = folder.Wavelock("samples --raw --format npy wide.rec").out;
  EXPECT_THAT(npy, HasSubstr("'<i4'"));
  EXPECT_THAT(Numbers<std::int32_t>(npy.substr(128)), ElementsAre(100'000, -100'000));
}

TEST(SamplesOutput, OtherKindsOfRecordingsAreRefused) {
  CommandFolder folder;
  folder.Put("a.rec",
             RecordingBuilder().Epoched().Points(2).Epochs({{.samples = std::vector<std::int32_t>(2)}}));
  const Outcome outcome = folder.Wavelock("samples a.rec -o out");
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.err, HasSubstr("a.rec: "));
  EXPECT_FALSE(folder.Holds("out"));
}

TEST(SamplesOutput, LongRecordingIsStreamedInLittleMemory) {
  constexpr int kChannels = 64;
  constexpr std::uint64_t kSamples = 2'000'000;
  constexpr std::uint64_t kTable = 900 + 75 * kChannels + kSamples * kChannels * 2;
  CommandFolder folder;
  folder.Put("long.rec", RecordingBuilder()
                             .Channels(kChannels)
                             .SamplesAt(kSamples - 1, std::vector<std::int32_t>(kChannels, 9))
                             .EventTableAt(kTable)
                             .Events({}));
  EXPECT_EQ(folder.Wavelock("samples long.rec --format npy --raw | tail -c 2").out,
            std::string("\x09\x00", 2));
#ifndef __SANITIZE_ADDRESS__  // which keeps memory of its own
  constexpr long kMostKilobytes = 50'000;
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  EXPECT_LT(usage.ru_maxrss, kMostKilobytes);
#endif
}

}  // namespace
}  // namespace wavelock

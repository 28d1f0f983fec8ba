// Derivation files are read word by word, matched with the channels, and refused with a reason.
#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <tuple>
#include <utility>

#include "tests/support/test_host.h"
#include "wavelock/numerics/derivation_file.h"

namespace wavelock {
namespace {

const std::vector<std::string> kChannels = {"Fz", "Cz", "Cz", "Pz"};

struct DerivationFile : testing::Test {
  bool Read(const std::string& text, const std::string& name = "file.LDR") {
    test.memory.Put("file.LDR", std::as_bytes(std::span(text)));
    return file.Read(name, static_cast<std::int32_t>(kChannels.size()), 40, kChannels.data());
  }

  TestHost test;
  CDerivationFile file{test.host};
};

TEST_F(DerivationFile, HoldsLabelsAndCoefficientsOfEachRow) {
  ASSERT_TRUE(Read("3 2\nCz Xx\n a 1 2.5\n b -.5e1 +0\n c 0.1 1e999", "file"));
  EXPECT_EQ(file.GetOutputCount(), 3);
  EXPECT_EQ(file.inputLabels[1], "Xx");
  EXPECT_EQ(file.GetOutputLabels()[2], "c");
  EXPECT_EQ(file.coefficients[0][1], 2.5F);
  EXPECT_EQ(file.coefficients[1][0], -5.0F);
  EXPECT_EQ(file.coefficients[2][0], 0.1F);
  EXPECT_EQ(file.coefficients[2][1], std::numeric_limits<float>::infinity());
  EXPECT_EQ(file.channelInput[1], 0) << "the first channel of that label";
  EXPECT_EQ(file.channelInput[2], -1);
  ASSERT_TRUE(Read("1\v1\fPz\r\nlast\t7"));
  EXPECT_EQ(file.GetOutputCount(), 1);
  ASSERT_TRUE(Read("1 2 Cz Cz out 0 1"));
  EXPECT_EQ(file.channelInput[1], 1) << "the later of two columns of one label";
  EXPECT_TRUE(test.user.messages.empty());
  file.Release();
  EXPECT_FALSE(file.allocated);
  EXPECT_TRUE(file.GetOutputLabels().empty());
}

TEST_F(DerivationFile, TellsWhyItIsRefused) {
  const std::tuple<std::string, int, const char*> refusals[] = {
      {"", 3, "Unable to read number of rows/columns in file file.LDR"},
      {"2 x", 3, "Unable to read number of rows/columns in file file.LDR"},
      {"0 1", 6, "One or more LDR output channels required."},
      {"1 -3", 6, "One or more LDR input channels required."},
      {"20000 20000", 1, "Out of memory"},
      {"1 99999999999", 1, "Out of memory"},
      {"1 200000000 a", 3, "Unable to read input channel label for column 1 in file file.LDR"},
      {"200000000 1 Cz out 1", 3, "Unable to read output channel label for row 1 in file file.LDR"},
      {"1 2 Cz", 3, "Unable to read input channel label for column 1 in file file.LDR"},
      {"2 1 Cz out 1", 3, "Unable to read output channel label for row 1 in file file.LDR"},
      {"1 3 Cz b c out 1 1", 3, "Unable to read coefficient at row 0, column 2 in file file.LDR"},
      {"1 2 Cz b out nan 1", 3, "Unable to read coefficient at row 0, column 0 in file file.LDR"},
      {"1 2 Cz b out 0x1 1", 3, "Unable to read coefficient at row 0, column 1 in file file.LDR"},
      {"1 1 cz out 1", 4, "No match found for any input channel label in file file.LDR"},
      {"1 2 Cz Cz out 1 0", 4, "No match found for any input channel label in file file.LDR"},
      {"1 2 Cz b out 0 1", 4, "No match found for any input channel label in file file.LDR"},
      {"1 1 " + std::string(100, 'x') + " out 1", 3,
       "Unable to read coefficient at row 0, column 0 in file file.LDR"},
  };
  for (const auto& [text, code, words] : refusals) {
    SCOPED_TRACE(text);
    test.user.messages.clear();
    EXPECT_FALSE(Read(text));
    EXPECT_EQ(file.GetErrorCode(), code);
    EXPECT_EQ(file.errorText, words);
    EXPECT_EQ(test.user.messages.size(), code == 6 ? 0u : 1u);
    EXPECT_TRUE(!file.allocated && file.GetOutputLabels().empty());
  }
  file.showNotices = 0;
  EXPECT_FALSE(Read("1 1 Cz out 1", "missing"));
  EXPECT_EQ(file.errorText, "Unable to open file missing.LDR");
  EXPECT_EQ(test.user.messages.size(), 1u);
}

struct CommaInNumbers : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST_F(DerivationFile, NumbersDoNotFollowTheLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommaInNumbers));
  EXPECT_TRUE(Read("1 1 Cz out 1.5"));
  std::locale::global(before);
  EXPECT_EQ(file.coefficients[0][0], 1.5F);
}

TEST(DefaultExtension, GoesToNamesWithoutOne) {
  for (const auto& [name, extended] : {std::pair{"a.b\\name", "a.b\\name.LDR"},
                                       {"a.b\\name.", "a.b\\name."},
                                       {"name", "name.LDR"},
                                       {"a.b/name", "a.b/name"}})
    EXPECT_EQ(ApplyDefaultExtension(name, "LDR"), extended);
  EXPECT_EQ(ApplyDefaultExtension("name", ".x"), "name.x");
}

TEST(TextScanner, SplitsWhatRunsTogetherWhereANumberEnds) {
  TextScanner text(" +12abc 1.5e+x -.e 2147483648 -99999999999");
  EXPECT_EQ(text.Integer(), 12);
  EXPECT_EQ(text.Integer(), std::nullopt);
  EXPECT_EQ(text.Word(2), "ab");
  EXPECT_EQ(text.Word(9), "c");
  EXPECT_EQ(text.Decimal(), 1.5);
  EXPECT_EQ(text.Word(9), "e+x");
  EXPECT_EQ(text.Decimal(), std::nullopt);
  EXPECT_EQ(text.Word(9), "-.e");
  EXPECT_EQ(text.Integer(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(text.Integer(), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(text.Word(9), std::nullopt);
}

TEST(Matrices, AreZeroInOneBlockAndNullWhenThereIsNoMemory) {
  FloatMatrix matrix;
  ASSERT_TRUE(AllocFloatMatrix(matrix, 3, 4));
  EXPECT_EQ(matrix[2], matrix[0] + 8);
  EXPECT_EQ(matrix[2][3], 0.0F);
  EXPECT_FALSE(AllocFloatMatrix(matrix, 0xFFFFFFFF, 0xFFFFFFFF));
  EXPECT_FALSE(matrix);
  IntVector numbers;
  EXPECT_TRUE(AllocIntVector(numbers, 0));
  EXPECT_FALSE(AllocIntVector(numbers, -1));
}

}  // namespace
}  // namespace wavelock

// The texts of a setup keep to their width, and every field can be reached by its name.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "tests/support/setup_values.h"
#include "wavelock/setup/setup.h"

namespace wavelock {
namespace {

TEST(FixedText, IsCutToItsWidthAndLeavesNothingBehindIt) {
  FixedText<10> text = "Default";
  text.Assign("a longer text");
  EXPECT_EQ(text, "a longer ");
  text.Assign(std::string_view("x\0hidden", 8));
  EXPECT_EQ(text, "x");
  EXPECT_EQ(text, FixedText<10>("x")) << "bytes of an earlier text lie behind the NUL";
  text.Assign({});
  EXPECT_TRUE(text.Empty());
  EXPECT_EQ(FixedText<4>("abc").View(), "abc");
}

// Structures without padding: when the visited values fill one, none is missing.
template <class Structure>
void ExpectEveryByteVisited() {
  const auto structure = std::make_unique<Structure>();
  std::size_t bytes = 0;
  std::set<std::string> paths;
  VisitLeaves("", *structure, [&](const std::string& path, const auto& value) {
    bytes += sizeof value;
    EXPECT_TRUE(paths.insert(path).second) << path << " is visited twice";
  });
  EXPECT_EQ(bytes, sizeof(Structure));
}

TEST(SetupFields, AreVisitedOnceEach) {
  ExpectEveryByteVisited<SetupFields>();
  ExpectEveryByteVisited<SetupChannel>();
  ExpectEveryByteVisited<ParamsA>();
  ExpectEveryByteVisited<ParamsB>();
  ExpectEveryByteVisited<ParamsC>();
  ExpectEveryByteVisited<AuxInputs>();
  ExpectEveryByteVisited<WaveformSet>();

  std::size_t subjectFields = 0;
  VisitFields(*std::make_unique<SubjectFields>(), [&](const char*, auto&&) { ++subjectFields; });
  EXPECT_EQ(subjectFields, 23u);
}

TEST(SetupFields, HaveTheSizesOfTheirSections) {
  EXPECT_EQ(sizeof(SetupBand), 1092u);
  EXPECT_EQ(sizeof(WaveformSet::sources), 20840u);
  EXPECT_EQ(sizeof(WaveformSet::slots), 5840u);
  EXPECT_EQ(sizeof(WaveformNames), 5640u);
  EXPECT_EQ(sizeof(ParamsB) - sizeof(ParamsB::bSpare), 140u);
  static_assert(std::is_trivially_copyable_v<SetupFields> && std::is_trivially_copyable_v<SetupChannel> &&
                std::is_trivially_copyable_v<WaveformSet> && std::is_trivially_copyable_v<AuxInputs>);
}

}  // namespace
}  // namespace wavelock

// The dispatch surface: what it tells of itself, how it calls, and what it refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/recording_builder.h"
#include "tests/support/test_host.h"
#include "wavelock/control/identifiers.h"
#include "wavelock/control/wavelock_dispatch.h"

namespace wavelock {
namespace {

using testing::ElementsAre;

std::string TypeName(ValueType type) {
  static const std::map<ValueType, std::string> kNames{
      {ValueType::kI2, "I2"},       {ValueType::kI4, "I4"},     {ValueType::kR4, "R4"},
      {ValueType::kString, "BSTR"}, {ValueType::kBool, "BOOL"}, {ValueType::kVoid, "void"}};
  return kNames.at(type);
}

std::string Declaration(const MethodInfo& method) {
  std::string text = std::to_string(method.id) + " " + TypeName(method.result) + " " + method.name + "(";
  for (std::uint32_t i = 0; i < method.parameterCount; ++i) {
    constexpr const char* kMarks[] = {"", "*", "[]"};
    const ParameterInfo& p = method.parameters[i];
    text += (i == 0 ? "" : ", ") + TypeName(p.type) + kMarks[static_cast<int>(p.passing)] + " " + p.name;
  }
  return text + ")";
}

TEST(DispatchTable, DeclaresEveryMethodWithItsTypes) {
  std::vector<std::string> declarations;
  for (const MethodInfo& method : DispatchMethods()) declarations.push_back(Declaration(method));
  EXPECT_THAT(
      declarations,
      ElementsAre("1 BOOL OpenInputDataFile(BSTR szFileName)", "2 BOOL CloseInputDataFile()",
                  "3 BOOL GetContinuousShortBlock(I4 nStart, I4 nEnd, I2[] pBlock, I4 nBlockSize)",
                  "4 BOOL GetContinuousFloatBlock(I4 nStart, I4 nEnd, R4[] pBlock, I4 nBlockSize)",
                  "5 I2 GetNumChannels()", "6 I4 GetRate()",
                  "7 BOOL GetEpochShortBlock(I4 nIndex, I2[] pBlock, I4 nBlockSize)",
                  "8 BOOL GetEpochFloatBlock(I4 nIndex, R4[] pBlock, I4 nBlockSize)", "9 I2 GetAcqType()",
                  "10 BSTR GetFileName()", "11 BOOL GetFileActive()", "12 I4 GetNumContinuousPoints()",
                  "13 I4 GetEventCount()",
                  "14 BOOL GetEvent(I4* nEventIndex, I4* nStimType, I4* nKeyboard, I4* nKeypad, I4* nPoint)",
                  "15 I4 GetEpochCount()",
                  "16 BOOL GetEpochInfo(I4 nEpochIndex, I2* pTrialType, I2* pAccept, I2* pCorrect, R4* "
                  "pReactionTime, "
                  "I2* pResponse)",
                  "17 BOOL GetEpochIntBlock(I4 nIndex, I4[] pBlock, I4 nBlockSize)",
                  "18 BOOL GetContinuousIntBlock(I4 nStart, I4 nEnd, I4[] pBlock, I4 nBlockSize)",
                  "-552 void AboutBox()"));
}

class DispatchTest : public testing::Test {
 protected:
  DispatchTest() {
    host.memory.Put("/c.cnt", RecordingBuilder()
                                  .Channels(2)
                                  .Samples({1, 2, 3, 4})
                                  .Events({{.stimType = 3, .keyboard = 4, .keypad = 5, .sample = 1}})
                                  .Build());
    EXPECT_EQ(Call("OpenInputDataFile", "/c.cnt"), Result::kDone);
    EXPECT_EQ(result.BoolBits(), -1);
  }

  template <class... Arguments>
  Result Call(std::string_view name, Arguments... values) {
    badArgument = kNone;
    const std::array<Variant, sizeof...(values)> arguments{Variant(std::move(values))...};
    return InvokeMethod(control, FindMethodId(name).value(), arguments, &result, &badArgument);
  }

  static constexpr std::uint32_t kNone = 99;

  TestHost host;
  CWavelockCtrl control{host.host};
  Variant result;
  std::uint32_t badArgument = kNone;
};

TEST_F(DispatchTest, ThereMayBeNoResultOrNoText) {
  host.user.ExpectDialog("CAboutBox", {});
  EXPECT_EQ(Call("AboutBox"), Result::kDone);
  EXPECT_EQ(result.Type(), ValueType::kEmpty);

  control.recording.reset();
  EXPECT_EQ(Call("GetFileName"), Result::kDone);
  EXPECT_TRUE(result.IsNullString());
}

TEST_F(DispatchTest, ReferencesMayLeadNowhereAndOneVariableIsABlockOfOne) {
  std::int32_t index = 0;
  std::int32_t point = 9;
  const auto none = [] { return Variant::ByReference<std::int32_t>(nullptr); };
  EXPECT_EQ(
      Call("GetEvent", Variant::ByReference(&index), none(), none(), none(), Variant::ByReference(&point)),
      Result::kDone);
  EXPECT_TRUE(result.Bool());
  EXPECT_EQ(point, 1);
  std::int32_t pair = 0;
  EXPECT_EQ(Call("GetContinuousIntBlock", 0, 1, Variant::ByReference(&pair), 4), Result::kDone);
  EXPECT_TRUE(result.Bool());
}

TEST_F(DispatchTest, BlockSmallerThanItsStatedSizeIsRefused) {
  std::int16_t words[5] = {9, 9, 9, 9, 9};
  const auto block = [&] { return Variant::Block(std::span(words).first(3)); };
  EXPECT_EQ(Call("GetContinuousShortBlock", 0, 2, block(), 8), Result::kBufferTooSmall);
  EXPECT_EQ(badArgument, 2u);
  EXPECT_EQ(Call("GetContinuousShortBlock", 0, 2, block(), -8), Result::kBufferTooSmall);
  EXPECT_EQ(Call("GetContinuousShortBlock", 0, 1, Variant::ByReference(&words[0]), 4),
            Result::kBufferTooSmall);
  EXPECT_EQ(Call("GetContinuousShortBlock", 0, 1, Variant::ByReference<std::int16_t>(nullptr), 4),
            Result::kBufferTooSmall);
  const std::span<std::int16_t> nowhere(static_cast<std::int16_t*>(nullptr), std::size_t{0});
  EXPECT_EQ(Call("GetContinuousShortBlock", 0, 1, Variant::Block(nowhere), 4), Result::kBufferTooSmall);
  EXPECT_THAT(words, ElementsAre(9, 9, 9, 9, 9));
}

TEST_F(DispatchTest, UnknownIdsAndOtherNumbersOfArgumentsAreRefused) {
  const auto invoke = [this](std::int32_t id, std::size_t count) {
    return InvokeMethod(control, id, std::vector<Variant>(count), &result, &badArgument);
  };
  for (const std::int32_t id : {0, 19, 20, -1, -551, -553, INT32_MIN, INT32_MAX})
    EXPECT_EQ(invoke(id, 0), Result::kMemberNotFound) << id;
  for (const MethodInfo& method : DispatchMethods()) {
    for (std::uint32_t count = 0; count <= kMostParameters + 1; ++count) {
      if (count == method.parameterCount) continue;
      EXPECT_EQ(invoke(method.id, count), Result::kBadParameterCount);
    }
  }
  EXPECT_EQ(badArgument, kNone);
}

TEST_F(DispatchTest, ArgumentsOfOtherTypesAreRefused) {
  float floats[2] = {};
  std::int16_t words[4] = {};
  std::int32_t number = 0;
  const auto block = [&] { return Variant::Block(std::span(floats)); };
  const auto word = [&] { return Variant::ByReference(&words[0]); };
  const auto time = [&] { return Variant::ByReference(&floats[0]); };
  const auto expectRefused = [this](std::uint32_t wrong, Result done) {
    EXPECT_EQ(done, Result::kTypeMismatch);
    EXPECT_EQ(badArgument, wrong);
  };
  expectRefused(0, Call("OpenInputDataFile", 1));
  expectRefused(0, Call("OpenInputDataFile", Variant()));
  expectRefused(0, Call("GetContinuousFloatBlock", std::int16_t{0}, 1, block(), 8));
  expectRefused(1, Call("GetContinuousFloatBlock", 0, 1.0f, block(), 8));
  expectRefused(1, Call("GetContinuousFloatBlock", 0, Variant::ByReference(&number), block(), 8));
  expectRefused(2, Call("GetContinuousFloatBlock", 0, 1, 1.0f, 8));
  expectRefused(2, Call("GetContinuousFloatBlock", 0, 1, Variant::Block(std::span(words)), 8));
  expectRefused(2, Call("GetContinuousFloatBlock", 0, 1, Variant::ByReference(&number), 4));
  expectRefused(3, Call("GetContinuousFloatBlock", 0, 1, block(), true));
  expectRefused(1, Call("GetEpochInfo", 0, std::int16_t{0}, word(), word(), time(), word()));
  expectRefused(4, Call("GetEpochInfo", 0, word(), word(), word(), word(), word()));
  expectRefused(5, Call("GetEpochInfo", 0, word(), word(), word(), time(), Variant::Block(std::span(words))));

  alignas(4) std::byte room[8] = {};
  auto* const betweenTwoPlaces = reinterpret_cast<float*>(room + 1);
  expectRefused(2, Call("GetContinuousFloatBlock", 0, 1, Variant::ByReference(betweenTwoPlaces), 4));
}

TEST_F(DispatchTest, ResultAndBadArgumentMayBeLeftOut) {
  EXPECT_EQ(InvokeMethod(control, 10, {}, nullptr, nullptr), Result::kDone);
  EXPECT_EQ(InvokeMethod(control, 1, std::vector<Variant>(1), nullptr, nullptr), Result::kTypeMismatch);
}

}  // namespace
}  // namespace wavelock

// The dispatch surface: what it tells of itself, how it calls, and what it refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
  switch (type) {
    case ValueType::kI2:
      return "I2";
    case ValueType::kI4:
      return "I4";
    case ValueType::kR4:
      return "R4";
    case ValueType::kString:
      return "BSTR";
    case ValueType::kBool:
      return "BOOL";
    case ValueType::kVoid:
      return "void";
    default:
      return "?";
  }
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

TEST(DispatchTable, TypeLibraryHoldsBothInterfacesAndTheClass) {
  const TypeLibraryInfo& library = TypeLibrary();
  EXPECT_EQ(library.majorVersion, 1);
  EXPECT_EQ(library.minorVersion, 0);
  EXPECT_EQ(library.locale, 0x409u);
  ASSERT_EQ(library.interfaceCount, 2u);
  EXPECT_STREQ(library.interfaces[0].name, "_DWavelock");
  EXPECT_EQ(library.interfaces[0].methodCount, 19u);
  EXPECT_STREQ(library.interfaces[1].name, "_DWavelockEvents");
  EXPECT_EQ(library.interfaces[1].methodCount, 18u);
  ASSERT_EQ(library.classCount, 1u);
  EXPECT_STREQ(library.classes[0].name, "Wavelock");
  EXPECT_EQ(library.classes[0].id, kControlClassId);
}

TEST(DispatchTable, NamesAreFoundInEitherCase) {
  EXPECT_EQ(FindMethodId("GETEVENT"), 14);
  EXPECT_EQ(FindMethodId("aboutbox"), -552);
  EXPECT_EQ(FindMethodId("GetEvents"), std::nullopt);
  EXPECT_EQ(FindMethodId(""), std::nullopt);
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
  Result Call(std::string_view name, Arguments... arguments) {
    return CallId(FindMethodId(name).value(), std::move(arguments)...);
  }

  template <class... Arguments>
  Result CallId(std::int32_t id, Arguments... values) {
    badArgument = kNone;
    const std::array<Variant, sizeof...(values)> arguments{Variant(std::move(values))...};
    return InvokeMethod(control, id, arguments, &result, &badArgument);
  }

  static constexpr std::uint32_t kNone = 99;

  TestHost host;
  CWavelockCtrl control{host.host};
  Variant result;
  std::uint32_t badArgument = kNone;
};

TEST_F(DispatchTest, ResultsHaveTheirDeclaredTypes) {
  EXPECT_EQ(Call("GetNumChannels"), Result::kDone);
  EXPECT_EQ(result.I2(), 2);
  EXPECT_EQ(Call("GetRate"), Result::kDone);
  EXPECT_EQ(result.I4(), 1000);
  EXPECT_EQ(Call("GetFileName"), Result::kDone);
  EXPECT_EQ(result.Text(), "c.cnt");
  EXPECT_EQ(Call("GetEpochIntBlock", 0, Variant::Block(std::span<std::int32_t>()), 0), Result::kDone);
  EXPECT_EQ(result.Type(), ValueType::kBool);
  EXPECT_EQ(result.BoolBits(), 0);
  host.user.ExpectDialog("CAboutBox", {});
  EXPECT_EQ(CallId(-552), Result::kDone);
  EXPECT_EQ(result.Type(), ValueType::kEmpty);

  control.recording.reset();
  EXPECT_EQ(Call("GetFileName"), Result::kDone);
  EXPECT_TRUE(result.IsNullString());
}

TEST_F(DispatchTest, ReferencesReachTheCallersVariables) {
  std::int32_t values[5] = {0, 9, 9, 9, 9};
  const auto ref = [&](int i) { return Variant::ByReference(&values[i]); };
  EXPECT_EQ(Call("GetEvent", ref(0), ref(1), ref(2), ref(3), ref(4)), Result::kDone);
  EXPECT_TRUE(result.Bool());
  EXPECT_THAT(values, ElementsAre(0, 3, 4, 5, 1));
  const auto none = [] { return Variant::ByReference<std::int32_t>(nullptr); };
  EXPECT_EQ(Call("GetEvent", ref(0), none(), none(), none(), ref(4)), Result::kDone);
  EXPECT_TRUE(result.Bool());
}

TEST_F(DispatchTest, BlocksAreFilled) {
  float floats[4] = {};
  EXPECT_EQ(Call("GetContinuousFloatBlock", 0, 2, Variant::Block(std::span(floats)), 16), Result::kDone);
  EXPECT_TRUE(result.Bool());
  EXPECT_THAT(floats, ElementsAre(1, 2, 3, 4));
  std::int32_t pair = 0;  // one variable is a block of one
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

TEST_F(DispatchTest, UnknownIdIsRefused) {
  for (const std::int32_t id : {0, 19, 20, -1, -551, -553, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(CallId(id), Result::kMemberNotFound) << id;
  }
}

TEST_F(DispatchTest, EveryMethodRefusesAnotherNumberOfArguments) {
  for (const MethodInfo& method : DispatchMethods()) {
    for (std::uint32_t count = 0; count <= kMostParameters + 1; ++count) {
      if (count == method.parameterCount) continue;
      const std::vector<Variant> arguments(count);
      EXPECT_EQ(InvokeMethod(control, method.id, arguments, &result, &badArgument),
                Result::kBadParameterCount);
    }
  }
  EXPECT_EQ(badArgument, kNone);
}

// Every argument of every method in every form that it is not declared with.
TEST_F(DispatchTest, EveryMethodRefusesArgumentsOfOtherTypes) {
  alignas(8) std::byte room[64] = {};
  auto* const i2 = reinterpret_cast<std::int16_t*>(room);
  auto* const i4 = reinterpret_cast<std::int32_t*>(room);
  auto* const r4 = reinterpret_cast<float*>(room);
  const auto make = [&](ValueType type, Passing passing) -> Variant {
    const bool isBlock = passing == Passing::kBlock;
    if (passing == Passing::kByValue) {
      switch (type) {
        case ValueType::kI2:
          return std::int16_t{1};
        case ValueType::kI4:
          return 1;
        case ValueType::kR4:
          return 1.0f;
        case ValueType::kBool:
          return true;
        case ValueType::kString:
          return "";
        default:
          return {};
      }
    }
    switch (type) {
      case ValueType::kI2:
        return isBlock ? Variant::Block(std::span(i2, 32)) : Variant::ByReference(i2);
      case ValueType::kI4:
        return isBlock ? Variant::Block(std::span(i4, 16)) : Variant::ByReference(i4);
      default:
        return isBlock ? Variant::Block(std::span(r4, 16)) : Variant::ByReference(r4);
    }
  };
  constexpr ValueType kTypes[] = {ValueType::kEmpty, ValueType::kI2,     ValueType::kI4,
                                  ValueType::kR4,    ValueType::kString, ValueType::kBool};
  for (const MethodInfo& method : DispatchMethods()) {
    for (std::uint32_t wrong = 0; wrong < method.parameterCount; ++wrong) {
      for (const ValueType type : kTypes) {
        for (const Passing passing : {Passing::kByValue, Passing::kByReference, Passing::kBlock}) {
          const ParameterInfo& declared = method.parameters[wrong];
          const bool isOneOfABlock = passing == Passing::kByReference && declared.passing == Passing::kBlock;
          std::vector<Variant> arguments;
          for (std::uint32_t i = 0; i < method.parameterCount; ++i) {
            arguments.push_back(make(method.parameters[i].type, method.parameters[i].passing));
          }
          arguments[wrong] = make(type, passing);
          if (arguments[wrong].Type() == declared.type && (passing == declared.passing || isOneOfABlock))
            continue;
          EXPECT_EQ(InvokeMethod(control, method.id, arguments, &result, &badArgument), Result::kTypeMismatch)
              << method.name << " " << wrong << " " << TypeName(type);
          EXPECT_EQ(badArgument, wrong);
        }
      }
    }
  }
}

TEST_F(DispatchTest, ReferenceBetweenTwoPlacesOfItsTypeIsRefused) {
  alignas(4) std::byte room[8] = {};
  const auto odd = [&] { return Variant::ByReference(reinterpret_cast<float*>(room + 1)); };
  EXPECT_EQ(Call("GetContinuousFloatBlock", 0, 1, odd(), 4), Result::kTypeMismatch);
}

TEST_F(DispatchTest, ResultAndBadArgumentMayBeLeftOut) {
  EXPECT_EQ(InvokeMethod(control, 10, {}, nullptr, nullptr), Result::kDone);
  EXPECT_EQ(InvokeMethod(control, 1, std::vector<Variant>(1), nullptr, nullptr), Result::kTypeMismatch);
}

}  // namespace
}  // namespace wavelock

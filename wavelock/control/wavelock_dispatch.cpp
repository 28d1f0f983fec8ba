#include "wavelock/control/wavelock_dispatch.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>

#include "wavelock/control/identifiers.h"
#include "wavelock/platform/ascii_case.h"

namespace wavelock {
namespace {

// ---- from the types of C++ to those of automation and back

template <class T>
constexpr ValueType kAutomationType = kTypeOf<std::remove_pointer_t<T>>;
template <>
constexpr ValueType kAutomationType<bool> = ValueType::kBool;
template <>
constexpr ValueType kAutomationType<const std::string&> = ValueType::kString;
template <>
constexpr ValueType kAutomationType<std::optional<std::string>> = ValueType::kString;
template <>
constexpr ValueType kAutomationType<void> = ValueType::kVoid;

// The argument of a checked call as the method wants it.
template <class T>
auto ArgumentAs(const Variant& argument) {
  static_assert(kAutomationType<T> != ValueType::kEmpty);
  if constexpr (std::is_pointer_v<T>) {
    return static_cast<T>(argument.Target());
  } else if constexpr (kAutomationType<T> == ValueType::kString) {
    return std::string(argument.Text());
  } else {
    static_assert(std::is_same_v<T, std::int32_t>, "no method takes another type by value");
    return argument.I4();
  }
}

Variant ResultFrom(const std::optional<std::string>& text) {
  return text ? Variant(std::string_view(*text)) : Variant::NullString();
}
template <class T>
Variant ResultFrom(T value) {
  return value;
}

// ---- rows

using CallFunction = void(CWavelockCtrl& control, const Variant* arguments, Variant& result);

struct Row {
  MethodInfo info;
  CallFunction* call;
};

// How a method is described and called, taken from its declaration.
template <auto kMethod>
struct Binding;

template <class Outcome, class... Parameters, Outcome (CWavelockCtrl::*kMethod)(Parameters...) noexcept>
struct Binding<kMethod> {
  static constexpr ValueType kResult = kAutomationType<Outcome>;
  static constexpr std::size_t kCount = sizeof...(Parameters);
  static constexpr std::array<ParameterInfo, kCount> kParameters{
      ParameterInfo{"", kAutomationType<Parameters>,
                    std::is_pointer_v<Parameters> ? Passing::kByReference : Passing::kByValue}...};

  static void Call(CWavelockCtrl& control, const Variant* arguments, Variant& result) {
    CallWith(control, arguments, result, std::make_index_sequence<kCount>());
  }

 private:
  template <std::size_t... kIndexes>
  static void CallWith(CWavelockCtrl& control, [[maybe_unused]] const Variant* arguments, Variant& result,
                       std::index_sequence<kIndexes...>) {
    if constexpr (std::is_void_v<Outcome>) {
      (control.*kMethod)(ArgumentAs<Parameters>(arguments[kIndexes])...);
      result = Variant();
    } else {
      result = ResultFrom((control.*kMethod)(ArgumentAs<Parameters>(arguments[kIndexes])...));
    }
  }
};

template <class Outcome, Outcome (CWavelockCtrl::*kMethod)() const noexcept>
struct Binding<kMethod> {
  static constexpr ValueType kResult = kAutomationType<Outcome>;
  static constexpr std::size_t kCount = 0;
  static constexpr std::array<ParameterInfo, 0> kParameters{};

  static void Call(CWavelockCtrl& control, const Variant* /*arguments*/, Variant& result) {
    result = ResultFrom((control.*kMethod)());
  }
};

// A reference with a plain number behind it is a block of that many bytes.
constexpr void MarkBlocks(MethodInfo& info) {
  for (std::uint32_t i = 0; i + 1 < info.parameterCount; ++i) {
    if (info.parameters[i].passing == Passing::kByReference &&
        info.parameters[i + 1].passing == Passing::kByValue) {
      info.parameters[i].passing = Passing::kBlock;
    }
  }
}

template <auto kMethod, class... Names>
constexpr Row Method(std::int32_t id, const char* name, Names... parameterNames) {
  using Bound = Binding<kMethod>;
  static_assert(sizeof...(Names) == Bound::kCount, "every parameter has a name");
  static_assert(Bound::kCount <= kMostParameters);
  MethodInfo info{.id = id, .name = name, .result = Bound::kResult, .parameterCount = Bound::kCount};
  std::copy(Bound::kParameters.begin(), Bound::kParameters.end(), info.parameters);
  [[maybe_unused]] ParameterInfo* parameter = info.parameters;
  ((parameter++->name = parameterNames), ...);
  MarkBlocks(info);
  return {info, &Bound::Call};
}

using Ctrl = CWavelockCtrl;

constexpr Row kRows[] = {
    Method<&Ctrl::OpenInputDataFile>(1, "OpenInputDataFile", "szFileName"),
    Method<&Ctrl::CloseInputDataFile>(2, "CloseInputDataFile"),
    Method<&Ctrl::GetContinuousShortBlock>(3, "GetContinuousShortBlock", "nStart", "nEnd", "pBlock",
                                           "nBlockSize"),
    Method<&Ctrl::GetContinuousFloatBlock>(4, "GetContinuousFloatBlock", "nStart", "nEnd", "pBlock",
                                           "nBlockSize"),
    Method<&Ctrl::GetNumChannels>(5, "GetNumChannels"),
    Method<&Ctrl::GetRate>(6, "GetRate"),
    Method<&Ctrl::GetEpochShortBlock>(7, "GetEpochShortBlock", "nIndex", "pBlock", "nBlockSize"),
    Method<&Ctrl::GetEpochFloatBlock>(8, "GetEpochFloatBlock", "nIndex", "pBlock", "nBlockSize"),
    Method<&Ctrl::GetAcqType>(9, "GetAcqType"),
    Method<&Ctrl::GetFileName>(10, "GetFileName"),
    Method<&Ctrl::GetFileActive>(11, "GetFileActive"),
    Method<&Ctrl::GetNumContinuousPoints>(12, "GetNumContinuousPoints"),
    Method<&Ctrl::GetEventCount>(13, "GetEventCount"),
    Method<&Ctrl::GetEvent>(14, "GetEvent", "nEventIndex", "nStimType", "nKeyboard", "nKeypad", "nPoint"),
    Method<&Ctrl::GetEpochCount>(15, "GetEpochCount"),
    Method<&Ctrl::GetEpochInfo>(16, "GetEpochInfo", "nEpochIndex", "pTrialType", "pAccept", "pCorrect",
                                "pReactionTime", "pResponse"),
    Method<&Ctrl::GetEpochIntBlock>(17, "GetEpochIntBlock", "nIndex", "pBlock", "nBlockSize"),
    Method<&Ctrl::GetContinuousIntBlock>(18, "GetContinuousIntBlock", "nStart", "nEnd", "pBlock",
                                         "nBlockSize"),
    Method<&Ctrl::AboutBox>(-552, "AboutBox"),
};

// ---- what the type library tells

constexpr auto kMethods = [] {
  std::array<MethodInfo, std::size(kRows)> methods;
  std::transform(std::begin(kRows), std::end(kRows), methods.begin(),
                 [](const Row& row) { return row.info; });
  return methods;
}();

// The events are named like the methods that serve data, which are all but the last.
constexpr InterfaceInfo kInterfaces[] = {
    {"_DWavelock", kDispatchId, kMethods.data(), kMethods.size()},
    {"_DWavelockEvents", kEventsId, kMethods.data(), kMethods.size() - 1},
};

constexpr ClassInfo kClasses[] = {{"Wavelock", kControlClassId, &kInterfaces[0], &kInterfaces[1]}};

constexpr std::uint32_t kEnglish = 0x409;

constexpr TypeLibraryInfo kTypeLibrary{"WAVELOCKLib",          kTypeLibraryId, kMajorVersion,
                                       kMinorVersion,          kEnglish,       kInterfaces,
                                       std::size(kInterfaces), kClasses,       std::size(kClasses)};

// ---- calls

const Row* FindRow(std::int32_t id) {
  // Ids count from 1 in the order of the rows, for all that clients call often.
  if (id >= 1 && static_cast<std::size_t>(id) <= std::size(kRows) && kRows[id - 1].info.id == id) {
    return &kRows[id - 1];
  }
  const auto* const row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& r) { return r.info.id == id; });
  return row != std::end(kRows) ? row : nullptr;
}

std::size_t SizeOf(ValueType type) {
  return type == ValueType::kI2 ? sizeof(std::int16_t) : sizeof(std::int32_t);
}

bool IsAligned(const void* target, ValueType type) {
  return reinterpret_cast<std::uintptr_t>(target) % SizeOf(type) == 0;
}

bool Matches(const Variant& argument, const ParameterInfo& parameter) {
  if (argument.Type() != parameter.type) return false;
  if (parameter.passing == Passing::kByValue) return argument.HowPassed() == Passing::kByValue;
  // One variable is a block of one element.
  const bool isReference =
      argument.HowPassed() == Passing::kByReference || argument.HowPassed() == parameter.passing;
  return isReference && IsAligned(argument.Target(), parameter.type);
}

// Sizes count without a sign, so that a negative one is larger than every block.
bool HasRoom(const Variant& block, const Variant& size) {
  return block.TargetBytes() >= static_cast<std::uint32_t>(size.I4());
}

Result Check(const MethodInfo& method, std::span<const Variant> arguments, std::uint32_t& bad) {
  if (arguments.size() != method.parameterCount) return Result::kBadParameterCount;
  for (bad = 0; bad < method.parameterCount; ++bad) {
    if (!Matches(arguments[bad], method.parameters[bad])) return Result::kTypeMismatch;
  }
  for (bad = 0; bad < method.parameterCount; ++bad) {
    if (method.parameters[bad].passing != Passing::kBlock) continue;
    if (!HasRoom(arguments[bad], arguments[bad + 1])) return Result::kBufferTooSmall;
  }
  return Result::kDone;
}

}  // namespace

std::span<const MethodInfo> DispatchMethods() noexcept {
  return kMethods;
}

std::optional<std::int32_t> FindMethodId(std::string_view name) noexcept {
  for (const MethodInfo& method : kMethods) {
    if (EqualIgnoringCase(method.name, name)) return method.id;
  }
  return std::nullopt;
}

Result InvokeMethod(CWavelockCtrl& control, std::int32_t id, std::span<const Variant> arguments,
                    Variant* result, std::uint32_t* badArgument) noexcept {
  const Row* const row = FindRow(id);
  if (row == nullptr) return Result::kMemberNotFound;
  std::uint32_t bad = 0;
  const Result check = Check(row->info, arguments, bad);
  if (check != Result::kDone) {
    if (badArgument != nullptr && check != Result::kBadParameterCount) *badArgument = bad;
    return check;
  }
  try {
    Variant unwanted;
    row->call(control, arguments.data(), result != nullptr ? *result : unwanted);
    return Result::kDone;
  } catch (...) {
    return Result::kException;
  }
}

const TypeLibraryInfo& TypeLibrary() noexcept {
  return kTypeLibrary;
}

}  // namespace wavelock

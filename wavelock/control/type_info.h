// What a module tells about its interfaces: plain data that stays as long as the module is loaded.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wavelock/control/variant.h"
#include "wavelock/platform/identifier.h"

namespace wavelock {

inline constexpr std::size_t kMostParameters = 6;

struct ParameterInfo {
  const char* name = nullptr;
  ValueType type = ValueType::kEmpty;
  Passing passing = Passing::kByValue;
};

struct MethodInfo {
  std::int32_t id = 0;
  const char* name = nullptr;
  ValueType result = ValueType::kVoid;
  std::uint32_t parameterCount = 0;
  ParameterInfo parameters[kMostParameters] = {};
};

struct InterfaceInfo {
  const char* name;
  Identifier id;
  const MethodInfo* methods;
  std::uint32_t methodCount;
};

struct ClassInfo {
  const char* name;
  Identifier id;
  const InterfaceInfo* dispatch;  // what clients call
  const InterfaceInfo* events;    // what the class may call on its clients
};

struct TypeLibraryInfo {
  const char* name;
  Identifier id;
  std::uint16_t majorVersion;
  std::uint16_t minorVersion;
  std::uint32_t locale;
  const InterfaceInfo* interfaces;
  std::uint32_t interfaceCount;
  const ClassInfo* classes;
  std::uint32_t classCount;
};

}  // namespace wavelock

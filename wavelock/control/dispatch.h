// How a client calls an object whose class it does not know: by the names and ids of its methods.
#pragma once

#include <cstdint>

#include "wavelock/control/type_info.h"
#include "wavelock/control/variant.h"
#include "wavelock/platform/component.h"

namespace wavelock {

class Dispatch : public Component {
 public:
  static constexpr Identifier kId = *ParseIdentifier("{97C5F310-4E55-4593-BF8E-15C0971F9C4E}");

  // Without regard to case. kUnknownName leaves `*id` alone.
  virtual Result GetIdOfName(const char* name, std::int32_t* id) noexcept = 0;

  // Calls the method with `count` arguments, in the order of its parameters. A refused call touches no
  // argument: kMemberNotFound, kBadParameterCount, kTypeMismatch, or kBufferTooSmall for a block that is
  // smaller than its size argument says; `*badArgument` then tells the index of the argument, where one is
  // to blame. `result` and `badArgument` may be null.
  virtual Result Invoke(std::int32_t id, const Variant* arguments, std::uint32_t count, Variant* result,
                        std::uint32_t* badArgument) noexcept = 0;

  virtual const InterfaceInfo* GetTypeInfo() noexcept = 0;
  virtual const TypeLibraryInfo* GetTypeLibrary() noexcept = 0;

 protected:
  ~Dispatch() = default;
};

}  // namespace wavelock

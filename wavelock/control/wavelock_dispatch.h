// The dispatch surface of the control as data: one table of its methods, which serves the search by name, the
// call by id, and what the type library tells. Whatever stands in front of it turns its client's values into
// Variants and back.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "wavelock/control/type_info.h"
#include "wavelock/control/variant.h"
#include "wavelock/control/wavelock_ctrl.h"
#include "wavelock/platform/component.h"

namespace wavelock {

// In the order of the ids, AboutBox last.
std::span<const MethodInfo> DispatchMethods() noexcept;

// Without regard to case.
std::optional<std::int32_t> FindMethodId(std::string_view name) noexcept;

// As Dispatch::Invoke tells.
Result InvokeMethod(CWavelockCtrl& control, std::int32_t id, std::span<const Variant> arguments,
                    Variant* result, std::uint32_t* badArgument) noexcept;

// The dispatch interface, the event interface, of which nothing is ever sent, and the class.
const TypeLibraryInfo& TypeLibrary() noexcept;

}  // namespace wavelock

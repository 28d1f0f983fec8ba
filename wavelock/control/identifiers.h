// The fixed names of what the module holds, and its version.
#pragma once

#include <cstdint>

#include "wavelock/platform/identifier.h"

namespace wavelock {

inline constexpr Identifier kTypeLibraryId = *ParseIdentifier("{15EB7686-C229-4FDB-B276-F8F4797EAB16}");
inline constexpr Identifier kDispatchId = *ParseIdentifier("{ABD7CB70-E9AE-4C77-BF62-51CF4E5700E6}");
inline constexpr Identifier kEventsId = *ParseIdentifier("{3AB5FAEA-D1AD-4F4D-BC7D-0B15CAF4DCE7}");
inline constexpr Identifier kControlClassId = *ParseIdentifier("{43A5BD84-CF6F-4C87-98FC-B0FA53D53A01}");
inline constexpr Identifier kPropertyPageClassId = *ParseIdentifier("{CFD6AFBF-DA92-4863-AC80-D97F78C10139}");

inline constexpr char kControlProgrammaticId[] = "WAVELOCK.WavelockCtrl.1";
inline constexpr char kPropertyPageProgrammaticId[] = "WAVELOCK.WavelockPropPage.1";

// Of the control and of the type library.
inline constexpr std::uint16_t kMajorVersion = 1;
inline constexpr std::uint16_t kMinorVersion = 0;

}  // namespace wavelock

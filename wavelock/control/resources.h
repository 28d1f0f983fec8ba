// The numbered resources of the module.
#pragma once

#include <string_view>

namespace wavelock {

enum StringNumber : int {
  kControlTypeName = 1,
  kPropertyPageTypeName = 2,
  kPropertyPageCaption = 200,
};

// Empty for a number that the table does not have.
std::string_view StringResource(int number);

inline constexpr int kIcon = 1;
inline constexpr int kToolboxBitmap = 1;
inline constexpr int kAboutDialog = 1;
inline constexpr int kPropertyPageDialog = 200;

// The version block of the module.
inline constexpr std::string_view kFileVersion = "1.0.0.1";

}  // namespace wavelock

// Where the files lie that the library keeps for a user.
#pragma once

#include <string>
#include <string_view>

namespace wavelock {

// The path of the user's own file of that name; empty for a user without a home. A configuration folder that
// is not absolute counts as not set.
std::string UserFilePath(std::string_view name);

}  // namespace wavelock

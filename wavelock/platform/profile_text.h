// The text form of a profile: lines "key = value" under lines "[section]", made to be read and edited by a
// person. What starts with ; or #, on a line of its own or behind a section, is a comment. A backslash is
// written \\, and a byte that would not survive on its line \xHH, so that every string can be a section, a
// key or a value.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace wavelock {

// The first value of that section and key.
std::optional<std::string> FindInProfile(std::string_view text, std::string_view section,
                                         std::string_view key);

// The text with that value in its place. All other lines stay as they are, comments too.
std::string StoreInProfile(std::string_view text, std::string_view section, std::string_view key,
                           std::string_view value);

// Calls back for every section and every entry in the order of the text.
void ReadProfile(std::string_view text, const std::function<void(const std::string& section)>& onSection,
                 const std::function<void(const std::string& key, std::string value)>& onEntry);

// Lines without their line breaks.
std::string ProfileSectionLine(std::string_view section);
std::string ProfileEntryLine(std::string_view key, std::string_view value);

}  // namespace wavelock

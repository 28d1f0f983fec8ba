// Texts that come from files, and names of files, as a terminal may show them.
#pragma once

#include <string>
#include <string_view>

namespace wavelock {

// The text in UTF-8, with a question mark for whatever could steer a terminal or deceive about the order of
// what it shows: control characters, line separators, embeddings and overrides of the direction of writing,
// and bytes that belong to no character. Characters of `kept` stay.
std::string Printable(std::string_view text, std::string_view kept = {});

}  // namespace wavelock

// Texts of the service for a person's eyes: a terminal shows them and obeys nothing in them.
#pragma once

#include <string>
#include <string_view>

namespace snapshot {

// Returns the text in UTF-8 with everything escaped that a terminal would obey, hide or reject: a
// control or invisible character as \n, \r, \t, \x1b or \u202e, a byte that is not valid UTF-8 as
// \xff. A backslash stays as it is.
std::string printable(std::string_view text);

}  // namespace snapshot

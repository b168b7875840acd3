// Makes texts of the service, and names of files, safe to print on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace snapshot {

// Returns the text in UTF-8 with escapes for everything that a terminal would obey, hide or reject:
// \n, \r, \t, \x1b or \u202e for a control or invisible character, \xff for a byte that is not
// valid UTF-8. A backslash is not escaped, so a printable text stays as it is.
std::string printable(std::string_view text);

}  // namespace snapshot

// Texts of the service for a person's eyes: nothing of them reaches the terminal that could do more
// there than be read.
#pragma once

#include <string>
#include <string_view>

// Returns the text in UTF-8 with what a terminal would obey, hide or refuse written out: a control
// or invisible character as \n, \r, \t, \x1b or \u202e, a byte that is no UTF-8 as \xff. A
// backslash stays one.
std::string printable(std::string_view text);

// The width of texts on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace snapshot_tool {

// Returns the number of columns of a printable text. A wide character takes two.
std::size_t columns_of(std::string_view text);

// Returns a printable text cut to at most this many columns, with "…" in place of the rest.
std::string cut_to(std::size_t columns, std::string_view text);

// Takes from a printable text as many words as fit into one line of this many columns, at least
// two, without the blank that follows them. A word that is longer than a line is broken.
std::string_view take_line(std::size_t columns, std::string_view& text);

}  // namespace snapshot_tool

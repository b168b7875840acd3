// How much of a line a text takes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace snapshot_tool {

// Returns how many columns a terminal gives a printable text; a wide character takes two.
std::size_t columns_of(std::string_view text);

// Returns a printable text cut to that many columns, "…" in the place of what is left out.
std::string cut_to(std::size_t columns, std::string_view text);

}  // namespace snapshot_tool

// The nearest of some names to one that was mistyped.
#pragma once

#include <span>
#include <string_view>

namespace snapshot_tool {

// Returns the first of the names that are most like `text`, or the empty text if none is: at most
// two letters are missing, added, wrong or exchanged with their neighbours, and more than half of
// the letters are right.
std::string_view nearest(std::string_view text, std::span<const std::string_view> names);

}  // namespace snapshot_tool

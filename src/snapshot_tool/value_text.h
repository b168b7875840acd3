// Values of a snapshot as texts for people, and long texts cut where they begin to differ.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "snapshot/value.h"

namespace snapshot_tool {

// Returns a printable text from which no other text gives the same: a backslash is doubled.
std::string unambiguous(std::string_view text);

// Returns texts such as 5, 5 (uint16), 5.0, "text", [1, 2], true: different for values that differ
// or have different kinds. The text is printable.
std::string value_text(const snapshot::value& value);

// Returns the two printable texts, each cut to at most this many characters, with "…" where
// something is missing. The first character in which they differ is not.
std::pair<std::string, std::string> cut_where_they_differ(std::size_t characters,
                                                          std::string_view one,
                                                          std::string_view other);

}  // namespace snapshot_tool

// JSON texts that the bus library writes, taken apart.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <vector>

// Returns whether the text is one JSON value that nests at most 256 levels deep. The bytes of its
// strings need be no UTF-8.
bool is_json(std::string_view text);

// Returns the names of the members of a JSON object in their order. When the text is none, or the
// name or the value of a member is no JSON as above: the part that is not. Names are in UTF-8.
std::expected<std::vector<std::string>, std::string_view> member_names(std::string_view text);

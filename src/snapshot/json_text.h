// JSON texts that the bus library writes.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace snapshot {

// Returns whether the text is one JSON value that nests at most 256 levels deep. The bytes of its
// strings need not be valid UTF-8.
bool is_json(std::string_view text);

// Returns the names of the members of a JSON object in their order, in UTF-8. If the text is not an
// object, or a member's name or value is not JSON as above, returns the part that is wrong.
std::expected<std::vector<std::string>, std::string_view> member_names(std::string_view text);

}  // namespace snapshot

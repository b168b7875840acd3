// Values of a kind that no getter reads: all that is known of them is the JSON text that the bus
// library writes for them.
#pragma once

#include <expected>
#include <string>

#include "video/native.h"

namespace snapshot_tool {

// Returns that text of the value under `key`, which must be there, without white space outside its
// strings. Otherwise: why the bus library gives none ("has no JSON form: ..."), or an empty text if
// what it gives is not JSON in UTF-8.
std::expected<std::string, std::string> other_json(const native_map& map, const std::string& key);

}  // namespace snapshot_tool

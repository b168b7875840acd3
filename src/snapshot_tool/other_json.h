// Values of a kind that no getter reads. The only way to read them is the JSON text that the bus
// library writes.
#pragma once

#include <expected>
#include <string>

#include "video/native.h"

namespace snapshot_tool {

// Returns the JSON text of the value under `key`, without white space outside its strings. The map
// must contain the key. On failure: the reason of the bus library ("has no JSON form: ..."), or an
// empty text if its text is not JSON in UTF-8.
std::expected<std::string, std::string> other_json(const native_map& map, const std::string& key);

}  // namespace snapshot_tool

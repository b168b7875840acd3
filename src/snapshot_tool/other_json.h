// Values of a map that are of a kind which no getter reads: all that is known of them is the text
// that the bus library writes for them.
#pragma once

#include <string>

#include "video/native.h"

// Returns that text of the value which `map` holds under `key`, without white space outside its
// strings and else as it is. Throws a not_recordable when the bus library gives none, or one that
// is no JSON in UTF-8.
std::string other_json(const native_map& map, const std::string& key);

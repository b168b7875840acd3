// What the rest of the client does with maps.
#pragma once

#include <string>
#include <string_view>

#include <oru.h>
#include <qwire.h>

namespace strict {

OruMap* new_map(const std::string& name, qw::map entries);

// Returns what a map holds, which is passed to `call`.
const qw::map& entries_of(std::string_view call, OruMap* map);

}  // namespace strict

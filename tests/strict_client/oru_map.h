// Maps, for the other files of the client.
#pragma once

#include <string>
#include <string_view>

#include <oru.h>
#include <qwire.h>

namespace strict {

OruMap* new_map(const std::string& name, qw::map entries);

// Returns the entries of a map that was passed to `call`.
const qw::map& entries_of(std::string_view call, OruMap* map);

}  // namespace strict

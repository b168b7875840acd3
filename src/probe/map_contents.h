// The contents of a map as text, for comparison and messages.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <oru.h>

#include "probe/service.h"
#include "video/native.h"

namespace probe {

// Returns the name of the value's kind: "uint32".
std::string_view kind_name(const native_value& value);

// Returns the kind and the value: "uint32 5". A value that no getter reads has its kind only.
std::string value_text(const native_value& value);

struct text_entry {
    std::string key;
    std::string value;  // as value_text() returns it

    bool operator==(const text_entry&) const = default;
};
using map_contents = std::vector<text_entry>;

// Return the entries in the order of the native map, or none if the map has no native map.
std::vector<native_entry> entries_of(OruMap* map);
map_contents contents_of(OruMap* map);

// Returns the first difference of two contents that differ: "'key': uint32 5, then none".
std::string first_difference(const map_contents& before, const map_contents& after);

// Returns a key that the contents lack.
std::string absent_key(const map_contents& contents);

// The C functions take keys as NUL-terminated text.
bool is_c_text(std::string_view key);

// Returns the first, middle and last key, as far as a C function can take them.
std::vector<std::string> sample_keys(const map_contents& contents);

// Calls visit(name, map) for each map that the service returns and that has a native map.
template <class Visit>
void for_each_map(const std::vector<map_source>& sources, const Visit& visit) {
    for (const map_source& source : sources) {
        const tracked<OruMap> map = source.query();
        if (map.get() != nullptr && oru_map_native_ref(map.get()) != nullptr) {
            visit(source.name, map.get());
        }
    }
}

}  // namespace probe

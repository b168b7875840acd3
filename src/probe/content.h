// What a map holds, in words that can be compared and told.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <oru.h>

#include "probe/service.h"
#include "video/native.h"

// Returns the name of the kind of the value.
std::string_view kind_name(const native_value& value);
std::string_view kind_name(std::size_t alternative);  // by its place in native_value

// Returns the kind and the value: "uint32 5". Of a kind that no getter reads the value is not told.
std::string words_of(const native_value& value);

// Return what the map holds, in its order. A map without a native form holds nothing.
struct worded_entry {
    std::string key;
    std::string value;

    bool operator==(const worded_entry&) const = default;
};
std::vector<native_entry> entries_of(OruMap* map);
std::vector<worded_entry> content_of(OruMap* map);

// Returns the first difference of the two: "'key': uint32 5, then none".
std::string difference(const std::vector<worded_entry>& before,
                       const std::vector<worded_entry>& after);

// Returns a key that the map does not hold.
std::string absent_key(const std::vector<worded_entry>& content);

// Returns some of the map's keys that can be passed to the service: the first, the middle and the
// last.
std::vector<std::string> some_keys(const std::vector<worded_entry>& content);

// Shows each of these maps that answers, with its name.
template <class Look>
void for_each_map(const std::vector<map_source>& sources, const Look& look) {
    for (const map_source& source : sources) {
        const living<OruMap> map = source.ask();
        if (map.get() != nullptr && oru_map_native_ref(map.get()) != nullptr) {
            look(source.name, map.get());
        }
    }
}

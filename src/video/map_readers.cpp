#include "video/map_readers.h"

#include <qwire.h>

std::uint32_t native_map_get_uint(OruMap* map, const char* key, std::uint32_t def) {
    const qw::value* value = oru_map_native_ref(map)->find(key);
    if (value == nullptr) {
        return def;
    }
    if (const auto narrow = value->get_if<std::uint16_t>()) {
        return *narrow;
    }
    return value->get_if<std::uint32_t>().value_or(def);
}

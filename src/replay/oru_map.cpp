#include <utility>

#include <qwire.h>

#include "replay/object.h"

ORU_DEFINE_TYPE(OruMap, oru_map, qw::map)

namespace replay {

OruMap* new_map(qw::map map) {
    OruMap* created = oru_map_new();
    created->content = std::move(map);
    return created;
}

}  // namespace replay

namespace {

// Returns the value under `key` if it is of T's own kind.
template <class T>
std::optional<T> stored(OruMap* map, const gchar* key) {
    const qw::value* value = map->content.find(key);
    return value != nullptr ? value->get_if<T>() : std::nullopt;
}

// Returns the value under `key` if it is a T or widens into one, otherwise `def`.
template <class T>
T widened(OruMap* map, const gchar* key, T def) {
    const qw::value* value = map->content.find(key);
    return value != nullptr ? snapshot::widened<T>(*value).value_or(def) : def;
}

}  // namespace

OruMap* oru_map_new(void) {
    return static_cast<OruMap*>(g_object_new(ORU_TYPE_MAP, nullptr));
}

void oru_map_set_string(OruMap* map, const gchar* key, const gchar* value) {
    map->content.assign(key, std::string_view(value));
}

guint32 oru_map_get_uint32(OruMap* map, const gchar* key, guint32 def) {
    return widened<std::uint32_t>(map, key, def);
}

gint64 oru_map_get_int64(OruMap* map, const gchar* key, gint64 def) {
    return widened<std::int64_t>(map, key, def);
}

gdouble oru_map_get_double(OruMap* map, const gchar* key, gdouble def) {
    return widened<double>(map, key, def);
}

gboolean oru_map_get_boolean(OruMap* map, const gchar* key, gboolean def) {
    const auto flag = stored<bool>(map, key);
    return flag ? *flag : def;
}

const gchar* oru_map_get_string(OruMap* map, const gchar* key, gsize* length, const gchar* def) {
    const auto text = stored<std::string_view>(map, key);
    if (length != nullptr) {
        *length = text ? text->size() : std::string_view(def != nullptr ? def : "").size();
    }
    return text ? text->data() : def;
}

guint64 oru_map_get_pair32u(OruMap* map, const gchar* key, guint64 def) {
    const auto pair = stored<qw::pair32u>(map, key);
    return pair ? guint64{pair->second} << 32 | pair->first : def;
}

gboolean oru_map_contains(OruMap* map, const gchar* key) {
    return map->content.find(key) != nullptr;
}

void oru_map_remove(OruMap* map, const gchar* key) {
    map->content.erase(key);
}

void oru_map_remove_prefix(OruMap* map, const gchar* prefix) {
    map->content.erase_prefix(prefix);
}

OruMap* oru_map_filter_prefix(OruMap* map, const gchar* prefix) {
    return replay::new_map(map->content.filter_prefix(prefix));
}

gboolean oru_map_empty(OruMap* map) {
    return map->content.empty();
}

const qw::map* oru_map_native_ref(OruMap* map) {
    return &map->content;
}

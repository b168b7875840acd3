#include "strict_client/oru_map.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "strict_client/calls.h"

namespace strict {
namespace {

// A map, and the texts that its getters returned.
struct map_content : object_content {
    explicit map_content(qw::map entries) : native(std::move(entries)) {}
    ~map_content() override {
        forget_texts();
        forget_native(native);
    }

    // Texts are valid until the map changes or is released. Then they are overwritten, so that a
    // later use is visible in the report. For the same reason, their memory is never freed.
    const char* hand_out(const std::string& text) {
        static auto& kept = *new std::vector<char*>;
        char* copy = strdup(text.c_str());
        kept.push_back(copy);
        texts.push_back(copy);
        return copy;
    }
    void forget_texts() {
        for (char* text : texts) {
            std::memset(text, '?', std::strlen(text));
        }
        texts.clear();
    }

    qw::map native;
    std::vector<char*> texts;
};

map_content& content(const call& made, OruMap* map) {
    return static_cast<map_content&>(content_of(made.name(), "OruMap", map));
}

// Returns the content of a map that the call changes.
map_content& changed(const call& made, OruMap* map) {
    map_content& changed_map = content(made, map);
    changed_map.forget_texts();
    return changed_map;
}

bool is_exact() {
    static const bool exact = std::getenv("ORU_STRICT_EXACT") != nullptr;
    return exact;
}

// Returns whether the getter of the kind `wanted` widens a value of the kind `tag`.
constexpr bool widens(std::uint16_t tag, std::uint16_t wanted) {
    return (tag == qw::tag_u16 && wanted != qw::tag_u16) ||
           (tag == qw::tag_u32 && wanted != qw::tag_u16);
}

// Returns the number of `key` for the getter of the kind `wanted`, whose type is T.
template <class T>
T number(const call& made, OruMap* map, const gchar* key, std::uint16_t wanted, T def) {
    made.gives_nothing();
    const qw::map& native = content(made, map).native;
    const auto found = native.by_key::find(key);
    if (found == native.end()) {
        return def;
    }
    const auto& [tag, stored] = found->second;
    if (tag == wanted) {
        return std::visit(
            [&](const auto& alternative) -> T {
                if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(alternative)>>) {
                    return static_cast<T>(alternative);
                }
                return def;
            },
            stored);
    }
    if (widens(tag, wanted) && !is_exact()) {
        return static_cast<T>(std::get<std::uint64_t>(stored));
    }
    return def;
}

// Returns the value of `key` if it has the type T, otherwise NULL.
template <class T>
const T* exactly(const call& made, OruMap* map, const gchar* key) {
    made.gives_nothing();
    const qw::map& native = content(made, map).native;
    const auto found = native.by_key::find(key);
    return found == native.end() ? nullptr : std::get_if<T>(&found->second.content);
}

}  // namespace

OruMap* new_map(const std::string& name, qw::map entries) {
    auto* content = new map_content(std::move(entries));
    auto* map = static_cast<OruMap*>(new_object("OruMap", name, content));
    name_native(content->native, map);
    return map;
}

const qw::map& entries_of(std::string_view call, OruMap* map) {
    return static_cast<map_content&>(content_of(call, "OruMap", map)).native;
}

}  // namespace strict

using namespace strict;

OruMap* oru_map_new(void) {
    const call made("oru_map_new");
    if (gives_null(made.name())) {
        return made.gives<OruMap*>(nullptr, "NULL");
    }
    return made.gives_object(new_map("new map", {}));
}

void oru_map_set_string(OruMap* map, const gchar* key, const gchar* value) {
    const call made("oru_map_set_string", map, key, value);
    made.gives_nothing();
    changed(made, map).native.insert_or_assign(key, qw::tagged{qw::tag_text, std::string(value)});
}

guint32 oru_map_get_uint32(OruMap* map, const gchar* key, guint32 def) {
    return number(call("oru_map_get_uint32", map, key, def), map, key, qw::tag_u32, def);
}

gint64 oru_map_get_int64(OruMap* map, const gchar* key, gint64 def) {
    return number(call("oru_map_get_int64", map, key, def), map, key, qw::tag_i64, def);
}

gdouble oru_map_get_double(OruMap* map, const gchar* key, gdouble def) {
    return number(call("oru_map_get_double", map, key, def), map, key, qw::tag_real, def);
}

gboolean oru_map_get_boolean(OruMap* map, const gchar* key, gboolean def) {
    const call made("oru_map_get_boolean", map, key, def);
    const bool* value = exactly<bool>(made, map, key);
    return value == nullptr ? def : *value ? TRUE : FALSE;
}

const gchar* oru_map_get_string(OruMap* map, const gchar* key, gpointer reserved,
                                const gchar* def) {
    const call made("oru_map_get_string", map, key, always_null(reserved), or_null(def));
    const std::string* value = exactly<std::string>(made, map, key);
    return value == nullptr ? def : content(made, map).hand_out(*value);
}

guint64 oru_map_get_pair32u(OruMap* map, const gchar* key, guint64 def) {
    const call made("oru_map_get_pair32u", map, key, def);
    const auto* pair = exactly<std::pair<std::uint32_t, std::uint32_t>>(made, map, key);
    return pair == nullptr ? def : std::uint64_t{pair->second} << 32 | pair->first;
}

gboolean oru_map_contains(OruMap* map, const gchar* key) {
    const call made("oru_map_contains", map, key);
    made.gives_nothing();
    return content(made, map).native.contains(key) ? TRUE : FALSE;
}

void oru_map_remove(OruMap* map, const gchar* key) {
    const call made("oru_map_remove", map, key);
    made.gives_nothing();
    changed(made, map).native.erase(key);
}

void oru_map_remove_prefix(OruMap* map, const gchar* prefix) {
    const call made("oru_map_remove_prefix", map, prefix);
    made.gives_nothing();
    erase_if(changed(made, map).native,
             [&](const auto& entry) { return entry.first.starts_with(prefix); });
}

OruMap* oru_map_filter_prefix(OruMap* map, const gchar* prefix) {
    const call made("oru_map_filter_prefix", map, prefix);
    if (gives_null(made.name())) {
        return made.gives<OruMap*>(nullptr, "NULL");
    }
    qw::map part = content(made, map).native;
    erase_if(part, [&](const auto& entry) { return !entry.first.starts_with(prefix); });
    return made.gives_object(new_map("part of " + name_of(map), std::move(part)));
}

gboolean oru_map_empty(OruMap* map) {
    const call made("oru_map_empty", map);
    made.gives_nothing();
    return content(made, map).native.empty() ? TRUE : FALSE;
}

qw::map* oru_map_native_ref(OruMap* map) {
    const call made("oru_map_native_ref", map);
    made.gives_nothing();
    return &content(made, map).native;
}

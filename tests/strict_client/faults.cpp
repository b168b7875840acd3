// Faults that a device's library may have, planted one at a time. $ORU_STRICT_FAULT is the name of
// a fault: the beginning of the line of oru-probe that reports it. Calls to the client's functions
// go to these functions instead (the linker's --wrap). The faults of the native map are in
// include/qwire.h.
#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <oru.h>

#include "strict_client/calls.h"
#include "strict_client/oru_map.h"

namespace strict {
namespace {

void set_error(GError** error) {
    if (error != nullptr) {
        g_set_error_literal(error, g_quark_from_static_string("planted-error-quark"), 1, "planted");
    }
}

void drop_error(GError** error) {
    if (error != nullptr && *error != nullptr) {
        g_error_free(std::exchange(*error, nullptr));
    }
}

// A pointer to an object that becomes NULL when the object is destroyed.
class last_object {
  public:
    gpointer get() const { return object_; }
    void set(gpointer object) {
        object_ = object;
        g_object_add_weak_pointer(static_cast<GObject*>(object), &object_);
    }

  private:
    gpointer object_ = nullptr;
};

// The first object, returned again by later calls while it is alive, without a new reference.
template <class Object>
Object* shared(Object* made) {
    static last_object& last = *new last_object;
    if (made == nullptr || last.get() == nullptr) {
        if (made != nullptr) {
            last.set(made);
        }
        return made;
    }
    g_object_unref(made);
    return static_cast<Object*>(last.get());
}

const qw::tagged* find(OruMap* map, const gchar* key) {
    const qw::map& entries = entries_of("a planted fault", map);
    const auto found = entries.by_key::find(key);
    return found == entries.end() ? nullptr : &found->second;
}

// Returns `otherwise` if the getter's fault is planted, otherwise `right`.
template <class Value>
Value wrong(const std::string& getter, OruMap* map, const gchar* key, std::uint16_t own_kind,
            Value right, Value otherwise) {
    const qw::tagged* value = find(map, key);
    return is_planted(getter + (value == nullptr         ? " of an absent key"
                                : value->tag == own_kind ? ""
                                                         : " of another kind"))
               ? otherwise
               : right;
}

// The keys removed from an answer by a service that returns the same map each time.
std::set<std::string>& removed() {
    static auto& keys = *new std::set<std::string>;
    return keys;
}

// Returns a copy of the native map with another kind code. Copies are never freed, because the
// caller may keep them.
qw::map* with_code(const qw::map& map, std::uint16_t code, std::uint16_t other) {
    static auto& copies = *new std::vector<std::unique_ptr<qw::map>>;
    copies.push_back(std::make_unique<qw::map>(map));
    for (auto& [key, value] : *copies.back()) {
        value.tag = value.tag == code ? other : value.tag;
    }
    return copies.back().get();
}

// The lists of streams, to find out whether a stream is in a list that still exists.
std::vector<std::pair<const GList*, std::set<gconstpointer>>>& lists() {
    static auto& all = *new std::vector<std::pair<const GList*, std::set<gconstpointer>>>;
    return all;
}

bool is_in_a_list(gconstpointer element) {
    return std::ranges::any_of(lists(), [&](const auto& list) {
        return list.second.contains(element) && !handed_out(list.first).empty();
    });
}

GType formats_in_upper_case() {
    static const GEnumValue values[] = {{0, "ORU_FORMAT_H264", "H264"}, {}};
    static const GType type = g_enum_register_static("PlantedFormat", values);
    return type;
}

}  // namespace
}  // namespace strict

using namespace strict;

extern "C" {

void __real_oru_map_remove(OruMap* map, const gchar* key);

// --- Queries ------------------------------------------------------------------------------------

OruMap* __real_oru_stream_get_quota(GError** error);
OruMap* __wrap_oru_stream_get_quota(GError** error) {
    OruMap* map = __real_oru_stream_get_quota(error);
    if (map != nullptr && is_planted("oru_stream_get_quota")) {
        set_error(error);
    }
    if (is_planted("one of two maps released")) {
        return shared(map);
    }
    for (const std::string& key : removed()) {
        __real_oru_map_remove(map, key.c_str());
    }
    return map;
}

OruMap* __real_oru_stream_get_limit(GError** error);
OruMap* __wrap_oru_stream_get_limit(GError** error) {
    if (is_planted("maps of two queries")) {
        static OruMap* only = __real_oru_stream_get_limit(error);
        return static_cast<OruMap*>(g_object_ref(only));
    }
    OruMap* map = __real_oru_stream_get_limit(error);
    if (is_planted("oru_stream_get_limit, failing")) {
        g_object_unref(map);
        return nullptr;
    }
    return map;
}

OruMap* __real_oru_mode_get_info(OruMode* mode, GError** error);
OruMap* __wrap_oru_mode_get_info(OruMode* mode, GError** error) {
    const bool is_lost = error == nullptr && is_planted("oru_mode_get_info");
    return is_lost ? nullptr : __real_oru_mode_get_info(mode, error);
}

OruSystem* __real_oru_system_new(GError** error);
OruSystem* __wrap_oru_system_new(GError** error) {
    OruSystem* system = __real_oru_system_new(error);
    return is_planted("one of two objects released") ? shared(system) : system;
}

gboolean __real_oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                                     guint32* height, GError** error);
gboolean __wrap_oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                                     guint32* height, GError** error) {
    const gboolean success = __real_oru_channel_get_crop(channel, x, y, width, height, error);
    if (success != FALSE && is_planted("oru_channel_get_crop")) {
        set_error(error);
    }
    return error == nullptr && is_planted("oru_channel_get_crop, failing") ? TRUE : success;
}

gboolean __real_oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                         GError** error);
gboolean __wrap_oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                         GError** error) {
    const gboolean success = __real_oru_channel_get_crop_max(channel, width, height, error);
    if (is_planted("oru_channel_get_crop_max, failing")) {
        drop_error(error);
    }
    return success;
}

gboolean __real_oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode,
                                                   guint32* width, guint32* height, GError** error);
gboolean __wrap_oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode,
                                                   guint32* width, guint32* height,
                                                   GError** error) {
    guint32 unseen = 0;
    return __real_oru_input_get_resolution_unrotated(
        input, mode, width, is_planted("oru_input_get_resolution_unrotated") ? &unseen : height,
        error);
}

// --- Objects ------------------------------------------------------------------------------------

GList* __real_oru_stream_get_all(GError** error);
GList* __wrap_oru_stream_get_all(GError** error) {
    GList* list = __real_oru_stream_get_all(error);
    if (is_planted("oru_stream_get_all")) {
        return g_list_append(list, nullptr);
    }
    if (is_planted("a stream held without its list")) {
        lists().push_back({list, {}});
        for (const GList* link = list; link != nullptr; link = link->next) {
            lists().back().second.insert(link->data);
        }
    }
    return list;
}

OruMap* __real_oru_stream_get_settings(OruStream* stream, GError** error);
OruMap* __wrap_oru_stream_get_settings(OruStream* stream, GError** error) {
    if (is_planted("a stream held without its list") && !is_in_a_list(stream)) {
        set_error(error);
        return nullptr;
    }
    return __real_oru_stream_get_settings(stream, error);
}

GList* __real_oru_channel_get_all(GError** error);
GList* __wrap_oru_channel_get_all(GError** error) {
    GList* list = __real_oru_channel_get_all(error);
    if (list != nullptr && is_planted("one of two lists released")) {
        list->data = shared(list->data);
    }
    return list;
}

guint32 __real_oru_stream_get_id(OruStream* stream);
guint32 __wrap_oru_stream_get_id(OruStream* stream) {
    static bool is_second = true;
    is_second = !is_second;
    const guint32 id = __real_oru_stream_get_id(stream);
    return is_second && is_planted("oru_stream_get_id") ? id + 100 : id;
}

guint32 __real_oru_channel_get_id(OruChannel* channel);
guint32 __wrap_oru_channel_get_id(OruChannel* channel) {
    return is_planted("oru_channel_get_id") ? 3 : __real_oru_channel_get_id(channel);
}

OruInput* __real_oru_input_new(guint32 number, GError** error);
OruInput* __wrap_oru_input_new(guint32 number, GError** error) {
    OruInput* input = __real_oru_input_new(number, error);
    if (input == nullptr && is_planted("an input that does not exist")) {
        drop_error(error);
        return __real_oru_input_new(1, error);
    }
    if (error != nullptr && *error != nullptr && is_planted("oru_input_new, failing")) {
        g_free(std::exchange((*error)->message, nullptr));
    }
    return input;
}

// --- Maps ---------------------------------------------------------------------------------------

void __real_oru_map_set_string(OruMap* map, const gchar* key, const gchar* value);

OruMap* __real_oru_map_new(void);
OruMap* __wrap_oru_map_new(void) {
    OruMap* map = __real_oru_map_new();
    if (is_planted("oru_map_new")) {
        __real_oru_map_set_string(map, "version", "1");
    }
    return map;
}

void __wrap_oru_map_set_string(OruMap* map, const gchar* key, const gchar* value) {
    if (!is_planted("oru_map_set_string") || find(map, key) == nullptr) {
        __real_oru_map_set_string(map, key, value);
    }
}

gboolean __real_oru_map_contains(OruMap* map, const gchar* key);
gboolean __wrap_oru_map_contains(OruMap* map, const gchar* key) {
    const gboolean right = __real_oru_map_contains(map, key);
    const bool is_pair = right != FALSE && find(map, key)->tag == qw::tag_pair;
    return is_pair && is_planted("oru_map_contains") ? FALSE : right;
}

void __wrap_oru_map_remove(OruMap* map, const gchar* key) {
    if (is_planted("the service after oru_map_remove")) {
        removed().insert(key);
    }
    if (!is_planted("oru_map_remove")) {
        __real_oru_map_remove(map, key);
    }
}

void __real_oru_map_remove_prefix(OruMap* map, const gchar* prefix);
void __wrap_oru_map_remove_prefix(OruMap* map, const gchar* prefix) {
    if (is_planted("oru_map_remove_prefix")) {
        __real_oru_map_remove(map, prefix);
    } else {
        __real_oru_map_remove_prefix(map, prefix);
    }
}

OruMap* __real_oru_map_filter_prefix(OruMap* map, const gchar* prefix);
OruMap* __wrap_oru_map_filter_prefix(OruMap* map, const gchar* prefix) {
    return __real_oru_map_filter_prefix(map, is_planted("oru_map_filter_prefix") ? "" : prefix);
}

gboolean __real_oru_map_empty(OruMap* map);
gboolean __wrap_oru_map_empty(OruMap* map) {
    return is_planted("oru_map_empty") ? FALSE : __real_oru_map_empty(map);
}

guint32 __real_oru_map_get_uint32(OruMap* map, const gchar* key, guint32 def);
guint32 __wrap_oru_map_get_uint32(OruMap* map, const gchar* key, guint32 def) {
    return wrong<guint32>("oru_map_get_uint32", map, key, qw::tag_u32,
                          __real_oru_map_get_uint32(map, key, def), 99);
}

gint64 __real_oru_map_get_int64(OruMap* map, const gchar* key, gint64 def);
gint64 __wrap_oru_map_get_int64(OruMap* map, const gchar* key, gint64 def) {
    return wrong<gint64>("oru_map_get_int64", map, key, qw::tag_i64,
                         __real_oru_map_get_int64(map, key, def), -99);
}

gdouble __real_oru_map_get_double(OruMap* map, const gchar* key, gdouble def);
gdouble __wrap_oru_map_get_double(OruMap* map, const gchar* key, gdouble def) {
    return wrong<gdouble>("oru_map_get_double", map, key, qw::tag_real,
                          __real_oru_map_get_double(map, key, def), 0.125);
}

gboolean __real_oru_map_get_boolean(OruMap* map, const gchar* key, gboolean def);
gboolean __wrap_oru_map_get_boolean(OruMap* map, const gchar* key, gboolean def) {
    return wrong<gboolean>("oru_map_get_boolean", map, key, qw::tag_flag,
                           __real_oru_map_get_boolean(map, key, def), FALSE);
}

const gchar* __real_oru_map_get_string(OruMap* map, const gchar* key, gpointer reserved,
                                       const gchar* def);
const gchar* __wrap_oru_map_get_string(OruMap* map, const gchar* key, gpointer reserved,
                                       const gchar* def) {
    return wrong<const gchar*>("oru_map_get_string", map, key, qw::tag_text,
                               __real_oru_map_get_string(map, key, reserved, def), "");
}

// The halves are swapped.
guint64 __real_oru_map_get_pair32u(OruMap* map, const gchar* key, guint64 def);
guint64 __wrap_oru_map_get_pair32u(OruMap* map, const gchar* key, guint64 def) {
    const guint64 right = __real_oru_map_get_pair32u(map, key, def);
    return wrong<guint64>("oru_map_get_pair32u", map, key, qw::tag_pair, right,
                          right << 32 | right >> 32);
}

qw::map* __real_oru_map_native_ref(OruMap* map);
qw::map* __wrap_oru_map_native_ref(OruMap* map) {
    qw::map* native = __real_oru_map_native_ref(map);
    return is_planted("oru_map_native_ref")     ? nullptr
           : is_planted("kind code of 16 bits") ? with_code(*native, qw::tag_u16, 11)
           : is_planted("kind code of 32 bits") ? with_code(*native, qw::tag_u32, 12)
                                                : native;
}

// --- Formats ------------------------------------------------------------------------------------

GType __real_oru_format_get_type(void);
GType __wrap_oru_format_get_type(void) {
    return is_planted("nicks of formats")                ? formats_in_upper_case()
           : is_planted("nicks of formats without type") ? G_TYPE_INT
                                                         : __real_oru_format_get_type();
}

GEnumValue* __real_g_enum_get_value(GEnumClass* all, gint value);
GEnumValue* __wrap_g_enum_get_value(GEnumClass* all, gint value) {
    GEnumValue* found = __real_g_enum_get_value(all, value);
    return found == nullptr && is_planted("nick of an unknown format") ? all->values : found;
}

}  // extern "C"

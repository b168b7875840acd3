// The operations of the service, without those of maps.
#include <array>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <oru.h>

#include "strict_client/calls.h"
#include "strict_client/oru_map.h"
#include "strict_client/snapshot.h"

namespace strict {
namespace {

template <class Record>
struct record_of : object_content {
    explicit record_of(const Record& content) : record(content) {}
    const Record& record;
};

template <class Record>
const Record& record(const call& made, const char* type, gconstpointer object) {
    return static_cast<record_of<Record>&>(content_of(made.name(), type, object)).record;
}

const stream_record& record(const call& made, OruStream* stream) {
    return record<stream_record>(made, "OruStream", stream);
}
const channel_record& record(const call& made, OruChannel* channel) {
    return record<channel_record>(made, "OruChannel", channel);
}
const input_record& record(const call& made, OruInput* input) {
    return record<input_record>(made, "OruInput", input);
}
const output_record& record(const call& made, OruOutput* output) {
    return record<output_record>(made, "OruOutput", output);
}
const system_record& record(const call& made, OruSystem* system) {
    return record<system_record>(made, "OruSystem", system);
}
const mode_record& record(const call& made, OruMode* mode) {
    return record<mode_record>(made, "OruMode", mode);
}

template <class Object, class Record>
Object* open_object(const char* type, const std::string& name, const Record& record) {
    return static_cast<Object*>(new_object(type, name, new record_of<Record>(record)));
}

// Returns the snapshot, or fails the call and returns NULL.
const snapshot* reach(const call& made, GError** error) {
    if (gives_null(made.name())) {
        made.fails(error, "");
        return nullptr;
    }
    if (!current()) {
        made.fails(error, current().error());
        return nullptr;
    }
    return &*current();
}

// Returns the content of the answer, or fails the call and returns NULL. `what` is for the message.
template <class T>
const T* recorded(const call& made, const answer<T>& recorded_answer, const std::string& what,
                  GError** error) {
    if (gives_null(made.name())) {
        made.fails(error, "");
        return nullptr;
    }
    if (const auto* fails = std::get_if<failure>(&recorded_answer)) {
        made.fails(error, fails->message);
        return nullptr;
    }
    if (const T* content = std::get_if<T>(&recorded_answer)) {
        made.succeeds(error);
        return content;
    }
    made.fails(error, what + " not recorded");
    return nullptr;
}

// Returns the content of the answer of that name or number, or fails the call and returns NULL.
template <class All>
auto find_recorded(const call& made, const All& all, const typename All::key_type& name,
                   const std::string& what, GError** error) {
    static const typename All::mapped_type nothing;
    const auto found = all.find(name);
    return recorded(made, found == all.end() ? nothing : found->second, what, error);
}

// Returns the object's name for a message, without the suffix of a second object of that name.
std::string described(gconstpointer object) {
    const std::string& name = name_of(object);
    return name.substr(0, name.find('#'));
}

// Returns the map `part` of the object.
OruMap* map_of(const call& made, const answer<qw::map>& recorded_answer, gconstpointer object,
               const char* part, GError** error) {
    // "stream 3: settings", but "system caps": there is one system.
    const std::string name = described(object);
    const std::string what = name + (name.contains(' ') ? ": " : " ") + part;
    const qw::map* entries = recorded(made, recorded_answer, what, error);
    return entries == nullptr ? nullptr
                              : made.gives_object(new_map(name_of(object) + ' ' + part, *entries));
}

// Returns a map of the service as a whole.
OruMap* map_of_all(const call& made, answer<qw::map> snapshot::* member, const char* name,
                   GError** error) {
    const snapshot* service = reach(made, error);
    const qw::map* entries =
        service == nullptr ? nullptr : recorded(made, service->*member, name, error);
    return entries == nullptr ? nullptr : made.gives_object(new_map(name, *entries));
}

template <class Object, class Record>
GList* list_of(const call& made, const char* type, const char* prefix,
               const std::vector<const Record*>& records) {
    GList* list = nullptr;
    std::string names;
    for (const Record* each : records) {
        auto* object = open_object<Object>(type, prefix + std::to_string(each->id), *each);
        list = g_list_append(list, object);
        names += (names.empty() ? "" : ", ") + name_of(object);
    }
    if (list != nullptr) {
        hand_out_list(list, made.name());
    }
    return made.gives(list, names.empty() ? "an empty list" : names);
}

template <class Record, class Filter>
std::vector<const Record*> picked(const std::vector<Record>& records, const Filter& matches) {
    std::vector<const Record*> all;
    for (const Record& each : records) {
        if (matches(each)) {
            all.push_back(&each);
        }
    }
    return all;
}

// Fills the out-values from an answer or, without one, with odd values.
template <std::size_t Count>
gboolean fill(const call& made, const std::array<std::uint32_t, Count>* from,
              const std::array<guint32*, Count>& to) {
    for (std::size_t i = 0; i < Count; ++i) {
        for (std::size_t other = 0; other < i; ++other) {
            if (to[i] == to[other]) {
                misuse(made.name(), "two results have one place");
            }
        }
        *to[i] = from == nullptr ? 0xDEAD0001 + static_cast<guint32>(i) : (*from)[i];
    }
    return from == nullptr ? FALSE : made.gives(TRUE, "TRUE");
}

// Returns whether the channel's properties contain every text of the filter.
bool matches(const channel_record& channel, const qw::map& filter) {
    for (const auto& [key, value] : filter) {
        const auto* text = std::get_if<std::string>(&value.content);
        const auto found = channel.properties.by_key::find(key);
        if (text == nullptr) {
            continue;
        }
        const auto* property = found == channel.properties.end()
                                   ? nullptr
                                   : std::get_if<std::string>(&found->second.content);
        if (property == nullptr || *property != *text) {
            return false;
        }
    }
    return true;
}

std::string text_in(const qw::map& map, const char* key) {
    const auto found = map.by_key::find(key);
    const auto* text =
        found == map.end() ? nullptr : std::get_if<std::string>(&found->second.content);
    return text == nullptr ? "" : *text;
}

GType register_formats() {
    const auto formats = current() ? current()->formats : snapshot().formats;
    auto* values = g_new0(GEnumValue, formats.size() + 1);
    for (GEnumValue* value = values; const auto& [nick, code] : formats) {
        *value++ = {static_cast<gint>(code), g_intern_string(("ORU_FORMAT_" + nick).c_str()),
                    g_intern_string(nick.c_str())};
    }
    return g_enum_register_static("OruFormat", values);
}

}  // namespace
}  // namespace strict

using namespace strict;

GType oru_format_get_type(void) {
    static const GType type = register_formats();
    return type;
}

// --- Streams ------------------------------------------------------------------------------------

GList* oru_stream_get_all(GError** error) {
    const call made("oru_stream_get_all", error);
    const snapshot* service = reach(made, error);
    const auto* all =
        service == nullptr ? nullptr : recorded(made, service->streams, "streams", error);
    return all == nullptr ? nullptr
                          : list_of<OruStream>(made, "OruStream", "stream ",
                                               picked(*all, [](const auto&) { return true; }));
}

guint32 oru_stream_get_id(OruStream* stream) {
    const call made("oru_stream_get_id", stream);
    const guint32 id = record(made, stream).id;
    return made.gives(id, std::to_string(id));
}

OruMap* oru_stream_get_info(OruStream* stream, GError** error) {
    const call made("oru_stream_get_info", stream, error);
    return map_of(made, record(made, stream).info, stream, "info", error);
}

OruMap* oru_stream_get_settings(OruStream* stream, GError** error) {
    const call made("oru_stream_get_settings", stream, error);
    return map_of(made, record(made, stream).settings, stream, "settings", error);
}

OruMap* oru_stream_get_debug(OruStream* stream, GError** error) {
    const call made("oru_stream_get_debug", or_null(stream), error);
    if (stream == nullptr) {
        return map_of_all(made, &snapshot::stream_debug, "stream debug", error);
    }
    return map_of(made, record(made, stream).debug, stream, "debug", error);
}

OruMap* oru_stream_get_quota(GError** error) {
    return map_of_all(call("oru_stream_get_quota", error), &snapshot::stream_quota, "stream quota",
                      error);
}

OruMap* oru_stream_get_limit(GError** error) {
    return map_of_all(call("oru_stream_get_limit", error), &snapshot::stream_limit, "stream limit",
                      error);
}

// --- Channels -----------------------------------------------------------------------------------

namespace {

GList* channels(const call& made, const answer<std::vector<channel_record>>& of,
                const qw::map& filter, GError** error) {
    const auto* all = recorded(made, of, "channels", error);
    return all == nullptr
               ? nullptr
               : list_of<OruChannel>(
                     made, "OruChannel", "channel ",
                     picked(*all, [&](const auto& each) { return matches(each, filter); }));
}

}  // namespace

GList* oru_channel_get_all(GError** error) {
    const call made("oru_channel_get_all", error);
    const snapshot* service = reach(made, error);
    return service == nullptr ? nullptr : channels(made, service->channels, {}, error);
}

GList* oru_channel_get_filtered(OruMap* filter, GError** error) {
    const call made("oru_channel_get_filtered", filter, error);
    const qw::map& entries = entries_of(made.name(), filter);
    const snapshot* service = reach(made, error);
    if (service == nullptr) {
        return nullptr;
    }
    const bool is_list = std::holds_alternative<std::vector<channel_record>>(service->filtered);
    if (std::holds_alternative<failure>(service->filtered) ||
        (is_list && text_in(entries, "key") == "input")) {
        return channels(made, service->filtered, {}, error);
    }
    return channels(made, service->channels, entries, error);
}

guint32 oru_channel_get_id(OruChannel* channel) {
    const call made("oru_channel_get_id", channel);
    const guint32 id = record(made, channel).id;
    return made.gives(id, std::to_string(id));
}

OruMap* oru_channel_get_info(OruChannel* channel, GError** error) {
    const call made("oru_channel_get_info", or_null(channel), error);
    if (channel == nullptr) {
        return map_of_all(made, &snapshot::channel_info, "channel info", error);
    }
    return map_of(made, record(made, channel).info, channel, "info", error);
}

OruResolutions* oru_channel_get_resolutions(OruChannel* channel, OruMap* filter, GError** error) {
    const call made("oru_channel_get_resolutions", channel, filter, error);
    const std::string selection = text_in(entries_of(made.name(), filter), "select");
    const std::string what = described(channel) + ": resolutions";
    const auto* by_name = recorded(made, record(made, channel).resolutions, what, error);
    const auto* sizes = by_name == nullptr ? nullptr
                                           : find_recorded(made, *by_name, selection,
                                                           what + " '" + selection + "'", error);
    if (sizes == nullptr) {
        return nullptr;
    }
    // A count of 64 bits, then a width and a height for each resolution.
    auto* set = static_cast<guint64*>(g_malloc(sizeof(guint64) * (1 + sizes->size())));
    set[0] = sizes->size();
    auto* items = reinterpret_cast<guint32*>(set + 1);
    for (const auto& [width, height] : *sizes) {
        *items++ = width;
        *items++ = height;
    }
    hand_out_block(set, name_of(channel) + " resolutions");
    return made.gives(reinterpret_cast<OruResolutions*>(set), handed_out(set));
}

gboolean oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                              guint32* height, GError** error) {
    const call made("oru_channel_get_crop", channel, x, y, width, height, error);
    const auto* crop =
        recorded(made, record(made, channel).crop, described(channel) + ": crop", error);
    return fill<4>(made, crop, {x, y, width, height});
}

gboolean oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                  GError** error) {
    const call made("oru_channel_get_crop_max", channel, width, height, error);
    const auto* crop_max =
        recorded(made, record(made, channel).crop_max, described(channel) + ": crop_max", error);
    return fill<2>(made, crop_max, {width, height});
}

// --- Inputs, outputs, system, mode --------------------------------------------------------------

OruInput* oru_input_new(guint32 number, GError** error) {
    const call made("oru_input_new", number, error);
    const snapshot* service = reach(made, error);
    const std::string name = "input " + std::to_string(number);
    const auto* all = service == nullptr ? nullptr : recorded(made, service->inputs, name, error);
    const auto* input = all == nullptr ? nullptr : find_recorded(made, *all, number, name, error);
    return input == nullptr ? nullptr
                            : made.gives_object(open_object<OruInput>("OruInput", name, *input));
}

OruMap* oru_input_get_info(OruInput* input, GError** error) {
    const call made("oru_input_get_info", input, error);
    return map_of(made, record(made, input).info, input, "info", error);
}

gboolean oru_input_get_crop(OruInput* input, guint32* x, guint32* y, guint32* width,
                            guint32* height, GError** error) {
    const call made("oru_input_get_crop", input, x, y, width, height, error);
    const auto* crop = recorded(made, record(made, input).crop, described(input) + ": crop", error);
    return fill<4>(made, crop, {x, y, width, height});
}

gboolean oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode, guint32* width,
                                            guint32* height, GError** error) {
    const call made("oru_input_get_resolution_unrotated", input, mode, width, height, error);
    const std::string what = described(input) + ": resolution_unrotated";
    const auto* by_name = recorded(made, record(made, input).resolution_unrotated, what, error);
    const auto* size = by_name == nullptr
                           ? nullptr
                           : find_recorded(made, *by_name, mode, what + " '" + mode + "'", error);
    return fill<2>(made, size, {width, height});
}

OruOutput* oru_output_new(const gchar* name, GError** error) {
    const call made("oru_output_new", always_null(name), error);
    const snapshot* service = reach(made, error);
    const auto* all =
        service == nullptr ? nullptr : recorded(made, service->outputs, "output 0", error);
    const auto* output = all == nullptr ? nullptr : find_recorded(made, *all, 0, "output 0", error);
    return output == nullptr
               ? nullptr
               : made.gives_object(open_object<OruOutput>("OruOutput", "output 0", *output));
}

OruMap* oru_output_get_info(OruOutput* output, GError** error) {
    const call made("oru_output_get_info", output, error);
    return map_of(made, record(made, output).info, output, "info", error);
}

OruMap* oru_output_get_settings(OruOutput* output, GError** error) {
    const call made("oru_output_get_settings", output, error);
    return map_of(made, record(made, output).settings, output, "settings", error);
}

OruSystem* oru_system_new(GError** error) {
    const call made("oru_system_new", error);
    const snapshot* service = reach(made, error);
    const auto* system =
        service == nullptr ? nullptr : recorded(made, service->system, "system", error);
    return system == nullptr
               ? nullptr
               : made.gives_object(open_object<OruSystem>("OruSystem", "system", *system));
}

OruMap* oru_system_get_caps(OruSystem* system, GError** error) {
    const call made("oru_system_get_caps", system, error);
    return map_of(made, record(made, system).caps, system, "caps", error);
}

OruMode* oru_mode_new(GError** error) {
    const call made("oru_mode_new", error);
    const snapshot* service = reach(made, error);
    const auto* mode = service == nullptr ? nullptr : recorded(made, service->mode, "mode", error);
    return mode == nullptr ? nullptr
                           : made.gives_object(open_object<OruMode>("OruMode", "mode", *mode));
}

OruMap* oru_mode_get_info(OruMode* mode, GError** error) {
    const call made("oru_mode_get_info", mode, error);
    return map_of(made, record(made, mode).info, mode, "info", error);
}

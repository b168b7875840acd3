#include "snapshot_tool/fake_service.h"

#include <cstring>
#include <deque>
#include <format>
#include <memory>
#include <stdexcept>

#include <oru.h>

namespace {

// Every object of the service is a GObject with the answers that the test set.
template <class Object, class Content>
Object* object_of(const Content& content) {
    auto* object = static_cast<GObject*>(g_object_new(G_TYPE_OBJECT, nullptr));
    g_object_set_data_full(object, "content", new Content(content),
                           [](gpointer pointer) { delete static_cast<Content*>(pointer); });
    return reinterpret_cast<Object*>(object);
}

template <class Content, class Object>
Content& content_of(Object* object) {
    return *static_cast<Content*>(g_object_get_data(reinterpret_cast<GObject*>(object), "content"));
}

template <class T>
const T* answered(const fake_answer<T>& answer, GError** error) {
    if (answer.error) {
        g_set_error_literal(error, g_quark_from_static_string("fake"), 1, answer.error->c_str());
    }
    return answer.value ? &*answer.value : nullptr;
}

template <class Object, class Content>
Object* object_for(const fake_answer<Content>& answer, GError** error) {
    const Content* content = answered(answer, error);
    return content != nullptr ? object_of<Object>(*content) : nullptr;
}

OruMap* map_for(const fake_answer<fake_map>& answer, GError** error) {
    return object_for<OruMap>(answer, error);
}

template <class Object, class Content>
GList* list_for(const fake_answer<std::vector<Content>>& answer, GError** error) {
    const auto* all = answered(answer, error);
    GList* list = nullptr;
    for (std::size_t i = all != nullptr ? all->size() : 0; i > 0; --i) {
        list = g_list_prepend(list, object_of<Object>((*all)[i - 1]));
    }
    return list;
}

template <std::size_t Count, class... Out>
gboolean fill(const fake_answer<std::array<std::uint32_t, Count>>& answer, GError** error,
              Out*... out) {
    const auto* numbers = answered(answer, error);
    if (numbers == nullptr) {
        return FALSE;
    }
    std::size_t i = 0;
    ((*out = (*numbers)[i++]), ...);
    return TRUE;
}

void require_filter(OruMap* filter, const std::string& key, const std::string& text) {
    const fake_map& map = content_of<fake_map>(filter);
    if (map.size() != 1 || std::get<std::string>(std::get<native_value>(map.at(key))) != text) {
        throw std::logic_error("another filter");
    }
}

}  // namespace

// --- The client library -------------------------------------------------------------------------

OruMap* oru_map_new(void) {
    return object_of<OruMap>(fake_map());
}

void oru_map_set_string(OruMap* map, const gchar* key, const gchar* value) {
    content_of<fake_map>(map)[key] = native_value(std::string(value));
}

GList* oru_stream_get_all(GError** error) {
    return list_for<OruStream>(service.streams, error);
}

guint32 oru_stream_get_id(OruStream* stream) {
    return content_of<fake_stream>(stream).id;
}

OruMap* oru_stream_get_info(OruStream* stream, GError** error) {
    return map_for(content_of<fake_stream>(stream).info, error);
}

OruMap* oru_stream_get_settings(OruStream* stream, GError** error) {
    return map_for(content_of<fake_stream>(stream).settings, error);
}

OruMap* oru_stream_get_debug(OruStream* stream, GError** error) {
    return map_for(stream != nullptr ? content_of<fake_stream>(stream).debug : service.stream_debug,
                   error);
}

OruMap* oru_stream_get_quota(GError** error) {
    return map_for(service.stream_quota, error);
}

OruMap* oru_stream_get_limit(GError** error) {
    return map_for(service.stream_limit, error);
}

GList* oru_channel_get_all(GError** error) {
    return list_for<OruChannel>(service.channels, error);
}

GList* oru_channel_get_filtered(OruMap* filter, GError** error) {
    require_filter(filter, "key", "input");
    return list_for<OruChannel>(service.channels_of_inputs, error);
}

guint32 oru_channel_get_id(OruChannel* channel) {
    return content_of<fake_channel>(channel).id;
}

OruMap* oru_channel_get_info(OruChannel* channel, GError** error) {
    return map_for(
        channel != nullptr ? content_of<fake_channel>(channel).info : service.channel_info, error);
}

OruResolutionSet* oru_channel_get_resolutions(OruChannel* channel, OruMap* filter, GError** error) {
    require_filter(filter, "select", "available");
    const auto* all = answered(content_of<fake_channel>(channel).resolutions, error);
    if (all == nullptr) {
        return nullptr;
    }
    // The block that native_resolutions() below reads.
    const std::size_t size = all->size();
    auto* block = static_cast<char*>(g_malloc(sizeof size + size * sizeof(native_resolution)));
    std::memcpy(block, &size, sizeof size);
    if (size > 0) {
        std::memcpy(block + sizeof size, all->data(), size * sizeof(native_resolution));
    }
    return reinterpret_cast<OruResolutionSet*>(block);
}

gboolean oru_channel_get_crop(OruChannel* channel, guint32* x, guint32* y, guint32* width,
                              guint32* height, GError** error) {
    return fill(content_of<fake_channel>(channel).crop, error, x, y, width, height);
}

gboolean oru_channel_get_crop_max(OruChannel* channel, guint32* width, guint32* height,
                                  GError** error) {
    return fill(content_of<fake_channel>(channel).crop_max, error, width, height);
}

OruInput* oru_input_new(guint32 number, GError** error) {
    service.opened_inputs.push_back(number);
    return object_for<OruInput>(service.inputs[number], error);
}

OruMap* oru_input_get_info(OruInput* input, GError** error) {
    return map_for(content_of<fake_input>(input).info, error);
}

gboolean oru_input_get_crop(OruInput* input, guint32* x, guint32* y, guint32* width,
                            guint32* height, GError** error) {
    return fill(content_of<fake_input>(input).crop, error, x, y, width, height);
}

gboolean oru_input_get_resolution_unrotated(OruInput* input, const gchar* mode, guint32* width,
                                            guint32* height, GError** error) {
    if (std::strcmp(mode, "capture") != 0) {
        throw std::logic_error("another mode");
    }
    return fill(content_of<fake_input>(input).resolution, error, width, height);
}

OruOutput* oru_output_new(guint32 number, GError** error) {
    if (number != 0) {
        throw std::logic_error("another output");
    }
    return object_for<OruOutput>(service.output, error);
}

OruMap* oru_output_get_info(OruOutput* output, GError** error) {
    return map_for(content_of<fake_output>(output).info, error);
}

OruMap* oru_output_get_settings(OruOutput* output, GError** error) {
    return map_for(content_of<fake_output>(output).settings, error);
}

OruSystem* oru_system_new(GError** error) {
    return object_for<OruSystem>(service.system, error);
}

OruMap* oru_system_get_caps(OruSystem* system, GError** error) {
    return map_for(content_of<fake_answer<fake_map>>(system), error);
}

OruMode* oru_mode_new(GError** error) {
    return object_for<OruMode>(service.mode, error);
}

OruMap* oru_mode_get_info(OruMode* mode, GError** error) {
    return map_for(content_of<fake_answer<fake_map>>(mode), error);
}

// A type exists until the process ends, so each test registers another one.
GType oru_format_get_type(void) {
    static std::deque<std::vector<GEnumValue>> kept;
    auto& values = kept.emplace_back();
    for (const auto& [code, nick] : service.formats) {
        values.push_back({static_cast<gint>(code), "", g_intern_string(nick.c_str())});
    }
    values.push_back({});
    return g_enum_register_static(std::format("Formats{}", kept.size()).c_str(), values.data());
}

// --- native.cpp ---------------------------------------------------------------------------------

native_map::native_map(OruMap* map) : map_(&content_of<fake_map>(map)) {}

std::vector<native_entry> native_map::entries() const {
    std::vector<native_entry> entries;
    for (const auto& [key, value] : *static_cast<const fake_map*>(map_)) {
        const auto* known = std::get_if<native_value>(&value);
        entries.push_back({key, known != nullptr ? *known : native_other()});
    }
    return entries;
}

struct native_table::content {
    std::string name;
    std::optional<std::string> json;
};

native_table::native_table() : content_(std::make_unique<content>()) {}

native_table::~native_table() = default;

void native_table::insert(std::string_view name, const native_map& from, std::string_view key) {
    const auto& map = *static_cast<const fake_map*>(from.map_);
    *content_ = {std::string(name), std::get<fake_other>(map.at(std::string(key))).json};
}

std::string native_table::to_json() const {
    if (!content_->json) {
        throw std::runtime_error("the bus has no form for it");
    }
    return std::format(" {{\n\t\"{}\" :{}\r}} ", content_->name, *content_->json);
}

std::vector<native_resolution> native_resolutions(const void* set, std::uint64_t) {
    std::size_t size = 0;
    std::memcpy(&size, set, sizeof size);
    std::vector<native_resolution> resolutions(size);
    if (size > 0) {
        std::memcpy(resolutions.data(), static_cast<const char*>(set) + sizeof size,
                    size * sizeof(native_resolution));
    }
    return resolutions;
}

std::optional<replay::origin> replay::answers_origin() {
    return service.origin;
}

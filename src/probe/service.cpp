#include "probe/service.h"

#include <algorithm>
#include <format>
#include <utility>

namespace probe {
namespace {

template <class Object, class GetId>
std::vector<named_object<Object>> named_elements(const char* prefix, const GList* list,
                                                 GetId get_id) {
    std::vector<named_object<Object>> objects;
    for (tracked<Object>& element : elements_of<Object>(list)) {
        const std::uint32_t id = get_id(element.get());
        objects.push_back({std::format("{} {}", prefix, id), std::move(element)});
    }
    return objects;
}

tracked<OruMap> new_map_of_texts() {
    tracked<OruMap> map{oru_map_new()};
    if (map.get() != nullptr) {
        for (const char* key : {"view.b", "\xc3\xa9", "view.a", "z", "viewer", "a", "Z", "vie"}) {
            oru_map_set_string(map.get(), key, "42");
        }
    }
    return map;
}

}  // namespace

owned_object<OruMap> map_with(const char* key, const char* text) {
    owned_object<OruMap> map{oru_map_new()};
    if (map != nullptr) {
        oru_map_set_string(map.get(), key, text);
    }
    return map;
}

video_service::video_service()
    : stream_list_(track(oru_stream_get_all(nullptr))),
      channel_list_(track(oru_channel_get_all(nullptr))),
      system(oru_system_new(nullptr)),
      mode(oru_mode_new(nullptr)),
      output(oru_output_new(0, nullptr)),
      streams(named_elements<OruStream>("stream", stream_list_.get(), oru_stream_get_id)),
      channels(named_elements<OruChannel>("channel", channel_list_.get(), oru_channel_get_id)) {
    find_inputs();
    list_maps();
}

void video_service::find_inputs() {
    if (const owned_object<OruMap> info{oru_channel_get_info(nullptr, nullptr)}; info != nullptr) {
        const std::uint32_t count = oru_map_get_uint32(info.get(), "input.count", 1);
        const auto last = std::min<std::uint32_t>(count, max_objects);
        for (std::uint32_t number = 1; number <= last; ++number) {
            input_numbers.insert(number);
        }
    }
    if (const owned_object<OruMap> filter = map_with("key", "input"); filter != nullptr) {
        const tracked_list list = track(oru_channel_get_filtered(filter.get(), nullptr));
        for (const tracked<OruChannel>& channel : elements_of<OruChannel>(list.get())) {
            const owned_object<OruMap> info{oru_channel_get_info(channel.get(), nullptr)};
            if (info != nullptr) {
                input_numbers.insert(oru_map_get_uint32(info.get(), "type.id", 1));
            }
        }
    }
    for (const std::uint32_t number : input_numbers) {
        if (tracked<OruInput> input{oru_input_new(number, nullptr)}; input.get() != nullptr) {
            inputs.push_back({std::format("input {}", number), std::move(input)});
        }
    }
}

void video_service::list_maps() {
    const auto add = [this]<class Object>(const std::string& name, const tracked<Object>& owner,
                                          OruMap* (*get)(Object*, GError**)) {
        maps.push_back({name, [&owner, get] {
                            Object* object = owner.get();
                            return tracked<OruMap>{object != nullptr ? get(object, nullptr)
                                                                     : nullptr};
                        }});
    };
    const auto add_global = [this](const char* name, OruMap* (*get)(GError**)) {
        maps.push_back({name, [get] { return tracked<OruMap>{get(nullptr)}; }});
    };
    add("system caps", system, oru_system_get_caps);
    add("mode info", mode, oru_mode_get_info);
    add_global("stream debug", [](GError** error) { return oru_stream_get_debug(nullptr, error); });
    add_global("stream quota", oru_stream_get_quota);
    add_global("stream limit", oru_stream_get_limit);
    for (const auto& [name, stream] : streams) {
        add(name + " info", stream, oru_stream_get_info);
        add(name + " settings", stream, oru_stream_get_settings);
        add(name + " debug", stream, oru_stream_get_debug);
    }
    add_global("channel info", [](GError** error) { return oru_channel_get_info(nullptr, error); });
    for (const auto& [name, channel] : channels) {
        add(name + " info", channel, oru_channel_get_info);
    }
    for (const auto& [name, input] : inputs) {
        add(name + " info", input, oru_input_get_info);
    }
    add("output info", output, oru_output_get_info);
    add("output settings", output, oru_output_get_settings);

    maps_and_new_map = maps;
    maps_and_new_map.push_back({"a map of texts", new_map_of_texts});
}

}  // namespace probe

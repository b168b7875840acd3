#include "probe/service.h"

#include <algorithm>
#include <format>
#include <utility>

namespace {

template <class Object, class Id>
std::vector<named<Object>> numbered(const char* prefix, const GList* list, Id id) {
    std::vector<named<Object>> all;
    for (living<Object>& element : elements_of<Object>(list)) {
        const std::uint32_t number = id(element.get());
        all.push_back({std::format("{} {}", prefix, number), std::move(element)});
    }
    return all;
}

living<OruMap> map_of_texts() {
    living<OruMap> map{oru_map_new()};
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

probed_service::probed_service()
    : stream_list_(watch(oru_stream_get_all(nullptr))),
      channel_list_(watch(oru_channel_get_all(nullptr))),
      system(oru_system_new(nullptr)),
      mode(oru_mode_new(nullptr)),
      output(oru_output_new(0, nullptr)),
      streams(numbered<OruStream>("stream", stream_list_.get(), oru_stream_get_id)),
      channels(numbered<OruChannel>("channel", channel_list_.get(), oru_channel_get_id)) {
    find_inputs();
    list_maps();
}

void probed_service::find_inputs() {
    if (const owned_object<OruMap> info{oru_channel_get_info(nullptr, nullptr)}; info != nullptr) {
        const std::uint32_t count = oru_map_get_uint32(info.get(), "input.count", 1);
        for (std::uint32_t number = 1; number <= std::min<std::uint32_t>(count, most); ++number) {
            input_numbers.insert(number);
        }
    }
    if (const owned_object<OruMap> filter = map_with("key", "input"); filter != nullptr) {
        const living_list found = watch(oru_channel_get_filtered(filter.get(), nullptr));
        for (const living<OruChannel>& channel : elements_of<OruChannel>(found.get())) {
            const owned_object<OruMap> info{oru_channel_get_info(channel.get(), nullptr)};
            if (info != nullptr) {
                input_numbers.insert(oru_map_get_uint32(info.get(), "type.id", 1));
            }
        }
    }
    for (const std::uint32_t number : input_numbers) {
        if (living<OruInput> input{oru_input_new(number, nullptr)}; input.get() != nullptr) {
            inputs.push_back({std::format("input {}", number), std::move(input)});
        }
    }
}

void probed_service::list_maps() {
    const auto add = [this]<class Object>(const std::string& name, const living<Object>& object,
                                          OruMap* (*query)(Object*, GError**)) {
        maps.push_back({name, [&object, query] {
                            Object* asked = object.get();
                            return living<OruMap>{asked != nullptr ? query(asked, nullptr)
                                                                   : nullptr};
                        }});
    };
    const auto add_all = [this](const char* name, OruMap* (*query)(GError**)) {
        maps.push_back({name, [query] { return living<OruMap>{query(nullptr)}; }});
    };
    add("system caps", system, oru_system_get_caps);
    add("mode info", mode, oru_mode_get_info);
    add_all("stream debug", [](GError** error) { return oru_stream_get_debug(nullptr, error); });
    add_all("stream quota", oru_stream_get_quota);
    add_all("stream limit", oru_stream_get_limit);
    for (const auto& [name, stream] : streams) {
        add(name + " info", stream, oru_stream_get_info);
        add(name + " settings", stream, oru_stream_get_settings);
        add(name + " debug", stream, oru_stream_get_debug);
    }
    add_all("channel info", [](GError** error) { return oru_channel_get_info(nullptr, error); });
    for (const auto& [name, channel] : channels) {
        add(name + " info", channel, oru_channel_get_info);
    }
    for (const auto& [name, input] : inputs) {
        add(name + " info", input, oru_input_get_info);
    }
    add("output info", output, oru_output_get_info);
    add("output settings", output, oru_output_get_settings);

    every_map = maps;
    every_map.push_back({"a map of texts", map_of_texts});
}

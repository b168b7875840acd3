#include "snapshot_tool/query.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <oru.h>

#include "replay/origin.h"
#include "snapshot/lookup.h"
#include "snapshot_tool/inputs.h"
#include "snapshot_tool/other_json.h"
#include "video/error_message.h"
#include "video/native.h"
#include "video/owned.h"

namespace snapshot_tool {
namespace {

using snapshot::answer;
using snapshot::map_entries;
using snapshot::rectangle;
using snapshot::resolution;

owned_object<OruMap> filter_by(const char* key, const char* value) {
    owned_object<OruMap> filter{oru_map_new()};
    if (filter == nullptr) {
        throw std::bad_alloc();
    }
    oru_map_set_string(filter.get(), key, value);
    return filter;
}

class queries {
  public:
    explicit queries(std::uint32_t most_counted_inputs)
        : most_counted_inputs_(most_counted_inputs) {}

    std::shared_ptr<const snapshot::answers> run();

  private:
    answer<snapshot::system_record> system();
    answer<snapshot::mode_record> mode();
    answer<std::vector<snapshot::stream_record>> streams();
    template <class Query>
    answer<std::vector<snapshot::channel_record>> channels(Query query);
    snapshot::channel_record channel(OruChannel* channel);
    std::vector<snapshot::input_record> inputs();
    snapshot::input_record input(std::uint32_t number);
    snapshot::output_record output();
    std::vector<snapshot::format_record> formats();

    // Each runs a query, a function of a GError**, and copies its answer. NULL and FALSE are
    // failures, except that NULL without an error is an empty list.
    template <class Query>
    answer<map_entries> map(Query query);
    template <class Query>
    answer<rectangle> area(Query query);
    template <class Query>
    answer<resolution> size(Query query);
    template <class Query>
    answer<std::span<const resolution>> sizes(Query query);
    template <class Object, class Record, class Query>
    answer<std::vector<Record>> list(Query query, Record (queries::*copy)(Object* object));

    template <class T>
    std::span<const snapshot::named_answer<T>> only(const char* name, const answer<T>& answer) {
        return all_->arena.keep(std::vector{snapshot::named_answer<T>{name, answer}});
    }
    snapshot::failure failure_of(const owned_error& error) {
        return {all_->arena.keep(message_of(error.get())).data()};
    }
    map_entries entries(OruMap* map);
    snapshot::stream_record stream(OruStream* stream);

    std::shared_ptr<snapshot::answers> all_ = std::make_shared<snapshot::answers>();
    owned_object<OruMap> available_ = filter_by("select", "available");
    std::uint32_t most_counted_inputs_;
};

std::shared_ptr<const snapshot::answers> queries::run() {
    all_->system = system();
    all_->mode = mode();
    all_->stream_debug = map([](GError** error) { return oru_stream_get_debug(nullptr, error); });
    all_->stream_quota = map(oru_stream_get_quota);
    all_->stream_limit = map(oru_stream_get_limit);
    all_->streams = list(oru_stream_get_all, &queries::stream);
    all_->channel_info = map([](GError** error) { return oru_channel_get_info(nullptr, error); });
    all_->channels = list(oru_channel_get_all, &queries::channel);
    const owned_object<OruMap> filter = filter_by("key", "input");
    all_->channels_filtered =
        list([&](GError** error) { return oru_channel_get_filtered(filter.get(), error); },
             &queries::channel);
    all_->inputs = inputs();
    all_->outputs = std::vector{output()};
    all_->formats = formats();
    // Answers that our client library took from an old file are not those of a running service.
    if (const auto origin = replay::answers_origin(); origin && origin->recorded) {
        all_->recorded = all_->arena.keep(*origin->recorded);
    }
    return all_;
}

// --- Objects ------------------------------------------------------------------------------------

answer<snapshot::system_record> queries::system() {
    owned_error error;
    const owned_object<OruSystem> system{oru_system_new(std::out_ptr(error))};
    if (system == nullptr) {
        return failure_of(error);
    }
    return snapshot::system_record{
        map([&](GError** map_error) { return oru_system_get_caps(system.get(), map_error); })};
}

answer<snapshot::mode_record> queries::mode() {
    owned_error error;
    const owned_object<OruMode> mode{oru_mode_new(std::out_ptr(error))};
    if (mode == nullptr) {
        return failure_of(error);
    }
    return snapshot::mode_record{
        map([&](GError** map_error) { return oru_mode_get_info(mode.get(), map_error); })};
}

snapshot::stream_record queries::stream(OruStream* stream) {
    return {.id = oru_stream_get_id(stream),
            .info = map([&](GError** error) { return oru_stream_get_info(stream, error); }),
            .settings = map([&](GError** error) { return oru_stream_get_settings(stream, error); }),
            .debug = map([&](GError** error) { return oru_stream_get_debug(stream, error); })};
}

snapshot::channel_record queries::channel(OruChannel* channel) {
    return {
        .id = oru_channel_get_id(channel),
        .properties = {},
        .info = map([&](GError** error) { return oru_channel_get_info(channel, error); }),
        .crop = area([&](auto... out) { return oru_channel_get_crop(channel, out...); }),
        .crop_max = size([&](auto... out) { return oru_channel_get_crop_max(channel, out...); }),
        .resolutions = only("available", sizes([&](GError** error) {
                                return oru_channel_get_resolutions(channel, available_.get(),
                                                                   error);
                            }))};
}

std::vector<snapshot::input_record> queries::inputs() {
    std::uint32_t count = 0;
    if (const auto* info = std::get_if<map_entries>(&all_->channel_info)) {
        count = std::min(input_count(*info), most_counted_inputs_);
    }
    std::set<std::uint32_t> named_numbers = named_inputs(*all_);

    std::vector<snapshot::input_record> inputs;
    const auto query_named_before = [&](std::uint64_t end) {
        while (!named_numbers.empty() && *named_numbers.begin() < end) {
            inputs.push_back(input(*named_numbers.begin()));
            named_numbers.erase(named_numbers.begin());
        }
    };
    std::uint32_t missing_in_a_row = 0;
    for (std::uint64_t number = 1; number <= count && missing_in_a_row < most_missing_inputs;
         ++number) {
        query_named_before(number);
        named_numbers.erase(static_cast<std::uint32_t>(number));
        inputs.push_back(input(static_cast<std::uint32_t>(number)));
        missing_in_a_row = inputs.back().fails ? missing_in_a_row + 1 : 0;
    }
    query_named_before(std::uint64_t{1} << 32);
    return inputs;
}

snapshot::input_record queries::input(std::uint32_t number) {
    owned_error error;
    const owned_object<OruInput> input{oru_input_new(number, std::out_ptr(error))};
    if (input == nullptr) {
        return {.id = number, .fails = failure_of(error)};
    }
    return {
        .id = number,
        .info = map([&](GError** map_error) { return oru_input_get_info(input.get(), map_error); }),
        .crop = area([&](auto... out) { return oru_input_get_crop(input.get(), out...); }),
        .resolution_unrotated = only("capture", size([&](auto... out) {
                                         return oru_input_get_resolution_unrotated(
                                             input.get(), "capture", out...);
                                     }))};
}

snapshot::output_record queries::output() {
    owned_error error;
    const owned_object<OruOutput> output{oru_output_new(0, std::out_ptr(error))};
    if (output == nullptr) {
        return {.id = 0, .fails = failure_of(error)};
    }
    return {.id = 0,
            .info = map(
                [&](GError** map_error) { return oru_output_get_info(output.get(), map_error); }),
            .settings = map([&](GError** map_error) {
                return oru_output_get_settings(output.get(), map_error);
            })};
}

std::vector<snapshot::format_record> queries::formats() {
    const owned_class<GEnumClass> type{
        static_cast<GEnumClass*>(g_type_class_ref(oru_format_get_type()))};
    std::vector<snapshot::format_record> formats;
    formats.reserve(type->n_values);
    for (const GEnumValue& value : std::span(type->values, type->n_values)) {
        formats.push_back({value.value_nick, static_cast<std::uint32_t>(value.value)});
    }
    // Of several nicks of one code, a look-up finds the first.
    std::ranges::stable_sort(formats, {}, &snapshot::format_record::code);
    const auto others = std::ranges::unique(formats, {}, &snapshot::format_record::code);
    formats.erase(others.begin(), others.end());
    for (snapshot::format_record& format : formats) {
        format.nick = all_->arena.keep(format.nick);
    }
    return formats;
}

// --- Answers ------------------------------------------------------------------------------------

template <class Query>
answer<map_entries> queries::map(Query query) {
    owned_error error;
    const owned_object<OruMap> map{query(std::out_ptr(error))};
    if (map == nullptr) {
        return failure_of(error);
    }
    return entries(map.get());
}

template <class Query>
answer<rectangle> queries::area(Query query) {
    owned_error error;
    rectangle area{};
    if (query(&area.x, &area.y, &area.width, &area.height,
              static_cast<GError**>(std::out_ptr(error))) == FALSE) {
        return failure_of(error);
    }
    return area;
}

template <class Query>
answer<resolution> queries::size(Query query) {
    owned_error error;
    resolution size{};
    if (query(&size.width, &size.height, static_cast<GError**>(std::out_ptr(error))) == FALSE) {
        return failure_of(error);
    }
    return size;
}

template <class Query>
answer<std::span<const resolution>> queries::sizes(Query query) {
    owned_error error;
    const owned_block set{query(std::out_ptr(error))};
    if (set == nullptr) {
        return failure_of(error);
    }
    return all_->arena.keep(native_resolutions(set.get()), [](const native_resolution& size) {
        return resolution{size.width, size.height};
    });
}

template <class Object, class Record, class Query>
answer<std::vector<Record>> queries::list(Query query, Record (queries::*copy)(Object* object)) {
    owned_error error;
    const owned_object_list objects{query(std::out_ptr(error))};
    if (error != nullptr) {
        return failure_of(error);
    }
    std::vector<Record> records;
    for (const GList* link = objects.get(); link != nullptr; link = link->next) {
        records.push_back((this->*copy)(object_in<Object>(link)));
    }
    return records;
}

map_entries queries::entries(OruMap* map) {
    const native_map native{map};
    return all_->arena.keep(native.entries(), [&](const native_entry& entry) {
        const auto value_of = [&](const auto& value) -> snapshot::value {
            using native_type = std::remove_cvref_t<decltype(value)>;
            if constexpr (std::is_same_v<native_type, std::string>) {
                return all_->arena.keep(value);
            } else if constexpr (std::is_same_v<native_type, native_pair>) {
                return snapshot::pair32u(value.first, value.second);
            } else if constexpr (std::is_same_v<native_type, native_other>) {
                const auto json = other_json(native, entry.key);
                if (json) {
                    return snapshot::other{all_->arena.keep(*json)};
                }
                return snapshot::unwritable{all_->arena.keep(json.error())};
            } else {
                return value;
            }
        };
        return snapshot::entry{all_->arena.keep(entry.key), std::visit(value_of, entry.value)};
    });
}

}  // namespace

std::shared_ptr<const snapshot::answers> query_service(std::uint32_t most_counted_inputs) {
    return queries(most_counted_inputs).run();
}

}  // namespace snapshot_tool

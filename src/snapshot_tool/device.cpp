#include "snapshot_tool/device.h"

#include <algorithm>
#include <format>
#include <limits>
#include <memory>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include <oru.h>

#include "video/error_message.h"
#include "video/format_name.h"
#include "video/owned.h"

namespace {

using answered_map = answer<owned_object<OruMap>>;

// Asks questions, and keeps what the failures say and whether there was anything else.
class questions {
  public:
    // For an object or a map; NULL is a failure.
    template <class Question>
    auto ask(Question question) {
        using object = std::remove_pointer_t<std::invoke_result_t<Question, GError**>>;
        return ask_for<owned_object<object>>(question);
    }

    // For a block; NULL is a failure.
    template <class Question>
    answer<owned_block> block(Question question) {
        return ask_for<owned_block>(question);
    }

    // For a list; NULL without an error is an empty one.
    template <class Question>
    answer<owned_object_list> list(Question question) {
        owned_error error;
        owned_object_list got{question(std::out_ptr(error))};
        return kept(std::move(got), error != nullptr, error);
    }

    // For a value that is filled in; FALSE is a failure.
    template <class Value, class Question>
    answer<Value> fill(Question question) {
        owned_error error;
        Value value{};
        const bool is_failure = question(value, std::out_ptr(error)) == FALSE;
        return kept(value, is_failure, error);
    }

    answer<void> reached() const {
        if (!is_reached_) {
            return std::unexpected{first_failure_};
        }
        return {};
    }

    std::size_t failures() const { return failures_; }

  private:
    template <class Owner, class Question>
    answer<Owner> ask_for(Question question) {
        owned_error error;
        Owner got{question(std::out_ptr(error))};
        const bool is_failure = got == nullptr;
        return kept(std::move(got), is_failure, error);
    }

    template <class Value>
    answer<Value> kept(Value value, bool is_failure, const owned_error& error) {
        if (is_failure) {
            const std::string reason = message_of(error.get());
            if (failures_ == 0) {
                first_failure_ = reason;
            }
            ++failures_;
            return std::unexpected{reason};
        }
        is_reached_ = true;
        return value;
    }

    bool is_reached_ = false;
    std::size_t failures_ = 0;
    std::string first_failure_;
};

// What is absent or of another kind gives a getter's default, whatever that is.
template <auto getter>
auto found(OruMap* map, const char* key) {
    const auto value = getter(map, key, 0);
    const bool is_default = value == 0 && getter(map, key, 1) != 0;
    return is_default ? std::nullopt : std::optional{value};
}

number found_number(OruMap* map, const char* key) {
    return found<oru_map_get_uint32>(map, key);
}

std::optional<double> found_double(OruMap* map, const char* key) {
    return found<oru_map_get_double>(map, key);
}

std::optional<std::string> found_text(OruMap* map, const char* key) {
    const char* text = oru_map_get_string(map, key, nullptr, nullptr);
    return text != nullptr ? std::optional<std::string>{text} : std::nullopt;
}

std::optional<native_resolution> found_size(OruMap* map) {
    const number width = found_number(map, "width");
    const number height = found_number(map, "height");
    if (!width || !height) {
        return std::nullopt;
    }
    return native_resolution{.width = *width, .height = *height};
}

bool is_set(OruMap* map, const char* key) {
    return oru_map_get_boolean(map, key, FALSE) != FALSE;
}

// --- Streams ------------------------------------------------------------------------------------

stream_info info_of(const owned_object<OruMap>& map) {
    stream_info info{
        .channel = found_number(map.get(), "channel"),
        .clients = found_number(map.get(), "peers"),
        .bit_rate = found_number(map.get(), "statistics.bitrate"),
        .frame_rate = found_number(map.get(), "statistics.framerate"),
        .frames = found_number(map.get(), "statistics.frame_count"),
        .failed_frames = found_number(map.get(), "statistics.failed_frames"),
        .reclaims = found_number(map.get(), "statistics.reclaim_count"),
        .run_time = found<oru_map_get_int64>(map.get(), "statistics.duration"),
        .raw_size = found_size(map.get()),
        .client_identities = {},
    };
    for (int client = 0; client < 8; ++client) {
        if (auto name = found_text(map.get(), std::format("identity[{}]", client).c_str())) {
            info.client_identities.push_back(std::move(*name));
        }
    }
    return info;
}

stream_settings settings_of(const owned_object<OruMap>& map) {
    constexpr std::uint32_t raw = 3;
    constexpr std::uint32_t none = 0xFFFFFFFF;
    const std::uint32_t format = native_map_get_uint(map.get(), "format", none);
    stream_settings settings{
        .identity = found_text(map.get(), "identity"),
        .format = {},
        .is_raw = format == raw,
        .encoded_size = found_size(map.get()),
        .frame_rate = found_double(map.get(), "framerate"),
    };
    if (settings.is_raw) {
        settings.format = found_text(map.get(), "subformat").value_or("NV12");
    } else if (format != none) {
        const std::string name = format_to_name(format);
        settings.format = name != "n/a" ? name : std::format("code {}", format);
    }
    return settings;
}

usage usage_of(const owned_object<OruMap>& map) {
    return {.capacity = found_number(map.get(), "global.capacity"),
            .encoded_streams = found_number(map.get(), "global.encoded.peers"),
            .jpeg_streams = found_number(map.get(), "global.encoded.jpeg.peers"),
            .raw_streams = found_number(map.get(), "global.raw.peers")};
}

answer<std::vector<stream>> ask_streams(questions& service) {
    return service.list(oru_stream_get_all).transform([&](const owned_object_list& list) {
        std::vector<stream> streams;
        for (const GList* link = list.get(); link != nullptr; link = link->next) {
            auto* const asked = object_in<OruStream>(link);
            const auto map = [&](auto question) {
                return service.ask([&](GError** error) { return question(asked, error); });
            };
            streams.push_back({.id = oru_stream_get_id(asked),
                               .info = map(oru_stream_get_info).transform(info_of),
                               .settings = map(oru_stream_get_settings).transform(settings_of),
                               .in_use = map(oru_stream_get_debug).transform(usage_of)});
        }
        return streams;
    });
}

// --- The service as a whole ---------------------------------------------------------------------

service_counters counters_of(const owned_object<OruMap>& map) {
    constexpr std::string_view prefix = "identity.";
    service_counters counters{
        .in_use = usage_of(map),
        .capacity_peak = found_number(map.get(), "global.capacity.peak"),
        .encoded_streams_peak = found_number(map.get(), "global.encoded.peers.peak"),
        .raw_streams_peak = found_number(map.get(), "global.raw.peers.peak"),
        .identities = {},
    };
    for (const std::string& key : native_map{map.get()}.keys()) {
        if (key.starts_with(prefix)) {
            counters.identities.push_back({.name = key.substr(prefix.size()),
                                           .starts = found_number(map.get(), key.c_str())});
        }
    }
    return counters;
}

stream_quota quota_of(const owned_object<OruMap>& map) {
    return {.hard = found_number(map.get(), "global.hard.limit"),
            .soft = found_number(map.get(), "global.soft.limit"),
            .buffering = found_number(map.get(), "global.buffering.limit")};
}

// --- Channels and inputs ------------------------------------------------------------------------

answer<bool> can_crop(const answered_map& info) {
    return info.transform([](const auto& map) { return is_set(map.get(), "crop.possible"); });
}

channel ask_channel(questions& service, OruChannel* asked) {
    const answered_map info =
        service.ask([&](GError** error) { return oru_channel_get_info(asked, error); });
    channel told{.id = oru_channel_get_id(asked),
                 .can_crop = can_crop(info),
                 .crop = {},
                 .largest_crop = {},
                 .available = {}};
    if (told.can_crop.value_or(false)) {
        told.crop = service.fill<rectangle>([&](rectangle& area, GError** error) {
            return oru_channel_get_crop(asked, &area.x, &area.y, &area.width, &area.height, error);
        });
        told.largest_crop =
            service.fill<native_resolution>([&](native_resolution& size, GError** error) {
                return oru_channel_get_crop_max(asked, &size.width, &size.height, error);
            });
    }
    const owned_object<OruMap> filter{oru_map_new()};
    oru_map_set_string(filter.get(), "select", "available");
    const auto available = service.block(
        [&](GError** error) { return oru_channel_get_resolutions(asked, filter.get(), error); });
    told.available =
        available.transform([](const auto& set) { return native_resolutions(set.get()); });
    return told;
}

answer<std::vector<channel>> ask_channels(questions& service) {
    return service.list(oru_channel_get_all).transform([&](const owned_object_list& list) {
        std::vector<channel> channels;
        for (const GList* link = list.get(); link != nullptr; link = link->next) {
            channels.push_back(ask_channel(service, object_in<OruChannel>(link)));
        }
        return channels;
    });
}

answer<std::vector<input_channel>> ask_input_channels(questions& service) {
    const owned_object<OruMap> filter{oru_map_new()};
    oru_map_set_string(filter.get(), "key", "input");
    const auto filtered = [&](GError** error) {
        return oru_channel_get_filtered(filter.get(), error);
    };
    return service.list(filtered).transform([&](const owned_object_list& list) {
        std::vector<input_channel> channels;
        for (const GList* link = list.get(); link != nullptr; link = link->next) {
            auto* const asked = object_in<OruChannel>(link);
            const answered_map info =
                service.ask([&](GError** error) { return oru_channel_get_info(asked, error); });
            channels.push_back(
                {.id = oru_channel_get_id(asked), .input = info.transform([](const auto& map) {
                     return oru_map_get_uint32(map.get(), "type.id", 1);
                 })});
        }
        return channels;
    });
}

input_state ask_input_state(questions& service, OruInput* asked) {
    const answered_map info =
        service.ask([&](GError** error) { return oru_input_get_info(asked, error); });
    input_state told{
        .capture = service.fill<native_resolution>([&](native_resolution& size, GError** error) {
            return oru_input_get_resolution_unrotated(asked, "capture", &size.width, &size.height,
                                                      error);
        }),
        .can_crop = can_crop(info),
        .crop = {},
        .largest_crop = {}};
    if (told.can_crop.value_or(false)) {
        told.crop = service.fill<rectangle>([&](rectangle& area, GError** error) {
            return oru_input_get_crop(asked, &area.x, &area.y, &area.width, &area.height, error);
        });
        constexpr std::uint64_t none = std::numeric_limits<std::uint64_t>::max();
        const std::uint64_t largest = oru_map_get_pair32u(info->get(), "crop.max", none);
        if (largest != none) {
            const auto [width, height] = halves_of(largest);
            told.largest_crop = {.width = width, .height = height};
        }
    }
    return told;
}

std::vector<input> ask_inputs(questions& service, const answer<std::uint32_t>& count,
                              const answer<std::vector<input_channel>>& channels) {
    std::vector<std::uint32_t> ids;
    for (std::uint32_t id = 1; id <= std::min(count.value_or(0), most_inputs_counted); ++id) {
        ids.push_back(id);
    }
    if (channels) {
        for (const input_channel& from : *channels) {
            if (from.input && std::ranges::find(ids, *from.input) == ids.end()) {
                ids.push_back(*from.input);
            }
        }
    }
    std::vector<input> inputs;
    for (const std::uint32_t id : ids) {
        const auto opened = service.ask([&](GError** error) { return oru_input_new(id, error); });
        inputs.push_back({.id = id, .state = opened.transform([&](const auto& asked) {
                              return ask_input_state(service, asked.get());
                          })});
    }
    return inputs;
}

// --- Output -------------------------------------------------------------------------------------

hdmi_output ask_hdmi_output(questions& service, OruOutput* asked) {
    const answered_map settings =
        service.ask([&](GError** error) { return oru_output_get_settings(asked, error); });
    const answered_map info =
        service.ask([&](GError** error) { return oru_output_get_info(asked, error); });
    return {.settings = settings.transform([](const auto& map) {
                return output_settings{.is_enabled = is_set(map.get(), "enabled"),
                                       .vic = found_number(map.get(), "VIC")};
            }),
            .info = info.transform([](const auto& map) {
                return output_info{.is_running = is_set(map.get(), "running"),
                                   .is_hdmi = is_set(map.get(), "vsdb"),
                                   .size = found_size(map.get()),
                                   .frame_rate = found_double(map.get(), "framerate"),
                                   .aspect_ratio = found_text(map.get(), "aspect.ratio")};
            })};
}

answer<std::optional<hdmi_output>> ask_output(questions& service) {
    const auto system = service.ask(oru_system_new);
    if (!system) {
        return std::unexpected{system.error()};
    }
    const answered_map caps =
        service.ask([&](GError** error) { return oru_system_get_caps(system->get(), error); });
    if (!caps) {
        return std::unexpected{caps.error()};
    }
    if (!is_set(caps->get(), "output")) {
        return std::nullopt;
    }
    return service.ask([](GError** error) { return oru_output_new(0, error); })
        .transform([&](const auto& opened) {
            return std::optional{ask_hdmi_output(service, opened.get())};
        });
}

// Asks for what is not told, but shows that the service is there.
void ask_for_the_rest(questions& service) {
    if (const auto mode = service.ask(oru_mode_new)) {
        std::ignore =
            service.ask([&](GError** error) { return oru_mode_get_info(mode->get(), error); });
    }
    std::ignore = service.ask([](GError** error) { return oru_output_new(0, error); });
}

}  // namespace

device ask_device() {
    questions service;
    device told;
    told.streams = ask_streams(service);
    told.service = service.ask([](GError** error) { return oru_stream_get_debug(nullptr, error); })
                       .transform(counters_of);
    told.quota = service.ask(oru_stream_get_quota).transform(quota_of);
    told.stream_limit = service.ask(oru_stream_get_limit).transform([](const auto& map) {
        return found_number(map.get(), "global.max.streams.limit.encoded");
    });
    told.channels = ask_channels(service);
    told.input_channels = ask_input_channels(service);
    told.input_count =
        service.ask([](GError** error) { return oru_channel_get_info(nullptr, error); })
            .transform(
                [](const auto& map) { return oru_map_get_uint32(map.get(), "input.count", 1); });
    told.inputs = ask_inputs(service, told.input_count, told.input_channels);
    told.output = ask_output(service);
    if (!service.reached()) {
        ask_for_the_rest(service);
    }
    told.reached = service.reached();
    told.failures = service.failures();
    return told;
}

answer<std::optional<native_resolution>> size_of(const stream& from) {
    return from.settings.and_then(
        [&](const stream_settings& settings) -> answer<std::optional<native_resolution>> {
            if (settings.is_raw) {
                return from.info.transform([](const stream_info& info) { return info.raw_size; });
            }
            return settings.encoded_size;
        });
}

number in_use(const device& of, number usage::* figure) {
    if (of.streams) {
        for (const stream& teller : *of.streams) {
            if (teller.in_use && (*teller.in_use).*figure) {
                return (*teller.in_use).*figure;
            }
        }
    }
    return of.service ? of.service->in_use.*figure : std::nullopt;
}

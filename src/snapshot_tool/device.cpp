#include "snapshot_tool/device.h"

#include <algorithm>
#include <format>
#include <functional>
#include <map>
#include <span>
#include <string_view>
#include <tuple>
#include <unordered_set>
#include <utility>
#include <variant>

#include "snapshot/lookup.h"
#include "snapshot_tool/inputs.h"

namespace snapshot_tool {
namespace {

using snapshot::answer;
using snapshot::map_entries;
using snapshot::query;

// Takes answers from a snapshot, and counts the queries that were not answered.
class taken_answers {
  public:
    // Returns the answer, which remains the snapshot's.
    template <class T>
    outcome<std::reference_wrapper<const T>> take(const answer<T>& from, const query& asked) {
        if (const auto* value = std::get_if<T>(&from)) {
            is_any_answered_ = true;
            return *value;
        }
        const auto* fails = std::get_if<snapshot::failure>(&from);
        return failed(fails != nullptr ? fails->message : snapshot::not_recorded(asked));
    }

    // The same for one of several answers by name.
    template <class T>
    outcome<std::reference_wrapper<const T>> take(
        const answer<std::span<const snapshot::named_answer<T>>>& from, query asked,
        const char* name) {
        const auto all = take(from, asked);
        if (!all) {
            return std::unexpected(all.error());
        }
        asked.name = name;
        const auto* found = snapshot::find(all->get(), name);
        return found != nullptr ? take(*found, asked) : failed(snapshot::not_recorded(asked));
    }

    // The same for what a program opens by its id.
    template <class Record>
    outcome<std::reference_wrapper<const Record>> open(const answer<std::vector<Record>>& from,
                                                       const query& asked) {
        const auto records = take(from, asked);
        if (!records) {
            return std::unexpected(records.error());
        }
        const Record* found = snapshot::find(records->get(), *asked.number);
        if (found == nullptr) {
            return failed(snapshot::not_recorded(asked));
        }
        if (found->fails) {
            return failed(found->fails->message);
        }
        return *found;
    }

    bool is_any_answered() const { return is_any_answered_; }
    std::size_t failures() const { return failures_; }
    const std::string& first_failure() const { return first_failure_; }

  private:
    std::unexpected<std::string> failed(std::string reason) {
        if (failures_++ == 0) {
            first_failure_ = reason;
        }
        return std::unexpected(std::move(reason));
    }

    bool is_any_answered_ = false;
    std::size_t failures_ = 0;
    std::string first_failure_;
};

// --- Values -------------------------------------------------------------------------------------

template <class T>
std::optional<T> found(map_entries map, std::string_view key) {
    const snapshot::value* value = snapshot::find(map, key);
    return value != nullptr ? snapshot::widened<T>(*value) : std::nullopt;
}

figure found_number(map_entries map, std::string_view key) {
    return found<std::uint32_t>(map, key);
}

// Up to a NUL, as a program gets it from the service.
std::optional<std::string> found_text(map_entries map, std::string_view key) {
    const snapshot::value* value = snapshot::find(map, key);
    const auto text = value != nullptr ? value->get_if<std::string_view>() : std::nullopt;
    return text ? std::optional<std::string>(text->substr(0, text->find('\0'))) : std::nullopt;
}

std::optional<resolution> found_size(map_entries map) {
    const figure width = found_number(map, "width");
    const figure height = found_number(map, "height");
    if (!width || !height) {
        return std::nullopt;
    }
    return resolution{.width = *width, .height = *height};
}

bool is_set(map_entries map, std::string_view key) {
    const snapshot::value* value = snapshot::find(map, key);
    return value != nullptr && value->get_if<bool>().value_or(false);
}

// --- Streams ------------------------------------------------------------------------------------

stream_info info_of(map_entries map) {
    stream_info info{
        .channel = found_number(map, "channel"),
        .clients = found_number(map, "peers"),
        .bit_rate = found_number(map, "statistics.bitrate"),
        .frame_rate = found_number(map, "statistics.framerate"),
        .frames = found_number(map, "statistics.frame_count"),
        .failed_frames = found_number(map, "statistics.failed_frames"),
        .reclaims = found_number(map, "statistics.reclaim_count"),
        .run_time = found<std::int64_t>(map, "statistics.duration"),
        .raw_size = found_size(map),
        .client_identities = {},
    };
    for (int client = 0; client < 8; ++client) {
        if (auto name = found_text(map, std::format("identity[{}]", client))) {
            info.client_identities.push_back(std::move(*name));
        }
    }
    return info;
}

using format_names = std::map<std::uint32_t, std::string_view>;

format_names names_of_formats(const snapshot::answers& from) {
    const std::span<const snapshot::format_record> formats =
        from.formats ? std::span<const snapshot::format_record>(*from.formats)
                     : std::span(snapshot::default_formats);
    format_names names;
    for (const auto& [nick, code] : formats) {
        names.try_emplace(code, nick);
    }
    return names;
}

stream_settings settings_of(map_entries map, const format_names& formats) {
    constexpr std::uint32_t raw = 3;
    constexpr std::uint32_t none = 0xFFFFFFFF;
    const std::uint32_t format = found_number(map, "format").value_or(none);
    stream_settings settings{
        .identity = found_text(map, "identity"),
        .format = {},
        .is_raw = format == raw,
        .encoded_size = found_size(map),
        .frame_rate = found<double>(map, "framerate"),
    };
    if (settings.is_raw) {
        settings.format = found_text(map, "subformat").value_or("NV12");
    } else if (format != none) {
        const auto name = formats.find(format);
        // A report prints n/a for a format without a name.
        settings.format = name != formats.end() && name->second != "n/a"
                              ? std::string(name->second)
                              : std::format("code {}", format);
    }
    return settings;
}

usage usage_of(map_entries map) {
    return {.capacity = found_number(map, "global.capacity"),
            .encoded_streams = found_number(map, "global.encoded.peers"),
            .jpeg_streams = found_number(map, "global.encoded.jpeg.peers"),
            .raw_streams = found_number(map, "global.raw.peers")};
}

outcome<std::vector<stream>> streams_of(const snapshot::answers& from, taken_answers& taken) {
    const format_names formats = names_of_formats(from);
    return taken.take(from.streams, {"streams"}).transform([&](const auto& records) {
        std::vector<stream> streams;
        for (const snapshot::stream_record& record : records.get()) {
            const auto map = [&](const char* part, const answer<map_entries>& answered) {
                return taken.take(answered, {"stream", record.id, part});
            };
            // In the order in which a failure is the first one.
            auto info = map("info", record.info).transform(info_of);
            auto settings = map("settings", record.settings).transform([&](map_entries entries) {
                return settings_of(entries, formats);
            });
            auto in_use = map("debug", record.debug).transform(usage_of);
            streams.push_back({.id = record.id,
                               .info = std::move(info),
                               .settings = std::move(settings),
                               .in_use = std::move(in_use)});
        }
        return streams;
    });
}

// --- The service as a whole ---------------------------------------------------------------------

service_counters counters_of(map_entries map) {
    constexpr std::string_view prefix = "identity.";
    service_counters counters{
        .in_use = usage_of(map),
        .capacity_peak = found_number(map, "global.capacity.peak"),
        .encoded_streams_peak = found_number(map, "global.encoded.peers.peak"),
        .raw_streams_peak = found_number(map, "global.raw.peers.peak"),
        .identities = {},
    };
    for (const auto& [key, value] : map) {
        if (key.starts_with(prefix)) {
            counters.identities.push_back({.name = std::string(key.substr(prefix.size())),
                                           .starts = snapshot::widened<std::uint32_t>(value)});
        }
    }
    return counters;
}

stream_quota quota_of(map_entries map) {
    return {.hard = found_number(map, "global.hard.limit"),
            .soft = found_number(map, "global.soft.limit"),
            .buffering = found_number(map, "global.buffering.limit")};
}

// --- Channels and inputs ------------------------------------------------------------------------

bool can_crop(map_entries info) {
    return is_set(info, "crop.possible");
}

channel channel_of(const snapshot::channel_record& record, taken_answers& taken) {
    const auto asked = [&](const char* part) { return query{"channel", record.id, part}; };
    channel shown{.id = record.id,
                  .can_crop = taken.take(record.info, asked("info")).transform(can_crop),
                  .crop = {},
                  .largest_crop = {},
                  .available = {}};
    if (shown.can_crop.value_or(false)) {
        shown.crop = taken.take(record.crop, asked("crop"));
        shown.largest_crop = taken.take(record.crop_max, asked("crop_max"));
    }
    shown.available = taken.take(record.resolutions, asked("resolutions"), "available")
                          .transform([](std::span<const resolution> sizes) {
                              return std::vector<resolution>(sizes.begin(), sizes.end());
                          });
    return shown;
}

outcome<std::vector<channel>> channels_of(const snapshot::answers& from, taken_answers& taken) {
    return taken.take(from.channels, {"channels"}).transform([&](const auto& records) {
        std::vector<channel> channels;
        for (const snapshot::channel_record& record : records.get()) {
            channels.push_back(channel_of(record, taken));
        }
        return channels;
    });
}

outcome<std::vector<input_channel>> input_channels_of(const snapshot::answers& from,
                                                      taken_answers& taken) {
    // Without a list of their own they are those whose properties say so.
    const bool is_listed = !std::holds_alternative<snapshot::left_out>(from.channels_filtered);
    const auto& list = is_listed ? from.channels_filtered : from.channels;
    return taken.take(list, {"channels"}).transform([&](const auto& records) {
        std::vector<input_channel> channels;
        for (const snapshot::channel_record& record : records.get()) {
            if (is_listed || snapshot::has_text(record.properties, "key", "input")) {
                channels.push_back({.id = record.id,
                                    .input = taken.take(record.info, {"channel", record.id, "info"})
                                                 .transform(input_number)});
            }
        }
        return channels;
    });
}

input_state state_of(const snapshot::input_record& record, taken_answers& taken) {
    const auto asked = [&](const char* part) { return query{"input", record.id, part}; };
    const auto info = taken.take(record.info, asked("info"));
    input_state state{.capture = taken.take(record.resolution_unrotated,
                                            asked("resolution_unrotated"), "capture"),
                      .can_crop = info.transform(can_crop),
                      .crop = {},
                      .largest_crop = {}};
    if (state.can_crop.value_or(false)) {
        state.crop = taken.take(record.crop, asked("crop"));
        if (const auto largest = found<snapshot::pair32u>(*info, "crop.max")) {
            state.largest_crop = {.width = largest->first, .height = largest->second};
        }
    }
    return state;
}

std::vector<input> inputs_of(const snapshot::answers& from, const outcome<std::uint32_t>& count,
                             const outcome<std::vector<input_channel>>& channels,
                             taken_answers& taken) {
    std::vector<std::uint32_t> ids;
    for (std::uint32_t id = 1; id <= std::min(count.value_or(0), most_inputs_counted); ++id) {
        ids.push_back(id);
    }
    if (channels) {
        std::unordered_set<std::uint32_t> known(ids.begin(), ids.end());
        for (const input_channel& channel : *channels) {
            if (channel.input && known.insert(*channel.input).second) {
                ids.push_back(*channel.input);
            }
        }
    }
    std::vector<input> inputs;
    inputs.reserve(ids.size());
    for (const std::uint32_t id : ids) {
        inputs.push_back({.id = id,
                          .state = taken.open(from.inputs, {"input", id})
                                       .transform([&](const snapshot::input_record& record) {
                                           return state_of(record, taken);
                                       })});
    }
    return inputs;
}

// --- Output -------------------------------------------------------------------------------------

hdmi_output hdmi_output_of(const snapshot::output_record& record, taken_answers& taken) {
    auto settings = taken.take(record.settings, {"output", record.id, "settings"});
    auto info = taken.take(record.info, {"output", record.id, "info"});
    return {.settings = settings.transform([](map_entries map) {
                return output_settings{.is_enabled = is_set(map, "enabled"),
                                       .vic = found_number(map, "VIC")};
            }),
            .info = info.transform([](map_entries map) {
                return output_info{.is_running = is_set(map, "running"),
                                   .is_hdmi = is_set(map, "vsdb"),
                                   .size = found_size(map),
                                   .frame_rate = found<double>(map, "framerate"),
                                   .aspect_ratio = found_text(map, "aspect.ratio")};
            })};
}

outcome<std::optional<hdmi_output>> output_of(const snapshot::answers& from, taken_answers& taken) {
    const auto system = taken.take(from.system, {"system"});
    if (!system) {
        return std::unexpected{system.error()};
    }
    const auto caps = taken.take(system->get().caps, {"system", {}, "caps"});
    if (!caps) {
        return std::unexpected{caps.error()};
    }
    if (!is_set(*caps, "output")) {
        return std::nullopt;
    }
    return taken.open(from.outputs, {"output", 0})
        .transform([&](const snapshot::output_record& record) {
            return std::optional{hdmi_output_of(record, taken)};
        });
}

// Takes what nothing shows, but what says that the service is there.
void take_the_rest(const snapshot::answers& from, taken_answers& taken) {
    if (const auto mode = taken.take(from.mode, {"mode"})) {
        std::ignore = taken.take(mode->get().info, {"mode", {}, "info"});
    }
    std::ignore = taken.open(from.outputs, {"output", 0});
}

}  // namespace

device figures_of(const snapshot::loaded& from) {
    if (!from) {
        device unreached{};
        unreached.reached = std::unexpected(from.error());
        return unreached;
    }
    const snapshot::answers& all = **from;
    taken_answers taken;
    device shown;
    shown.streams = streams_of(all, taken);
    shown.service = taken.take(all.stream_debug, {"stream", {}, "debug"}).transform(counters_of);
    shown.quota = taken.take(all.stream_quota, {"stream", {}, "quota"}).transform(quota_of);
    shown.stream_limit =
        taken.take(all.stream_limit, {"stream", {}, "limit"}).transform([](map_entries map) {
            return found_number(map, "global.max.streams.limit.encoded");
        });
    shown.channels = channels_of(all, taken);
    shown.input_channels = input_channels_of(all, taken);
    shown.input_count =
        taken.take(all.channel_info, {"channel", {}, "info"}).transform(input_count);
    shown.inputs = inputs_of(all, shown.input_count, shown.input_channels, taken);
    shown.output = output_of(all, taken);
    if (!taken.is_any_answered()) {
        take_the_rest(all, taken);
    }
    if (!snapshot::is_answered(all)) {
        shown.reached = std::unexpected(taken.first_failure());
    }
    shown.failures = taken.failures();
    return shown;
}

outcome<std::optional<resolution>> size_of(const stream& from) {
    return from.settings.and_then(
        [&](const stream_settings& settings) -> outcome<std::optional<resolution>> {
            if (settings.is_raw) {
                return from.info.transform([](const stream_info& info) { return info.raw_size; });
            }
            return settings.encoded_size;
        });
}

figure in_use(const device& from, figure usage::* reported) {
    if (from.streams) {
        for (const stream& each : *from.streams) {
            if (each.in_use && (*each.in_use).*reported) {
                return (*each.in_use).*reported;
            }
        }
    }
    return from.service ? from.service->in_use.*reported : std::nullopt;
}

}  // namespace snapshot_tool

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
#include "snapshot/utc_time.h"
#include "snapshot_tool/inputs.h"

namespace snapshot_tool {
namespace {

using snapshot::answer;
using snapshot::map_entries;
using snapshot::query;

// Every kind of query: its name, and the parts of the query.
struct query_kind {
    std::string_view name;
    std::string_view subject;
    bool has_number = false;
    std::string_view part = {};
};

constexpr query_kind query_kinds[] = {
    {"streams", "streams"},
    {"stream info", "stream", true, "info"},
    {"stream settings", "stream", true, "settings"},
    {"stream debug", "stream", true, "debug"},
    {"service counters", "stream", false, "debug"},
    {"service quota", "stream", false, "quota"},
    {"service limit", "stream", false, "limit"},
    {"channels", "channels"},
    {"channel info", "channel", true, "info"},
    {"channel crop", "channel", true, "crop"},
    {"channel largest crop", "channel", true, "crop_max"},
    {"channel resolutions", "channel", true, "resolutions"},
    {"input count", "channel", false, "info"},
    {"input", "input", true},
    {"input info", "input", true, "info"},
    {"input crop", "input", true, "crop"},
    {"input capture", "input", true, "resolution_unrotated"},
    {"system", "system"},
    {"system caps", "system", false, "caps"},
    {"output", "output", true},
    {"output settings", "output", true, "settings"},
    {"output info", "output", true, "info"},
    {"mode", "mode"},
    {"mode info", "mode", false, "info"},
};

// Returns the message of a failure; NULL if there is no answer.
template <class T>
const char* message_of(const answer<T>& answer) {
    const auto* failure = std::get_if<snapshot::failure>(&answer);
    return failure != nullptr ? failure->message : nullptr;
}

// Looks answers up in a snapshot, and counts the queries that were not answered.
class counted_queries {
  public:
    counted_queries() {
        for (const query_kind& kind : query_kinds) {
            unanswered_.push_back({.kind = kind.name});
        }
    }

    // Returns the answer, which remains the snapshot's.
    template <class T>
    outcome<std::reference_wrapper<const T>> run(const query& query, const answer<T>& answer) {
        if (const auto* value = std::get_if<T>(&answer)) {
            is_any_answered_ = true;
            return *value;
        }
        return failed(query, message_of(answer));
    }

    // The same for one of several answers by name.
    template <class T>
    outcome<std::reference_wrapper<const T>> run(
        query query, const char* name,
        const answer<std::span<const snapshot::named_answer<T>>>& answers) {
        const auto list = run(query, answers);
        if (!list) {
            return std::unexpected(list.error());
        }
        query.name = name;
        const auto* found = snapshot::find(list->get(), name);
        return found != nullptr ? run(query, *found) : failed(query, nullptr);
    }

    // The same for a record that a program opens by its id.
    template <class Record>
    outcome<std::reference_wrapper<const Record>> open(const query& query,
                                                       const answer<std::vector<Record>>& list) {
        const auto records = run(query, list);
        if (!records) {
            return std::unexpected(records.error());
        }
        const Record* found = snapshot::find(records->get(), *query.number);
        if (found == nullptr) {
            return failed(query, nullptr);
        }
        if (found->fails) {
            return failed(query, found->fails->message);
        }
        return *found;
    }

    bool is_any_answered() const { return is_any_answered_; }
    const std::string& first_failure() const { return first_failure_; }
    std::vector<unanswered_queries> unanswered() && { return std::move(unanswered_); }

  private:
    std::unexpected<reason> failed(const query& query, const char* message) {
        const auto kind = std::ranges::find_if(query_kinds, [&](const query_kind& kind) {
            return kind.subject == query.subject && kind.has_number == query.number.has_value() &&
                   kind.part == (query.part != nullptr ? query.part : "");
        });
        ++unanswered_.at(static_cast<std::size_t>(kind - query_kinds)).count;
        if (!is_any_failed_) {
            is_any_failed_ = true;
            first_failure_ = reason(query, message).text();
        }
        return std::unexpected(reason(query, message));
    }

    bool is_any_answered_ = false;
    bool is_any_failed_ = false;
    std::string first_failure_;
    std::vector<unanswered_queries> unanswered_;
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

// Returns the text up to a NUL, as a getter of the service returns it.
std::optional<std::string_view> found_text(map_entries map, std::string_view key) {
    const auto text = found<std::string_view>(map, key);
    return text ? std::optional(text->substr(0, text->find('\0'))) : std::nullopt;
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
    return {
        .channel = found_number(map, "channel"),
        .clients = found_number(map, "peers"),
        .bit_rate = found_number(map, "statistics.bitrate"),
        .frame_rate = found_number(map, "statistics.framerate"),
        .frames = found_number(map, "statistics.frame_count"),
        .failed_frames = found_number(map, "statistics.failed_frames"),
        .reclaims = found_number(map, "statistics.reclaim_count"),
        .run_time = found<std::int64_t>(map, "statistics.duration"),
        .input = found_number(map, "input"),
    };
}

// The names of formats by their codes; a view of the first name of each.
class format_names {
  public:
    explicit format_names(const snapshot::answers& answers) {
        const std::span<const snapshot::format_record> formats =
            answers.formats ? std::span<const snapshot::format_record>(*answers.formats)
                            : std::span(snapshot::default_formats);
        for (const auto& [nick, code] : formats) {
            names_.try_emplace(code, nick);
        }
    }

    std::string_view name_of(std::uint32_t code) {
        const auto [name, is_new] = names_.try_emplace(code);
        // A report prints n/a for a format without a name.
        if (is_new || name->second == "n/a") {
            name->second = made_up_->keep(std::format("code {}", code));
        }
        return name->second;
    }

    // Returns the memory of the names that no format has.
    std::shared_ptr<snapshot::arena> made_up() const { return made_up_; }

  private:
    std::map<std::uint32_t, std::string_view> names_;
    std::shared_ptr<snapshot::arena> made_up_ = std::make_shared<snapshot::arena>();
};

stream_settings settings_of(map_entries map, format_names& formats) {
    constexpr std::uint32_t raw = 3;
    constexpr std::uint32_t none = 0xFFFFFFFF;
    const std::uint32_t format = found_number(map, "format").value_or(none);
    stream_settings settings{
        .identity = found_text(map, "identity"),
        .format = {},
        .frame_rate = found<double>(map, "framerate"),
        .is_raw = format == raw,
    };
    if (settings.is_raw) {
        settings.format = found_text(map, "subformat").value_or("NV12");
    } else if (format != none) {
        settings.format = formats.name_of(format);
    }
    return settings;
}

usage usage_of(map_entries map) {
    return {.capacity = found_number(map, "global.capacity"),
            .encoded_streams = found_number(map, "global.encoded.peers"),
            .jpeg_streams = found_number(map, "global.encoded.jpeg.peers"),
            .raw_streams = found_number(map, "global.raw.peers")};
}

outcome<std::vector<stream>> streams_of(const snapshot::answers& answers, format_names& formats,
                                        counted_queries& queries) {
    return queries.run({"streams"}, answers.streams).transform([&](const auto& records) {
        std::vector<stream> streams;
        streams.reserve(records.get().size());
        for (const snapshot::stream_record& record : records.get()) {
            const auto map = [&](const char* part, const answer<map_entries>& answer) {
                return queries.run({"stream", record.id, part}, answer);
            };
            // The order of the queries decides which failure is the first.
            auto info = map("info", record.info).transform(info_of);
            auto settings = map("settings", record.settings).transform([&](map_entries entries) {
                return settings_of(entries, formats);
            });
            map("debug", record.debug);  // only counted here
            streams.push_back({.id = record.id,
                               .info = std::move(info),
                               .settings = std::move(settings),
                               .record = &record});
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
            counters.identities.push_back({.name = key.substr(prefix.size()),
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

channel channel_of(const snapshot::channel_record& record, counted_queries& queries) {
    const auto part = [&](const char* name) { return query{"channel", record.id, name}; };
    channel figures{.id = record.id,
                    .can_crop = queries.run(part("info"), record.info).transform(can_crop),
                    .crop = {},
                    .largest_crop = {},
                    .available = {}};
    if (figures.can_crop.value_or(false)) {
        figures.crop = queries.run(part("crop"), record.crop);
        figures.largest_crop = queries.run(part("crop_max"), record.crop_max);
    }
    figures.available = queries.run(part("resolutions"), "available", record.resolutions);
    return figures;
}

outcome<std::vector<channel>> channels_of(const snapshot::answers& answers,
                                          counted_queries& queries) {
    return queries.run({"channels"}, answers.channels).transform([&](const auto& records) {
        std::vector<channel> channels;
        channels.reserve(records.get().size());
        for (const snapshot::channel_record& record : records.get()) {
            channels.push_back(channel_of(record, queries));
        }
        return channels;
    });
}

outcome<std::vector<input_channel>> input_channels_of(const snapshot::answers& answers,
                                                      counted_queries& queries) {
    // A snapshot without a filtered list marks these channels by a property.
    const bool has_list = !std::holds_alternative<snapshot::left_out>(answers.channels_filtered);
    const auto& list = has_list ? answers.channels_filtered : answers.channels;
    return queries.run({"channels"}, list).transform([&](const auto& records) {
        std::vector<input_channel> channels;
        for (const snapshot::channel_record& record : records.get()) {
            if (has_list || snapshot::has_text(record.properties, "key", "input")) {
                const query info{"channel", record.id, "info"};
                channels.push_back(
                    {.id = record.id,
                     .input = queries.run(info, record.info).transform(input_number)});
            }
        }
        return channels;
    });
}

input_state state_of(const snapshot::input_record& record, counted_queries& queries) {
    const auto part = [&](const char* name) { return query{"input", record.id, name}; };
    const auto info = queries.run(part("info"), record.info);
    input_state state{.capture = queries.run(part("resolution_unrotated"), "capture",
                                             record.resolution_unrotated),
                      .can_crop = info.transform(can_crop),
                      .crop = {},
                      .largest_crop = {}};
    if (state.can_crop.value_or(false)) {
        state.crop = queries.run(part("crop"), record.crop);
        // The getter's default, which a service may store as well.
        constexpr snapshot::pair32u none{0xFFFFFFFF, 0xFFFFFFFF};
        const auto largest = found<snapshot::pair32u>(*info, "crop.max");
        if (largest && *largest != none) {
            state.largest_crop = {.width = largest->first, .height = largest->second};
        }
    }
    return state;
}

std::vector<input> inputs_of(const snapshot::answers& answers, const outcome<std::uint32_t>& count,
                             const outcome<std::vector<input_channel>>& channels,
                             counted_queries& queries) {
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
                          .state = queries.open({"input", id}, answers.inputs)
                                       .transform([&](const snapshot::input_record& record) {
                                           return state_of(record, queries);
                                       })});
    }
    return inputs;
}

// --- Output -------------------------------------------------------------------------------------

hdmi_output hdmi_output_of(const snapshot::output_record& record, counted_queries& queries) {
    auto settings = queries.run({"output", record.id, "settings"}, record.settings);
    auto info = queries.run({"output", record.id, "info"}, record.info);
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

outcome<std::optional<hdmi_output>> output_of(const snapshot::answers& answers,
                                              counted_queries& queries) {
    const auto system = queries.run({"system"}, answers.system);
    if (!system) {
        return std::unexpected{system.error()};
    }
    const auto caps = queries.run({"system", {}, "caps"}, system->get().caps);
    if (!caps) {
        return std::unexpected{caps.error()};
    }
    if (!is_set(*caps, "output")) {
        return std::nullopt;
    }
    return queries.open({"output", 0}, answers.outputs)
        .transform([&](const snapshot::output_record& record) {
            return std::optional{hdmi_output_of(record, queries)};
        });
}

// Runs the queries whose answers no figure needs. They show that the service can be reached.
void run_other_queries(const snapshot::answers& answers, counted_queries& queries) {
    if (const auto mode = queries.run({"mode"}, answers.mode)) {
        std::ignore = queries.run({"mode", {}, "info"}, mode->get().info);
    }
    std::ignore = queries.open({"output", 0}, answers.outputs);
}

}  // namespace

device figures_of(const snapshot::loaded& loaded) {
    device figures{};
    if (!loaded) {
        figures.reached = std::unexpected(loaded.error());
        return figures;
    }
    const snapshot::answers& answers = **loaded;
    counted_queries queries;
    format_names formats(answers);
    figures.streams = streams_of(answers, formats, queries);
    figures.service =
        queries.run({"stream", {}, "debug"}, answers.stream_debug).transform(counters_of);
    figures.quota = queries.run({"stream", {}, "quota"}, answers.stream_quota).transform(quota_of);
    figures.stream_limit =
        queries.run({"stream", {}, "limit"}, answers.stream_limit).transform([](map_entries map) {
            return found_number(map, "global.max.streams.limit.encoded");
        });
    figures.channels = channels_of(answers, queries);
    figures.input_channels = input_channels_of(answers, queries);
    figures.input_count =
        queries.run({"channel", {}, "info"}, answers.channel_info).transform(input_count);
    figures.inputs = inputs_of(answers, figures.input_count, figures.input_channels, queries);
    figures.output = output_of(answers, queries);
    if (!queries.is_any_answered()) {
        run_other_queries(answers, queries);
    }
    if (!snapshot::is_answered(answers)) {
        figures.reached = std::unexpected(queries.first_failure());
    }
    figures.recorded = answers.recorded ? snapshot::seconds_of(*answers.recorded) : std::nullopt;
    figures.unanswered = std::move(queries).unanswered();
    figures.snapshot = *loaded;
    figures.names_of_codes = formats.made_up();
    return figures;
}

std::string reason::text() const {
    return message != nullptr ? message : snapshot::not_recorded(query);
}

outcome<const map_entries*> debug_of(const stream& stream) {
    const answer<map_entries>& debug = stream.record->debug;
    if (const auto* map = std::get_if<map_entries>(&debug)) {
        return map;
    }
    return std::unexpected(reason({"stream", stream.id, "debug"}, message_of(debug)));
}

outcome<std::optional<resolution>> size_of(const stream& stream) {
    return stream.settings.and_then(
        [&](const stream_settings& settings) -> outcome<std::optional<resolution>> {
            if (!settings.is_raw) {
                return found_size(std::get<map_entries>(stream.record->settings));
            }
            return stream.info.transform([&](const stream_info&) {
                return found_size(std::get<map_entries>(stream.record->info));
            });
        });
}

std::vector<std::string_view> clients_of(const stream& stream) {
    constexpr std::string_view keys[] = {"identity[0]", "identity[1]", "identity[2]",
                                         "identity[3]", "identity[4]", "identity[5]",
                                         "identity[6]", "identity[7]"};
    std::vector<std::string_view> clients;
    if (const auto* info = std::get_if<map_entries>(&stream.record->info)) {
        for (const std::string_view key : keys) {
            if (const auto name = found_text(*info, key)) {
                clients.push_back(*name);
            }
        }
    }
    return clients;
}

bool has_signal(const input& input) {
    return input.state && input.state->capture && *input.state->capture != resolution{};
}

figure in_use(const device& device, figure usage::* member) {
    if (device.streams) {
        for (const stream& stream : *device.streams) {
            const auto debug = debug_of(stream);
            const figure used = debug ? usage_of(**debug).*member : std::nullopt;
            if (used) {
                return used;
            }
        }
    }
    return device.service ? device.service->in_use.*member : std::nullopt;
}

}  // namespace snapshot_tool

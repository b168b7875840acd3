#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <format>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "snapshot_tool/command.h"
#include "snapshot_tool/description.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/figures.h"
#include "snapshot_tool/table.h"

namespace snapshot_tool {
namespace {

// --- Cells --------------------------------------------------------------------------------------

const table_cell not_given{.text = "-"};
const table_cell not_answered{.text = "?", .is_alarming = true};

template <class Value, class Write>
table_cell cell(const std::optional<Value>& value, Write write) {
    return value ? table_cell{.text = write(*value)} : not_given;
}

template <class Value, class Write>
table_cell cell(const outcome<Value>& outcome, Write write) {
    return outcome ? cell(std::optional{*outcome}, write) : not_answered;
}

template <class Value, class Write>
table_cell cell(const outcome<std::optional<Value>>& outcome, Write write) {
    return outcome ? cell(*outcome, write) : not_answered;
}

// Returns one member of an answer, or why there is no answer.
template <class Answer, class Part>
outcome<Part> part(const outcome<Answer>& answer, Part Answer::* member) {
    return answer.transform([&](const Answer& parts) { return parts.*member; });
}

std::string plain(std::uint32_t figure) {
    return std::to_string(figure);
}

// Returns what writes a text in at most this many columns.
auto text_of(std::size_t columns) {
    return [columns](std::string_view text) { return short_text(columns, text); };
}

template <class Value>
void add_failure(table& table, std::string_view query, const outcome<Value>& outcome) {
    if (!outcome) {
        table.add_failure(failure_text(query, outcome.error()));
    }
}

// --- Streams ------------------------------------------------------------------------------------

// Hours, minutes and seconds.
std::string run_time_text(std::int64_t microseconds) {
    const std::int64_t seconds = microseconds / 1'000'000;
    const std::int64_t length = seconds < 0 ? -seconds : seconds;
    return std::format("{}{:02}:{:02}:{:02}", seconds < 0 ? "-" : "", length / 3600,
                       length / 60 % 60, length % 60);
}

table_cell failed_frames_cell(const outcome<stream_info>& info) {
    table_cell frames = cell(part(info, &stream_info::failed_frames), plain);
    frames.is_alarming |= info && info->failed_frames.value_or(0) != 0;
    return frames;
}

table streams_table(const outcome<std::vector<stream>>& streams) {
    table rows({{"STREAM", align::right},
                {"IDENTITY", align::left},
                {"FORMAT", align::left},
                {"RESOLUTION", align::left},
                {"ASKED FPS", align::right},
                {"FPS", align::right},
                {"BIT RATE", align::right},
                {"RUN TIME", align::right},
                {"FRAMES", align::right},
                {"FAILED", align::right},
                {"CLIENTS", align::right}});
    add_failure(rows, "streams", streams);
    if (!streams) {
        return rows;
    }
    for (const stream& stream : *streams) {
        rows.add_row({{plain(stream.id)},
                      cell(part(stream.settings, &stream_settings::identity), text_of(24)),
                      cell(part(stream.settings, &stream_settings::format), text_of(16)),
                      cell(size_of(stream), resolution_text),
                      cell(part(stream.settings, &stream_settings::frame_rate), frame_rate_text),
                      cell(part(stream.info, &stream_info::frame_rate), plain),
                      cell(part(stream.info, &stream_info::bit_rate), bit_rate_text),
                      cell(part(stream.info, &stream_info::run_time), run_time_text),
                      cell(part(stream.info, &stream_info::frames), plain),
                      failed_frames_cell(stream.info),
                      cell(part(stream.info, &stream_info::clients), plain)});
        add_failure(rows, "settings", stream.settings);
        add_failure(rows, "info", stream.info);
        add_failure(rows, "debug", stream.in_use);
    }
    return rows;
}

// --- Quotas and limits --------------------------------------------------------------------------

std::string bytes_text(std::uint32_t bytes) {
    return bytes < 1U << 20 ? std::format("{:.1f} KiB", bytes / 1024.0)
                            : std::format("{:.1f} MiB", bytes / 1048576.0);
}

table_cell used_cell(figure used, const outcome<figure>& allowed) {
    if (!used || !allowed || allowed->value_or(0) == 0) {
        return not_given;
    }
    return {.text = std::format("{:.0f} %", 100.0 * *used / **allowed)};
}

table quotas_table(const device& device) {
    struct limit {
        const char* title;
        figure usage::* used;  // NULL if the service does not report it
        outcome<figure> allowed;
        outcome<figure> peak;
        std::string (*write)(std::uint32_t);
    };
    const outcome<figure> unknown = std::nullopt;
    const outcome<figure>& streams = device.stream_limit;
    const auto quota = [&](figure stream_quota::* member) { return part(device.quota, member); };
    const auto peak = [&](figure service_counters::* member) {
        return part(device.service, member);
    };
    const limit limits[] = {
        {"buffers, hard quota", &usage::capacity, quota(&stream_quota::hard),
         peak(&service_counters::capacity_peak), bytes_text},
        {"buffers, soft quota", &usage::capacity, quota(&stream_quota::soft),
         peak(&service_counters::capacity_peak), bytes_text},
        {"buffering quota", nullptr, quota(&stream_quota::buffering), unknown, plain},
        {"encoded streams", &usage::encoded_streams, streams,
         peak(&service_counters::encoded_streams_peak), plain},
        {"JPEG streams", &usage::jpeg_streams, unknown, unknown, plain},
        {"raw streams", &usage::raw_streams, streams, peak(&service_counters::raw_streams_peak),
         plain},
    };
    table rows({{"QUOTA OR LIMIT", align::left},
                {"IN USE", align::right},
                {"ALLOWED", align::right},
                {"USED", align::right},
                {"PEAK", align::right}});
    for (const auto& [title, member, allowed, most, write] : limits) {
        const figure used = member != nullptr ? in_use(device, member) : std::nullopt;
        const bool is_answered = member == nullptr || used || device.service;
        rows.add_row({{title},
                      is_answered ? cell(used, write) : not_answered,
                      cell(allowed, write),
                      used_cell(used, allowed),
                      cell(most, write)});
    }
    add_failure(rows, "quota", device.quota);
    add_failure(rows, "limit", device.stream_limit);
    add_failure(rows, "counters", device.service);
    return rows;
}

// --- Channels and inputs ------------------------------------------------------------------------

template <class Area, class Write>
table_cell crop_cell(const outcome<bool>& can_crop, const std::optional<outcome<Area>>& area,
                     Write write) {
    if (!can_crop || !*can_crop) {
        return can_crop ? not_given : not_answered;
    }
    return cell(*area, write);
}

table_cell crop_cell(const outcome<bool>& can_crop, const std::optional<outcome<rectangle>>& area) {
    if (can_crop && !*can_crop) {
        return {.text = "no"};
    }
    return crop_cell(can_crop, area, rectangle_text);
}

// Returns as many as fit, and the number of the others.
std::string resolutions_text(const std::vector<resolution>& resolutions) {
    constexpr std::size_t columns = 60;
    std::string text;
    for (std::size_t i = 0; i < resolutions.size(); ++i) {
        const std::string next = (i == 0 ? "" : ", ") + resolution_text(resolutions[i]);
        if (text.size() + next.size() > columns) {
            return text + std::format(" and {} more", resolutions.size() - i);
        }
        text += next;
    }
    return text.empty() ? "none" : text;
}

// Returns the number of the input whose pictures each channel shows, by the channel's id.
std::map<std::uint32_t, table_cell> source_cells(const std::vector<input_channel>& channels) {
    std::map<std::uint32_t, table_cell> cells;
    for (const input_channel& channel : channels) {
        cells.try_emplace(channel.id, cell(channel.input, plain));
    }
    return cells;
}

table channels_table(const device& device) {
    table rows({{"CHANNEL", align::right},
                {"INPUT", align::right},
                {"CROP", align::left},
                {"LARGEST CROP", align::left},
                {"RESOLUTIONS", align::left}});
    add_failure(rows, "channels", device.channels);
    if (!device.channels) {
        return rows;
    }
    const auto sources = device.input_channels.transform(source_cells);
    const auto source_cell = [&](std::uint32_t id) {
        if (!sources) {
            return not_answered;
        }
        const auto source = sources->find(id);
        return source != sources->end() ? source->second : not_given;
    };
    for (const channel& channel : *device.channels) {
        rows.add_row({{plain(channel.id)},
                      source_cell(channel.id),
                      crop_cell(channel.can_crop, channel.crop),
                      crop_cell(channel.can_crop, channel.largest_crop, resolution_text),
                      cell(channel.available, resolutions_text)});
        add_failure(rows, "info", channel.can_crop);
        if (channel.crop) {
            add_failure(rows, "crop", *channel.crop);
            add_failure(rows, "largest crop", *channel.largest_crop);
        }
        add_failure(rows, "resolutions", channel.available);
    }
    return rows;
}

table inputs_table(const device& device) {
    table rows({{"INPUT", align::right},
                {"CAPTURE", align::left},
                {"CROP", align::left},
                {"LARGEST CROP", align::left}});
    for (const input& input : device.inputs) {
        if (!input.state) {
            rows.add_row({{plain(input.id)}, not_answered, not_answered, not_answered});
            add_failure(rows, "input", input.state);
            continue;
        }
        const input_state& state = *input.state;
        rows.add_row({{plain(input.id)},
                      cell(state.capture, resolution_text),
                      crop_cell(state.can_crop, state.crop),
                      state.can_crop ? cell(state.largest_crop, resolution_text) : not_answered});
        add_failure(rows, "capture resolution", state.capture);
        add_failure(rows, "info", state.can_crop);
        if (state.crop) {
            add_failure(rows, "crop", *state.crop);
        }
    }
    add_failure(rows, "count of inputs", device.input_count);
    add_failure(rows, "channels of inputs", device.input_channels);
    if (device.input_channels) {
        for (const input_channel& channel : *device.input_channels) {
            add_failure(rows, std::format("input of channel {}", channel.id), channel.input);
        }
    }
    if (device.input_count.value_or(0) > most_inputs_counted) {
        rows.add_failure(std::format("{} inputs counted, asked for {}", *device.input_count,
                                     most_inputs_counted));
    }
    return rows;
}

// --- Output and identities ----------------------------------------------------------------------

table_cell output_state_cell(const hdmi_output& output) {
    if (output.settings && !output.settings->is_enabled) {
        return {.text = "disabled"};
    }
    if (!output.settings) {
        return not_answered;
    }
    return cell(part(output.info, &output_info::is_running),
                [](bool is_running) { return is_running ? "running" : "not running"; });
}

table output_table(const outcome<std::optional<hdmi_output>>& output) {
    table rows({{"HDMI OUTPUT", align::left},
                {"RESOLUTION", align::left},
                {"FPS", align::right},
                {"ASPECT RATIO", align::left},
                {"VIC", align::right},
                {"SIGNAL", align::left}});
    add_failure(rows, "output", output);
    if (output && *output) {
        const auto& [settings, info] = **output;
        rows.add_row({output_state_cell(**output),
                      cell(part(info, &output_info::size), resolution_text),
                      cell(part(info, &output_info::frame_rate), frame_rate_text),
                      cell(part(info, &output_info::aspect_ratio), text_of(12)),
                      cell(part(settings, &output_settings::vic), plain),
                      cell(part(info, &output_info::is_hdmi),
                           [](bool is_hdmi) { return is_hdmi ? "HDMI" : "DVI"; })});
        add_failure(rows, "settings", settings);
        add_failure(rows, "info", info);
    }
    return rows;
}

table identities_table(const outcome<service_counters>& counters) {
    table rows({{"IDENTITY", align::left}, {"STREAMS STARTED", align::right}});
    add_failure(rows, "counters", counters);
    if (!counters) {
        return rows;
    }
    for (const auto& [name, starts] : counters->identities) {
        rows.add_row({{short_text(80, name)}, cell(starts, plain)});
    }
    return rows;
}

// --- All tables ----------------------------------------------------------------------------------

bool has_colours() {
    const char* unwanted = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) == 1 && (unwanted == nullptr || *unwanted == '\0');
}

std::string describe(const device& device) {
    const bool colours = has_colours();
    std::string text;
    for (const table& table :
         {streams_table(device.streams), quotas_table(device), channels_table(device),
          inputs_table(device), output_table(device.output), identities_table(device.service)}) {
        text += text.empty() ? "" : "\n";
        text += table.text(colours);
    }
    return text;
}

int run(std::span<const char* const> arguments) {
    return print_description(arguments, describe);
}

}  // namespace

const command show{
    .name = "oru-snapshot show",
    .arguments = "[FILE]",
    .most_arguments = 1,
    .summary = "Prints the device as tables. Without FILE, queries the video service.",
    .example = "oru-snapshot show gate4.json",
    .manual = "oru-snapshot(1)",
    .run = run,
};

}  // namespace snapshot_tool

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <format>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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
table_cell cell(const std::optional<Value>& figure, Write write) {
    return figure ? table_cell{.text = write(*figure)} : not_given;
}

template <class Value, class Write>
table_cell cell(const outcome<Value>& answered, Write write) {
    return answered ? cell(std::optional{*answered}, write) : not_answered;
}

template <class Value, class Write>
table_cell cell(const outcome<std::optional<Value>>& answered, Write write) {
    return answered ? cell(*answered, write) : not_answered;
}

// Returns one figure of what was answered.
template <class Source, class Figure>
outcome<Figure> part(const outcome<Source>& from, Figure Source::* figure) {
    return from.transform([&](const Source& source) { return source.*figure; });
}

std::string plain(std::uint32_t figure) {
    return std::to_string(figure);
}

// For a cell of at most so many columns.
auto text_of(std::size_t columns) {
    return [columns](std::string_view text) { return short_text(columns, text); };
}

template <class Value>
void add_failure(table& to, std::string_view of, const outcome<Value>& asked) {
    if (!asked) {
        to.add_failure(failure_text(of, asked.error()));
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
    table_cell shown = cell(part(info, &stream_info::failed_frames), plain);
    shown.is_alarming |= info && info->failed_frames.value_or(0) != 0;
    return shown;
}

table streams_table(const outcome<std::vector<stream>>& streams) {
    table shown({{"STREAM", align::right},
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
    add_failure(shown, "streams", streams);
    if (!streams) {
        return shown;
    }
    for (const stream& of : *streams) {
        shown.add_row({{plain(of.id)},
                       cell(part(of.settings, &stream_settings::identity), text_of(24)),
                       cell(part(of.settings, &stream_settings::format), text_of(16)),
                       cell(size_of(of), resolution_text),
                       cell(part(of.settings, &stream_settings::frame_rate), frame_rate_text),
                       cell(part(of.info, &stream_info::frame_rate), plain),
                       cell(part(of.info, &stream_info::bit_rate), bit_rate_text),
                       cell(part(of.info, &stream_info::run_time), run_time_text),
                       cell(part(of.info, &stream_info::frames), plain),
                       failed_frames_cell(of.info),
                       cell(part(of.info, &stream_info::clients), plain)});
        add_failure(shown, "settings", of.settings);
        add_failure(shown, "info", of.info);
        add_failure(shown, "debug", of.in_use);
    }
    return shown;
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

table quotas_table(const device& of) {
    table shown({{"QUOTA OR LIMIT", align::left},
                 {"IN USE", align::right},
                 {"ALLOWED", align::right},
                 {"USED", align::right},
                 {"PEAK", align::right}});
    const auto add = [&](const char* name, figure usage::* used_figure,
                         const outcome<figure>& allowed, const outcome<figure>& peak, auto write) {
        const figure used = in_use(of, used_figure);
        shown.add_row({{name},
                       used || of.service ? cell(used, write) : not_answered,
                       cell(allowed, write),
                       used_cell(used, allowed),
                       cell(peak, write)});
    };
    const outcome<figure> unknown = std::nullopt;
    const auto capacity_peak = part(of.service, &service_counters::capacity_peak);
    add("buffers, hard quota", &usage::capacity, part(of.quota, &stream_quota::hard), capacity_peak,
        bytes_text);
    add("buffers, soft quota", &usage::capacity, part(of.quota, &stream_quota::soft), capacity_peak,
        bytes_text);
    shown.add_row({{"buffering quota"},
                   not_given,
                   cell(part(of.quota, &stream_quota::buffering), plain),
                   not_given,
                   not_given});
    add("encoded streams", &usage::encoded_streams, of.stream_limit,
        part(of.service, &service_counters::encoded_streams_peak), plain);
    add("JPEG streams", &usage::jpeg_streams, unknown, unknown, plain);
    add("raw streams", &usage::raw_streams, of.stream_limit,
        part(of.service, &service_counters::raw_streams_peak), plain);
    add_failure(shown, "quota", of.quota);
    add_failure(shown, "limit", of.stream_limit);
    add_failure(shown, "counters", of.service);
    return shown;
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

// As many as fit.
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

// The number of the input that a channel takes its pictures from.
table_cell source_cell(const channel& of, const outcome<std::vector<input_channel>>& sources) {
    if (!sources) {
        return not_answered;
    }
    for (const input_channel& source : *sources) {
        if (source.id == of.id) {
            return cell(source.input, plain);
        }
    }
    return not_given;
}

table channels_table(const device& from) {
    table shown({{"CHANNEL", align::right},
                 {"INPUT", align::right},
                 {"CROP", align::left},
                 {"LARGEST CROP", align::left},
                 {"RESOLUTIONS", align::left}});
    add_failure(shown, "channels", from.channels);
    if (!from.channels) {
        return shown;
    }
    for (const channel& of : *from.channels) {
        shown.add_row({{plain(of.id)},
                       source_cell(of, from.input_channels),
                       crop_cell(of.can_crop, of.crop),
                       crop_cell(of.can_crop, of.largest_crop, resolution_text),
                       cell(of.available, resolutions_text)});
        add_failure(shown, "info", of.can_crop);
        if (of.crop) {
            add_failure(shown, "crop", *of.crop);
            add_failure(shown, "largest crop", *of.largest_crop);
        }
        add_failure(shown, "resolutions", of.available);
    }
    return shown;
}

table inputs_table(const device& of) {
    table shown({{"INPUT", align::right},
                 {"CAPTURE", align::left},
                 {"CROP", align::left},
                 {"LARGEST CROP", align::left}});
    for (const input& shown_input : of.inputs) {
        if (!shown_input.state) {
            shown.add_row({{plain(shown_input.id)}, not_answered, not_answered, not_answered});
            add_failure(shown, "input", shown_input.state);
            continue;
        }
        const input_state& state = *shown_input.state;
        shown.add_row({{plain(shown_input.id)},
                       cell(state.capture, resolution_text),
                       crop_cell(state.can_crop, state.crop),
                       state.can_crop ? cell(state.largest_crop, resolution_text) : not_answered});
        add_failure(shown, "capture resolution", state.capture);
        add_failure(shown, "info", state.can_crop);
        if (state.crop) {
            add_failure(shown, "crop", *state.crop);
        }
    }
    add_failure(shown, "count of inputs", of.input_count);
    add_failure(shown, "channels of inputs", of.input_channels);
    if (of.input_channels) {
        for (const input_channel& from : *of.input_channels) {
            add_failure(shown, std::format("input of channel {}", from.id), from.input);
        }
    }
    if (of.input_count.value_or(0) > most_inputs_counted) {
        shown.add_failure(
            std::format("{} inputs counted, asked for {}", *of.input_count, most_inputs_counted));
    }
    return shown;
}

// --- Output and identities ----------------------------------------------------------------------

table_cell output_state_cell(const hdmi_output& of) {
    if (of.settings && !of.settings->is_enabled) {
        return {.text = "disabled"};
    }
    if (!of.settings) {
        return not_answered;
    }
    return cell(part(of.info, &output_info::is_running),
                [](bool is_running) { return is_running ? "running" : "not running"; });
}

table output_table(const outcome<std::optional<hdmi_output>>& output) {
    table shown({{"HDMI OUTPUT", align::left},
                 {"RESOLUTION", align::left},
                 {"FPS", align::right},
                 {"ASPECT RATIO", align::left},
                 {"VIC", align::right},
                 {"SIGNAL", align::left}});
    add_failure(shown, "output", output);
    if (output && *output) {
        const auto& [settings, info] = **output;
        shown.add_row({output_state_cell(**output),
                       cell(part(info, &output_info::size), resolution_text),
                       cell(part(info, &output_info::frame_rate), frame_rate_text),
                       cell(part(info, &output_info::aspect_ratio), text_of(12)),
                       cell(part(settings, &output_settings::vic), plain),
                       cell(part(info, &output_info::is_hdmi),
                            [](bool is_hdmi) { return is_hdmi ? "HDMI" : "DVI"; })});
        add_failure(shown, "settings", settings);
        add_failure(shown, "info", info);
    }
    return shown;
}

table identities_table(const outcome<service_counters>& counters) {
    table shown({{"IDENTITY", align::left}, {"STREAMS STARTED", align::right}});
    add_failure(shown, "counters", counters);
    if (!counters) {
        return shown;
    }
    for (const auto& [name, starts] : counters->identities) {
        shown.add_row({{short_text(80, name)}, cell(starts, plain)});
    }
    return shown;
}

// --- All of it ----------------------------------------------------------------------------------

bool has_colours() {
    const char* unwanted = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) == 1 && (unwanted == nullptr || *unwanted == '\0');
}

std::string describe(const device& of) {
    const bool colours = has_colours();
    std::string text;
    for (const table& shown :
         {streams_table(of.streams), quotas_table(of), channels_table(of), inputs_table(of),
          output_table(of.output), identities_table(of.service)}) {
        text += text.empty() ? "" : "\n";
        text += shown.text(colours);
    }
    return text;
}

}  // namespace

std::optional<int> show(int argc, char** argv) {
    return print_description(argc, argv, describe);
}

}  // namespace snapshot_tool

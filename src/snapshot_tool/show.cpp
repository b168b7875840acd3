#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <format>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "snapshot/printable.h"
#include "snapshot_tool/colour.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/description.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/figures.h"
#include "snapshot_tool/heading.h"
#include "snapshot_tool/page.h"
#include "snapshot_tool/problems.h"
#include "snapshot_tool/stream_details.h"
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

template <class Value>
void add_failure(table& table, std::string_view query, const outcome<Value>& outcome) {
    if (!outcome) {
        table.add_failure(failure_text(query, outcome.error().text()));
    }
}

// --- Streams ------------------------------------------------------------------------------------

// Hours, minutes and seconds.
std::string run_time_text(std::int64_t microseconds) {
    const std::int64_t seconds = microseconds / 1'000'000;
    const std::int64_t length = seconds < 0 ? -seconds : seconds;
    std::string text = seconds < 0 ? "-" : "";
    text += length < 36'000 ? "0" : "";
    text += std::to_string(length / 3600);
    for (const std::int64_t part : {length / 60 % 60, length % 60}) {
        text += part < 10 ? ":0" : ":";
        text += std::to_string(part);
    }
    return text;
}

std::string kilobits_text(std::uint32_t bits) {
    return std::to_string((std::uint64_t{bits} + 500) / 1000);
}

// Returns the frame rate that is reached, and the one that was requested: "24/25".
table_cell frame_rates_cell(const stream& stream) {
    const table_cell reached = cell(part(stream.info, &stream_info::frame_rate), plain);
    const table_cell asked =
        cell(part(stream.settings, &stream_settings::frame_rate), frame_rate_text);
    return {.text = reached.text == asked.text && reached.text.size() == 1 &&
                            (reached.text == "-" || reached.text == "?")
                        ? reached.text
                        : reached.text + '/' + asked.text,
            .is_alarming = reached.is_alarming || asked.is_alarming || is_slow(stream)};
}

table_cell failed_frames_cell(const stream& stream) {
    table_cell frames = cell(part(stream.info, &stream_info::failed_frames), plain);
    frames.is_alarming |= fails_frames(stream);
    return frames;
}

table streams_table(const device& device, const listed_numbers& listed, const page_style& style) {
    table rows(style, {{.title = "STREAM", .is_whole = true},
                       {.title = "IDENTITY", .side = align::left},
                       {.title = "FORMAT", .side = align::left},
                       {.title = "SIZE", .side = align::left},
                       {.title = "FPS"},
                       {.title = "KBIT/S"},
                       {.title = "TIME"},
                       {.title = "FRAMES", .is_wide = true},
                       {.title = "FAIL"},
                       {.title = "CLIENTS", .is_wide = true},
                       {.title = "CHANNEL", .is_wide = true}});
    add_failure(rows, "streams", device.streams);
    if (!device.streams) {
        return rows;
    }
    for (const stream& stream : *device.streams) {
        rows.add_row(has_problem(stream, listed),
                     {{plain(stream.id)},
                      cell(part(stream.settings, &stream_settings::identity), whole_text),
                      cell(part(stream.settings, &stream_settings::format), whole_text),
                      cell(size_of(stream), resolution_text),
                      frame_rates_cell(stream),
                      cell(part(stream.info, &stream_info::bit_rate), kilobits_text),
                      cell(part(stream.info, &stream_info::run_time), run_time_text),
                      cell(part(stream.info, &stream_info::frames), plain),
                      failed_frames_cell(stream),
                      cell(part(stream.info, &stream_info::clients), plain),
                      cell(part(stream.info, &stream_info::channel), plain)});
        add_failure(rows, "settings", stream.settings);
        add_failure(rows, "info", stream.info);
        add_failure(rows, "debug", debug_of(stream));
    }
    return rows;
}

// --- Quotas and limits --------------------------------------------------------------------------

struct limit {
    const char* title;
    figure usage::* used;  // NULL if the service does not report it
    outcome<figure> allowed;
    outcome<figure> peak;
};

table_cell used_cell(figure used, const outcome<figure>& allowed) {
    if (!used || !allowed || allowed->value_or(0) == 0) {
        return not_given;
    }
    return {.text = std::to_string((std::uint64_t{*used} * 200 / **allowed + 1) / 2) + '%',
            .is_alarming = is_nearly_used_up(used, allowed)};
}

// Adds a row for a limit on what is in use, in figures that `write` writes.
void add_limit(table& rows, const device& device, const limit& limit,
               std::string (*write)(std::uint32_t)) {
    const auto& [title, member, allowed, peak] = limit;
    const figure used = member != nullptr ? in_use(device, member) : std::nullopt;
    const bool is_answered = member == nullptr || used || device.service;
    const table_cell share = used_cell(used, allowed);
    rows.add_row(share.is_alarming || !is_answered || !allowed || !peak,
                 {{title},
                  is_answered ? cell(used, write) : not_answered,
                  cell(allowed, write),
                  share,
                  cell(peak, write)});
}

table buffers_table(const device& device, const page_style& style) {
    table rows(style, {{.title = "BUFFERS", .side = align::left},
                       {.title = "USED MIB"},
                       {.title = "QUOTA MIB"},
                       {.title = "USE%"},
                       {.title = "PEAK MIB"}});
    const auto peak = part(device.service, &service_counters::capacity_peak);
    add_limit(rows, device,
              {"hard", &usage::capacity, part(device.quota, &stream_quota::hard), peak},
              mebibytes_text);
    add_limit(rows, device,
              {"soft", &usage::capacity, part(device.quota, &stream_quota::soft), peak},
              mebibytes_text);
    add_failure(rows, "quota", device.quota);
    return rows;
}

table limits_table(const device& device, const page_style& style) {
    table rows(style, {{.title = "LIMIT", .side = align::left},
                       {.title = "USED"},
                       {.title = "LIMIT"},
                       {.title = "USE%"},
                       {.title = "PEAK"}});
    const outcome<figure> unknown = std::nullopt;
    const auto peak = [&](figure service_counters::* member) {
        return part(device.service, member);
    };
    for (const limit& limit :
         {limit{"encoded streams", &usage::encoded_streams, device.stream_limit,
                peak(&service_counters::encoded_streams_peak)},
          limit{"JPEG streams", &usage::jpeg_streams, unknown, unknown},
          limit{"raw streams", &usage::raw_streams, device.stream_limit,
                peak(&service_counters::raw_streams_peak)},
          limit{"buffering", nullptr, part(device.quota, &stream_quota::buffering), unknown}}) {
        add_limit(rows, device, limit, plain);
    }
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

// Returns what writes all resolutions if the page is wide or they are few, otherwise the first and
// the number of the others.
auto resolutions_text(const page_style& style) {
    return [is_wide = style.is_wide](std::span<const resolution> resolutions) {
        constexpr std::size_t most = 40;  // columns
        constexpr std::size_t most_with_others = 28;
        std::string text;
        std::string first;
        std::size_t first_count = 0;
        for (const resolution& resolution : resolutions) {
            text += (text.empty() ? "" : ", ") + resolution_text(resolution);
            if (!is_wide && text.size() > most) {
                return first + std::format(" and {} more", resolutions.size() - first_count);
            }
            if (text.size() <= most_with_others) {
                first = text;
                ++first_count;
            }
        }
        return text.empty() ? "none" : text;
    };
}

// Returns the inputs of channels by the channel's id.
std::map<std::uint32_t, outcome<std::uint32_t>> inputs_of_channels(
    const std::vector<input_channel>& channels) {
    std::map<std::uint32_t, outcome<std::uint32_t>> inputs;
    for (const input_channel& channel : channels) {
        inputs.try_emplace(channel.id, channel.input);
    }
    return inputs;
}

table channels_table(const device& device, const listed_numbers& listed, const page_style& style) {
    table rows(style, {{.title = "CHANNEL", .is_whole = true},
                       {.title = "INPUT"},
                       {.title = "CROP", .side = align::left},
                       {.title = "MAX CROP", .side = align::left, .is_wide = true},
                       {.title = "SIZES", .side = align::left}});
    add_failure(rows, "channels", device.channels);
    if (!device.channels) {
        return rows;
    }
    const auto inputs = device.input_channels.transform(inputs_of_channels);
    for (const channel& channel : *device.channels) {
        table_cell input = inputs ? not_given : not_answered;
        bool is_listed = true;
        if (inputs) {
            if (const auto found = inputs->find(channel.id); found != inputs->end()) {
                input = cell(found->second, plain);
                is_listed = !found->second || listed.has_input(*found->second);
            }
        }
        input.is_alarming |= !is_listed;
        rows.add_row(has_problem(channel) || !is_listed,
                     {{plain(channel.id)},
                      input,
                      crop_cell(channel.can_crop, channel.crop),
                      crop_cell(channel.can_crop, channel.largest_crop, resolution_text),
                      cell(channel.available, resolutions_text(style))});
        add_failure(rows, "info", channel.can_crop);
        if (channel.crop) {
            add_failure(rows, "crop", *channel.crop);
            add_failure(rows, "largest crop", *channel.largest_crop);
        }
        add_failure(rows, "resolutions", channel.available);
    }
    return rows;
}

table inputs_table(const device& device, const page_style& style) {
    table rows(style, {{.title = "INPUT", .is_whole = true},
                       {.title = "SIZE", .side = align::left},
                       {.title = "CROP", .side = align::left},
                       {.title = "MAX CROP", .side = align::left, .is_wide = true}});
    for (const input& input : device.inputs) {
        if (!input.state) {
            rows.add_row(true, {{plain(input.id)}, not_answered, not_answered, not_answered});
            add_failure(rows, "input", input.state);
            continue;
        }
        const input_state& state = *input.state;
        table_cell size = cell(state.capture, resolution_text);
        size.is_alarming |= !has_signal(input);
        rows.add_row(has_problem(input),
                     {{plain(input.id)},
                      size,
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
        rows.add_failure(std::format("only {} of {} inputs were queried", most_inputs_counted,
                                     *device.input_count));
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

table output_table(const outcome<std::optional<hdmi_output>>& output, const page_style& style) {
    table rows(style, {{.title = "OUTPUT", .side = align::left},
                       {.title = "SIZE", .side = align::left},
                       {.title = "FPS"},
                       {.title = "ASPECT", .side = align::left},
                       {.title = "VIC"},
                       {.title = "SIGNAL", .side = align::left}});
    add_failure(rows, "output", output);
    if (output && *output) {
        const auto& [settings, info] = **output;
        rows.add_row(
            !settings || !info,
            {output_state_cell(**output), cell(part(info, &output_info::size), resolution_text),
             cell(part(info, &output_info::frame_rate), frame_rate_text),
             cell(part(info, &output_info::aspect_ratio), whole_text),
             cell(part(settings, &output_settings::vic), plain),
             cell(part(info, &output_info::is_hdmi),
                  [](bool is_hdmi) { return is_hdmi ? "HDMI" : "DVI"; })});
        add_failure(rows, "settings", settings);
        add_failure(rows, "info", info);
    }
    return rows;
}

table identities_table(const outcome<service_counters>& counters, const page_style& style) {
    table rows(style, {{.title = "IDENTITY", .side = align::left}, {.title = "STARTS"}});
    add_failure(rows, "counters", counters);
    if (!counters) {
        return rows;
    }
    for (const auto& [name, starts] : counters->identities) {
        rows.add_row(false, {{whole_text(name)}, cell(starts, plain)});
    }
    return rows;
}

// --- The page ------------------------------------------------------------------------------------

// Returns such as "4 streams"; "? streams" if the query failed.
std::string count_text(const outcome<std::size_t>& count, std::string_view what) {
    return (count ? std::to_string(*count) : "?") + ' ' + std::string(what) +
           (count == std::size_t{1} ? "" : "s");
}

void add_counts(page& page, const device& device) {
    const auto size = [](const auto& list) { return list.size(); };
    page.add("", count_text(device.streams.transform(size), "stream") + ", " +
                     count_text(device.channels.transform(size), "channel") + ", " +
                     count_text(device.input_count.transform(
                                    [&](std::uint32_t) { return device.inputs.size(); }),
                                "input") +
                     ", " +
                     count_text(device.output.transform([](const auto& output) {
                         return output ? std::size_t{1} : std::size_t{0};
                     }),
                                "output"));
}

// Adds the first `most` problems, and how many more there are.
void add_problems(page& page, const std::vector<std::string>& problems, std::size_t most) {
    if (problems.empty()) {
        page.add("", "no problems found");
    }
    for (std::size_t i = 0; i < problems.size() && i < most; ++i) {
        page.add("! ", problems[i], true);
    }
    if (problems.size() > most) {
        page.add("  ", std::format("… and {} more", problems.size() - most), true);
    }
}

void add_tables(page& page, const device& device) {
    const listed_numbers listed(device);
    const page_style& style = page.style();
    // One after the other: each takes the memory of the one before.
    const auto add = [&](const table& table) {
        page.end_line();
        table.print(page);
    };
    add(streams_table(device, listed, style));
    add(buffers_table(device, style));
    add(limits_table(device, style));
    add(channels_table(device, listed, style));
    add(inputs_table(device, style));
    add(output_table(device.output, style));
    add(identities_table(device.service, style));
}

// --- The command ---------------------------------------------------------------------------------

gboolean is_wide = FALSE;
gboolean is_problems_only = FALSE;
char** stream_ids = nullptr;

const GOptionEntry show_options[] = {
    {"wide", 'w', 0, G_OPTION_ARG_NONE, &is_wide, "Show all columns and whole texts", nullptr},
    {"problems", 0, 0, G_OPTION_ARG_NONE, &is_problems_only,
     "Show only what is wrong; status 0 if nothing is, otherwise 1", nullptr},
    {"stream", 0, 0, G_OPTION_ARG_FILENAME_ARRAY, static_cast<void*>(&stream_ids),
     "Show only this stream, in full; may be repeated", "ID"},
    colour_option,
};

// Returns a stream's id from a decimal number, or a hexadecimal one after "0x".
std::uint32_t read_id(std::string_view text) {
    const bool is_hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = text.substr(is_hexadecimal ? 2 : 0);
    std::uint32_t id = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), id, is_hexadecimal ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        throw command_line::wrong_usage("'" + snapshot::printable(text) +
                                        "' is not the id of a stream");
    }
    return id;
}

[[noreturn]] void reject_unknown(std::uint32_t id, const std::vector<stream>& streams) {
    constexpr std::size_t most = 20;
    std::string text = std::format("no stream {}", id);
    for (std::size_t i = 0; i < streams.size() && i < most; ++i) {
        text += (i == 0 ? ": there are " : ", ") + std::to_string(streams[i].id);
    }
    if (streams.empty()) {
        text += ": there are none";
    } else if (streams.size() > most) {
        text += std::format(" and {} more", streams.size() - most);
    }
    throw std::runtime_error(text);
}

void add_chosen_streams(page& page, const device& device, const std::vector<std::uint32_t>& ids) {
    if (!device.streams) {
        throw std::runtime_error(failure_text("streams", device.streams.error().text()));
    }
    for (const std::uint32_t id : ids) {
        if (!std::ranges::contains(*device.streams, id, &stream::id)) {
            reject_unknown(id, *device.streams);
        }
    }
    for (const std::uint32_t id : ids) {
        for (const stream& stream : *device.streams) {
            if (stream.id == id) {
                page.end_line();
                add_details(page, device, stream);
            }
        }
    }
}

int print_tables(std::span<const char* const> arguments) {
    const page_style style{.is_wide = is_wide != FALSE, .has_colours = has_colours()};
    std::vector<std::uint32_t> ids;
    for (char** text = stream_ids; text != nullptr && *text != nullptr; ++text) {
        ids.push_back(read_id(*text));
    }
    if (is_problems_only != FALSE) {
        if (!ids.empty()) {
            throw command_line::wrong_usage("--problems and --stream exclude each other");
        }
        failure_status = 2;
    }

    const description description = take_description(arguments);
    page page(style, stdout);
    int status = 0;
    if (is_problems_only != FALSE) {
        const std::vector<std::string> problems = problems_of(description.device);
        add_problems(page, problems, problems.size());
        status = problems.empty() ? 0 : 1;
    } else {
        add_heading(page, description.heading);
        if (!ids.empty()) {
            add_chosen_streams(page, description.device, ids);
        } else {
            add_counts(page, description.device);
            add_problems(page, problems_of(description.device), 20);
            add_tables(page, description.device);
        }
    }
    page.flush();
    return finish(status);
}

}  // namespace

const command show{
    .name = "oru-snapshot show",
    .arguments = "[FILE]",
    .most_arguments = 1,
    .summary = "Prints the device as tables. Without FILE, queries the video service.",
    .example = "oru-snapshot show gate4.json",
    .manual = "oru-snapshot(1)",
    .options = show_options,
    .run = print_tables,
};

}  // namespace snapshot_tool

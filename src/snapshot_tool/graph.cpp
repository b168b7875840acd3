#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <format>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "snapshot/printable.h"
#include "snapshot_tool/columns.h"
#include "snapshot_tool/description.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/figures.h"

namespace snapshot_tool {
namespace {

// --- The language -------------------------------------------------------------------------------

// The four columns, their titles in one line.
constexpr std::string_view head = R"(digraph device {
    graph [rankdir=LR, bgcolor=white, pad=0.3, nodesep=0.25, ranksep=0.9]
    node [fontname="Helvetica,Arial,sans-serif", fontsize=12]
    edge [color="#6b7280", arrowsize=0.7]

    node [shape=plaintext, fontcolor="#4b5563"]
    inputs [label="INPUTS"]
    channels [label="CHANNELS"]
    streams [label="STREAMS"]
    clients [label="CLIENTS"]
    inputs -> channels -> streams -> clients [style=invis, weight=1000]

    node [shape=box, style="rounded,filled", margin="0.16,0.08", fontcolor="#1f2937"]
)";

constexpr std::string_view plain;
// What is wrong is red, and drawn so that it is seen without colours too.
constexpr std::string_view worrying = R"(, penwidth=2.5, color="#b91c1c")";
constexpr std::string_view failed =
    R"(, style="rounded,filled,dashed", penwidth=2.5, color="#b91c1c", fillcolor="#fee2e2")";
constexpr std::string_view unlisted = R"(, style="rounded,dashed")";
constexpr std::string_view not_a_client = R"(, color="#a16207", fillcolor="#fef9c3")";

struct box {
    std::string name;
    std::vector<std::string> lines;  // as they came, printable or not
    std::string_view style = plain;

    template <class Value>
    void add_failure(std::string_view of, const outcome<Value>& asked) {
        if (!asked) {
            lines.push_back(failure_text(of, asked.error()));
            style = failed;
        }
    }
};

// Returns the box that stands for a whole list.
template <class Value>
box failed_box(std::string name, std::string_view of, const outcome<Value>& asked) {
    box drawn{.name = std::move(name), .lines = {}};
    drawn.add_failure(of, asked);
    return drawn;
}

// The longest line of a box.
constexpr std::size_t line_columns = 60;

// Returns the lines as one quoted text. A backslash begins an escape in it, an ampersand an entity.
std::string quoted(const std::vector<std::string>& lines) {
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        text += i == 0 ? "" : "\\n";
        for (const char byte : cut_to(line_columns, snapshot::printable(lines[i]))) {
            if (byte == '"' || byte == '\\') {
                text += '\\';
            }
            text += byte;
            if (byte == '&') {
                text += "amp;";
            }
        }
    }
    return '"' + text + '"';
}

std::string arrow(std::string_view from, std::string_view to) {
    return std::format("    {} -> {}\n", from, to);
}

// Returns a column: the boxes below its title, in their order, which unseen arrows keep.
std::string column(std::string_view title, std::string_view line, std::string_view inside,
                   const std::vector<box>& boxes) {
    std::string text = "\n    {\n        rank=same\n";
    text += std::format("        node [color=\"{}\", fillcolor=\"{}\"]\n", line, inside);
    for (const box& drawn : boxes) {
        text +=
            std::format("        {} [label={}{}]\n", drawn.name, quoted(drawn.lines), drawn.style);
    }
    text += std::format("        {}", title);
    for (const box& drawn : boxes) {
        text += " -> " + drawn.name;
    }
    return text + " [style=invis]\n    }\n";
}

// --- Inputs and channels ------------------------------------------------------------------------

std::string input_name(std::uint32_t id) {
    return std::format("input_{}", id);
}

std::string channel_name(std::uint32_t id) {
    return std::format("channel_{}", id);
}

box input_box(const input& of) {
    box drawn{.name = input_name(of.id), .lines = {std::format("input {}", of.id)}};
    drawn.add_failure("input", of.state);
    if (of.state) {
        if (of.state->capture) {
            drawn.lines.push_back(resolution_text(*of.state->capture));
        }
        drawn.add_failure("capture resolution", of.state->capture);
        drawn.add_failure("info", of.state->can_crop);
    }
    return drawn;
}

std::vector<box> input_boxes(const device& of) {
    std::vector<box> boxes;
    boxes.reserve(of.inputs.size());
    for (const input& from : of.inputs) {
        boxes.push_back(input_box(from));
    }
    if (!of.input_count) {
        boxes.push_back(failed_box("input_count", "count of inputs", of.input_count));
    }
    if (!of.input_channels) {
        boxes.push_back(failed_box("input_channels", "channels of inputs", of.input_channels));
    }
    return boxes;
}

box channel_box(const channel& of) {
    box drawn{.name = channel_name(of.id), .lines = {std::format("channel {}", of.id)}};
    if (of.crop && *of.crop) {
        drawn.lines.push_back("crop " + rectangle_text(**of.crop));
    }
    if (of.available) {
        const std::size_t count = of.available->size();
        drawn.lines.push_back(std::format("{} resolution{}", count, count == 1 ? "" : "s"));
    }
    drawn.add_failure("info", of.can_crop);
    if (of.crop) {
        drawn.add_failure("crop", *of.crop);
    }
    drawn.add_failure("resolutions", of.available);
    return drawn;
}

// Returns the channels by their ids, those among them that are not in the list but that an input or
// a stream is said to have.
std::vector<box> channel_boxes(const device& of, const std::vector<const stream*>& streams) {
    std::map<std::uint32_t, box> boxes;
    if (of.channels) {
        for (const channel& from : *of.channels) {
            boxes.try_emplace(from.id, channel_box(from));
        }
    }
    const auto add_unlisted = [&](std::uint32_t id) {
        boxes.try_emplace(id, box{.name = channel_name(id),
                                  .lines = {std::format("channel {}", id), "not in the list"},
                                  .style = unlisted});
    };
    if (of.input_channels) {
        for (const input_channel& from : *of.input_channels) {
            add_unlisted(from.id);
        }
    }
    for (const stream* from : streams) {
        if (from->info && from->info->channel) {
            add_unlisted(*from->info->channel);
        }
    }
    std::vector<box> all;
    if (!of.channels) {
        all.push_back(failed_box("channel_list", "channels", of.channels));
    }
    for (auto& [id, drawn] : boxes) {
        all.push_back(std::move(drawn));
    }
    return all;
}

std::string arrows_of_inputs(const device& of) {
    std::string text;
    if (of.input_channels) {
        for (const input_channel& to : *of.input_channels) {
            if (to.input) {
                text += arrow(input_name(*to.input), channel_name(to.id));
            }
        }
    }
    return text;
}

// --- Streams ------------------------------------------------------------------------------------

// A stream's id may be there twice.
std::string stream_name(std::size_t index) {
    return std::format("stream_{}", index);
}

// Returns the streams of one channel after those of another, so that fewer arrows cross.
std::vector<const stream*> ordered_streams(const device& of) {
    std::vector<const stream*> streams;
    if (of.streams) {
        for (const stream& from : *of.streams) {
            streams.push_back(&from);
        }
    }
    const auto place = [](const stream* from) {
        const figure channel = from->info ? from->info->channel : std::nullopt;
        return std::pair{!channel.has_value(), channel.value_or(0)};
    };
    std::ranges::stable_sort(streams, {}, place);
    return streams;
}

// Such as "25 fps", or "24 of 25 fps" when not all that are asked for are reached.
std::string frame_rates_text(figure reached, const std::optional<double>& asked) {
    std::string text = reached ? std::to_string(*reached) : "";
    if (asked && frame_rate_text(*asked) != text) {
        text += (text.empty() ? "" : " of ") + frame_rate_text(*asked);
    }
    return text.empty() ? "" : text + " fps";
}

// Adds a line of the texts that are not empty, if there is one.
void add_line(box& to, const std::string& first, const std::string& second) {
    if (!first.empty() || !second.empty()) {
        to.lines.push_back(first + (first.empty() || second.empty() ? "" : ", ") + second);
    }
}

box stream_box(const stream& of, std::size_t index) {
    const stream_info info = of.info.value_or(stream_info{});
    const stream_settings settings = of.settings.value_or(stream_settings{});
    box drawn{.name = stream_name(index), .lines = {std::format("stream {}", of.id)}};
    if (settings.format) {
        drawn.lines.front() += ": " + *settings.format;
    }
    const auto size = size_of(of).value_or(std::nullopt);
    add_line(drawn, size ? resolution_text(*size) : "",
             frame_rates_text(info.frame_rate, settings.frame_rate));
    add_line(drawn, info.bit_rate ? bit_rate_text(*info.bit_rate) : "", "");
    if (info.failed_frames.value_or(0) != 0) {
        drawn.lines.push_back(std::format("{} failed frames", *info.failed_frames));
        drawn.style = worrying;
    }
    drawn.add_failure("settings", of.settings);
    drawn.add_failure("info", of.info);
    return drawn;
}

std::vector<box> stream_boxes(const device& of, const std::vector<const stream*>& streams) {
    std::vector<box> boxes;
    if (!of.streams) {
        boxes.push_back(failed_box("stream_list", "streams", of.streams));
    }
    for (std::size_t i = 0; i < streams.size(); ++i) {
        boxes.push_back(stream_box(*streams[i], i));
    }
    return boxes;
}

// --- Clients and the output ---------------------------------------------------------------------

box client_box(std::size_t index, const std::string& identity, figure starts) {
    box drawn{.name = std::format("client_{}", index),
              .lines = {short_text(line_columns, identity)}};
    if (starts) {
        drawn.lines.push_back(std::format("{} stream{} started", *starts, *starts == 1 ? "" : "s"));
    }
    return drawn;
}

box output_box(const hdmi_output& of) {
    const auto& [settings, info] = of;
    box drawn{.name = "output", .lines = {"HDMI output"}, .style = not_a_client};
    if (settings && !settings->is_enabled) {
        add_line(drawn, "disabled", "");
    } else if (info && !info->is_running) {
        add_line(drawn, "not running", "");
    } else if (info) {
        add_line(drawn, info->size ? resolution_text(*info->size) : "",
                 frame_rates_text(std::nullopt, info->frame_rate));
    }
    drawn.add_failure("settings", settings);
    drawn.add_failure("info", info);
    return drawn;
}

// --- All of it ----------------------------------------------------------------------------------

std::string describe(const device& of) {
    const std::vector<const stream*> streams = ordered_streams(of);

    std::map<std::string, figure> starts;
    if (of.service) {
        for (const identity& known : of.service->identities) {
            starts.emplace(known.name, known.starts);
        }
    }
    std::string arrows = arrows_of_inputs(of);
    std::vector<box> clients;
    std::map<std::string, std::size_t> places;  // of the identities among the clients
    for (std::size_t i = 0; i < streams.size(); ++i) {
        const stream_info info = streams[i]->info.value_or(stream_info{});
        if (info.channel) {
            arrows += arrow(channel_name(*info.channel), stream_name(i));
        }
        for (const std::string& client : info.client_identities) {
            const auto [place, is_new] = places.try_emplace(client, clients.size());
            if (is_new) {
                clients.push_back(client_box(place->second, client, starts[client]));
            }
            arrows += arrow(stream_name(i), clients[place->second].name);
        }
    }
    if (!of.service) {
        clients.push_back(failed_box("counters", "counters", of.service));
    }
    if (!of.output) {
        clients.push_back(failed_box("output", "HDMI output", of.output));
    } else if (*of.output) {
        clients.push_back(output_box(**of.output));
    }

    return std::string{head} + column("inputs", "#15803d", "#dcfce7", input_boxes(of)) +
           column("channels", "#0e7490", "#cffafe", channel_boxes(of, streams)) +
           column("streams", "#1d4ed8", "#dbeafe", stream_boxes(of, streams)) +
           column("clients", "#6d28d9", "#ede9fe", clients) + "\n" + arrows + "}\n";
}

}  // namespace

std::optional<int> graph(int argc, char** argv) {
    return print_description(argc, argv, describe);
}

}  // namespace snapshot_tool

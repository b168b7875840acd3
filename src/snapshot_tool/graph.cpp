#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <format>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "snapshot/printable.h"
#include "snapshot_tool/columns.h"
#include "snapshot_tool/command.h"
#include "snapshot_tool/description.h"
#include "snapshot_tool/device.h"
#include "snapshot_tool/figures.h"
#include "snapshot_tool/heading.h"

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

constexpr std::string_view healthy;
// Problems are red, and also visible without colours.
constexpr std::string_view worrying = R"(, penwidth=2.5, color="#b91c1c")";
constexpr std::string_view failed =
    R"(, style="rounded,filled,dashed", penwidth=2.5, color="#b91c1c", fillcolor="#fee2e2")";
constexpr std::string_view unlisted = R"(, style="rounded,dashed")";
constexpr std::string_view not_a_client = R"(, color="#a16207", fillcolor="#fef9c3")";

struct box {
    std::string name;
    std::vector<std::string> lines;  // not yet printable
    std::string_view style = healthy;

    template <class Value>
    void add_failure(std::string_view query, const outcome<Value>& outcome) {
        if (!outcome) {
            lines.push_back(failure_text(query, outcome.error().text()));
            style = failed;
        }
    }
};

// Returns the box in place of a whole list; none if the list is there.
template <class Value>
std::vector<box> failed_boxes(std::string name, std::string_view query,
                              const outcome<Value>& outcome) {
    box failure{.name = std::move(name), .lines = {}};
    failure.add_failure(query, outcome);
    return outcome ? std::vector<box>{} : std::vector{failure};
}

// The most columns of a line in a box.
constexpr std::size_t line_columns = 60;

// Returns the lines as one quoted text, in which a backslash begins an escape and an ampersand an
// entity.
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

std::string arrow(std::string_view from, std::string_view to, std::string_view style = "") {
    return std::format("    {} -> {}{}\n", from, to, style);
}

// Adds a column: boxes below its title, kept in their order by invisible arrows.
class column {
  public:
    column(std::string& text, std::string_view title, std::string_view line,
           std::string_view inside)
        : text_(text), order_(std::format("        {}", title)) {
        text_ += "\n    {\n        rank=same\n";
        text_ += std::format("        node [color=\"{}\", fillcolor=\"{}\"]\n", line, inside);
    }

    void add(const box& box) {
        text_ += std::format("        {} [label={}{}]\n", box.name, quoted(box.lines), box.style);
        order_.append(" -> ").append(box.name);
    }
    void add(const std::vector<box>& boxes) {
        for (const box& box : boxes) {
            add(box);
        }
    }

    void end() { text_.append(order_).append(" [style=invis]\n    }\n"); }

  private:
    std::string& text_;
    std::string order_;
};

// --- Inputs and channels ------------------------------------------------------------------------

std::string input_name(std::uint32_t id) {
    return std::format("input_{}", id);
}

std::string channel_name(std::uint32_t id) {
    return std::format("channel_{}", id);
}

box input_box(const input& input) {
    box box{.name = input_name(input.id), .lines = {std::format("input {}", input.id)}};
    box.add_failure("input", input.state);
    if (input.state) {
        if (input.state->capture) {
            box.lines.push_back(resolution_text(*input.state->capture));
        }
        box.add_failure("capture resolution", input.state->capture);
        box.add_failure("info", input.state->can_crop);
    }
    return box;
}

void draw_inputs(std::string& text, const device& device) {
    column inputs(text, "inputs", "#15803d", "#dcfce7");
    for (const input& input : device.inputs) {
        inputs.add(input_box(input));
    }
    inputs.add(failed_boxes("input_count", "count of inputs", device.input_count));
    inputs.add(failed_boxes("input_channels", "channels of inputs", device.input_channels));
    inputs.end();
}

box channel_box(const channel& channel) {
    box box{.name = channel_name(channel.id), .lines = {std::format("channel {}", channel.id)}};
    if (channel.crop && *channel.crop) {
        box.lines.push_back("crop " + rectangle_text(**channel.crop));
    }
    if (channel.available) {
        const std::size_t count = channel.available->size();
        box.lines.push_back(std::format("{} resolution{}", count, count == 1 ? "" : "s"));
    }
    box.add_failure("info", channel.can_crop);
    if (channel.crop) {
        box.add_failure("crop", *channel.crop);
    }
    box.add_failure("resolutions", channel.available);
    return box;
}

box unlisted_box(std::uint32_t id) {
    return {.name = channel_name(id),
            .lines = {std::format("channel {}", id), "not in the list"},
            .style = unlisted};
}

// Adds the channels in the order of their ids, including those that are not in the list although an
// input or a stream refers to them.
void draw_channels(std::string& text, const device& device,
                   const std::vector<const stream*>& streams) {
    std::map<std::uint32_t, const channel*> channels;  // NULL if it is not in the list
    if (device.channels) {
        for (const channel& channel : *device.channels) {
            channels.try_emplace(channel.id, &channel);
        }
    }
    if (device.input_channels) {
        for (const input_channel& channel : *device.input_channels) {
            channels.try_emplace(channel.id, nullptr);
        }
    }
    for (const stream* stream : streams) {
        if (stream->info && stream->info->channel) {
            channels.try_emplace(*stream->info->channel, nullptr);
        }
    }
    column boxes(text, "channels", "#0e7490", "#cffafe");
    boxes.add(failed_boxes("channel_list", "channels", device.channels));
    for (const auto& [id, channel] : channels) {
        boxes.add(channel != nullptr ? channel_box(*channel) : unlisted_box(id));
    }
    boxes.end();
}

std::string arrows_of_inputs(const device& device) {
    std::string text;
    if (device.input_channels) {
        for (const input_channel& channel : *device.input_channels) {
            if (channel.input) {
                text += arrow(input_name(*channel.input), channel_name(channel.id));
            }
        }
    }
    return text;
}

// --- Streams ------------------------------------------------------------------------------------

// Ids are not unique, positions in the drawing are.
std::string stream_name(std::size_t index) {
    return std::format("stream_{}", index);
}

figure channel_of(const stream& stream) {
    return stream.info ? stream.info->channel : std::nullopt;
}

// Returns the streams in the order of their channels, so that fewer arrows cross.
std::vector<const stream*> ordered_streams(const device& device) {
    std::vector<const stream*> streams;
    if (device.streams) {
        for (const stream& stream : *device.streams) {
            streams.push_back(&stream);
        }
    }
    std::ranges::stable_sort(streams, {}, [](const stream* stream) {
        const figure channel = channel_of(*stream);
        return std::pair{!channel.has_value(), channel.value_or(0)};
    });
    return streams;
}

// Returns such as "25 fps", or "24 of 25 fps" if the requested rate is not reached.
std::string frame_rates_text(figure reached, const std::optional<double>& requested) {
    std::string text = reached ? std::to_string(*reached) : "";
    if (requested && frame_rate_text(*requested) != text) {
        text += (text.empty() ? "" : " of ") + frame_rate_text(*requested);
    }
    return text.empty() ? "" : text + " fps";
}

// Adds a line of the texts that are not empty, unless both are.
void add_line(box& box, const std::string& first, const std::string& second) {
    if (!first.empty() || !second.empty()) {
        box.lines.push_back(first + (first.empty() || second.empty() ? "" : ", ") + second);
    }
}

box stream_box(const stream& stream, std::size_t index) {
    const stream_info info = stream.info.value_or(stream_info{});
    const stream_settings settings = stream.settings.value_or(stream_settings{});
    box box{.name = stream_name(index), .lines = {std::format("stream {}", stream.id)}};
    if (settings.format) {
        box.lines.front().append(": ").append(*settings.format);
    }
    const auto size = size_of(stream).value_or(std::nullopt);
    add_line(box, size ? resolution_text(*size) : "",
             frame_rates_text(info.frame_rate, settings.frame_rate));
    add_line(box, info.bit_rate ? bit_rate_text(*info.bit_rate) : "", "");
    if (info.failed_frames.value_or(0) != 0) {
        box.lines.push_back(std::format("{} failed frames", *info.failed_frames));
        box.style = worrying;
    }
    box.add_failure("settings", stream.settings);
    box.add_failure("info", stream.info);
    return box;
}

void draw_streams(std::string& text, const device& device,
                  const std::vector<const stream*>& streams) {
    column boxes(text, "streams", "#1d4ed8", "#dbeafe");
    boxes.add(failed_boxes("stream_list", "streams", device.streams));
    for (std::size_t i = 0; i < streams.size(); ++i) {
        boxes.add(stream_box(*streams[i], i));
    }
    boxes.end();
}

// --- Clients and the output ---------------------------------------------------------------------

// The clients of the streams: a box for each identity, in the order in which they are named.
class client_boxes {
  public:
    explicit client_boxes(const outcome<service_counters>& counters) {
        if (counters) {
            for (const auto& [name, starts] : counters->identities) {
                starts_.emplace(name, starts);
            }
        }
    }

    // Returns the name of the identity's box.
    const std::string& name_of(std::string_view identity) {
        const auto [index, is_new] = indices_.try_emplace(identity, boxes_.size());
        if (is_new) {
            boxes_.push_back(new_box(identity));
        }
        return boxes_[index->second].name;
    }

    const std::vector<box>& boxes() const { return boxes_; }

  private:
    box new_box(std::string_view identity) const {
        box box{.name = std::format("client_{}", boxes_.size()),
                .lines = {short_text(line_columns, identity)}};
        const auto counted = starts_.find(identity);
        if (const figure starts = counted != starts_.end() ? counted->second : std::nullopt) {
            box.lines.push_back(
                std::format("{} stream{} started", *starts, *starts == 1 ? "" : "s"));
        }
        return box;
    }

    std::map<std::string_view, figure> starts_;  // by identity, as is the next
    std::map<std::string_view, std::size_t> indices_;
    std::vector<box> boxes_;
};

std::string arrows_of_streams(const std::vector<const stream*>& streams, client_boxes& clients) {
    std::string text;
    for (std::size_t i = 0; i < streams.size(); ++i) {
        if (const figure channel = channel_of(*streams[i])) {
            text += arrow(channel_name(*channel), stream_name(i));
        }
        const std::vector<std::string_view> current = clients_of(*streams[i]);
        for (const std::string_view identity : current) {
            text += arrow(stream_name(i), clients.name_of(identity));
        }
        const auto& settings = streams[i]->settings;
        if (settings && settings->identity &&
            !std::ranges::contains(current, *settings->identity)) {
            text += arrow(stream_name(i), clients.name_of(*settings->identity), " [style=dashed]");
        }
    }
    return text;
}

box output_box(const hdmi_output& output) {
    const auto& [settings, info] = output;
    box box{.name = "output", .lines = {"HDMI output"}, .style = not_a_client};
    if (settings && !settings->is_enabled) {
        add_line(box, "disabled", "");
    } else if (info && !info->is_running) {
        add_line(box, "not running", "");
    } else if (info) {
        add_line(box, info->size ? resolution_text(*info->size) : "",
                 frame_rates_text(std::nullopt, info->frame_rate));
    }
    box.add_failure("settings", settings);
    box.add_failure("info", info);
    return box;
}

// Adds the last column: the clients and the output.
void draw_clients(std::string& text, const device& device, const client_boxes& clients) {
    column boxes(text, "clients", "#6d28d9", "#ede9fe");
    boxes.add(clients.boxes());
    boxes.add(failed_boxes("counters", "counters", device.service));
    boxes.add(failed_boxes("output", "HDMI output", device.output));
    if (device.output && *device.output) {
        boxes.add(output_box(**device.output));
    }
    boxes.end();
}

// --- The drawing --------------------------------------------------------------------------------

// Returns the text for people or the source of the answers, and when they were recorded.
std::string title_of(const heading& heading) {
    std::vector<std::string> lines{heading.about.value_or(heading.name)};
    if (heading.recorded) {
        lines.push_back("recorded " + *heading.recorded);
    }
    return std::format(
        "    graph [label={}, labelloc=t, fontname=\"Helvetica,Arial,sans-serif\"]\n",
        quoted(lines));
}

int print_drawing(std::span<const char* const> arguments) {
    const auto [device, heading] = take_description(arguments);
    const std::vector<const stream*> streams = ordered_streams(device);
    client_boxes clients(device.service);
    const std::string arrows = arrows_of_inputs(device) + arrows_of_streams(streams, clients);
    std::string text{head};
    text += title_of(heading);
    draw_inputs(text, device);
    draw_channels(text, device, streams);
    draw_streams(text, device, streams);
    draw_clients(text, device, clients);
    text.append("\n").append(arrows).append("}\n");
    std::fwrite(text.data(), 1, text.size(), stdout);
    return finish(0);
}

}  // namespace

const command graph{
    .name = "oru-snapshot graph",
    .arguments = "[FILE]",
    .most_arguments = 1,
    .summary = "Draws the device for Graphviz. Without FILE, queries the video service.",
    .example = "oru-snapshot graph gate4.json | dot -Tsvg >gate4.svg",
    .manual = "oru-snapshot(1)",
    .run = print_drawing,
};

}  // namespace snapshot_tool

#include "snapshot_tool/exposition.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "snapshot/printable.h"
#include "snapshot_tool/figures.h"

namespace snapshot_tool {
namespace {

// --- The format ---------------------------------------------------------------------------------

std::string value_text(std::integral auto value) {
    return std::to_string(value);
}

// Plain decimal, with as many digits as distinguish the value from every other.
std::string value_text(double value) {
    if (!std::isfinite(value)) {
        return std::isnan(value) ? "NaN" : value > 0 ? "+Inf" : "-Inf";
    }
    std::array<char, 400> digits;  // the longest value takes 327
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                       std::chars_format::fixed);
    return {digits.data(), written.ptr};
}

template <class Value>
std::optional<std::string> value_text(const std::optional<Value>& value) {
    return value.transform([](Value present) { return value_text(present); });
}

// Returns a printable text that is short enough for a label. It ends between two characters.
std::string label_text(std::string_view text) {
    constexpr std::size_t most_bytes = 128;  // of a label's value
    // Printing shortens no character, and none has more than four bytes.
    std::string value = snapshot::printable(text.substr(0, most_bytes + 3));
    if (value.size() > most_bytes) {
        std::size_t end = most_bytes;
        while ((static_cast<unsigned char>(value[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        value.resize(end);
    }
    return value;
}

// Returns a label with a value from label_text().
std::string label(std::string_view name, std::string_view value) {
    std::string text(name);
    text += "=\"";
    for (const char byte : value) {
        if (byte == '"' || byte == '\\') {
            text += '\\';
        }
        text += byte;
    }
    return text += '"';
}

std::string label(std::string_view name, std::uint32_t id) {
    return label(name, std::to_string(id));
}

enum class metric_type { gauge, counter };

// Writes the series of one name, each a value under its own labels.
class metric {
  public:
    // Adds to `text`. The arguments outlive the metric.
    metric(std::string& text, std::string_view name, metric_type type, std::string_view help)
        : text_(text), name_(name), type_(type), help_(help) {}

    // Adds a series, unless there is no value. Labels are joined by commas.
    void add(std::string_view labels, const std::optional<std::string>& value) {
        if (!value) {
            return;
        }
        if (!std::exchange(has_head_, true)) {
            text_.append("# HELP ").append(name_).append(" ").append(help_).append("\n# TYPE ");
            text_.append(name_).append(type_ == metric_type::counter ? " counter\n" : " gauge\n");
        }
        text_.append(name_);
        if (!labels.empty()) {
            text_.append("{").append(labels).append("}");
        }
        text_.append(" ").append(*value).append("\n");
    }

  private:
    std::string& text_;
    std::string_view name_;
    metric_type type_;
    std::string_view help_;
    bool has_head_ = false;
};

// Adds a gauge without labels.
template <class Value>
void add_gauge(std::string& text, std::string_view name, std::string_view help,
               const std::optional<Value>& value) {
    metric(text, name, metric_type::gauge, help).add("", value_text(value));
}

// --- Streams ------------------------------------------------------------------------------------

struct labelled_stream {
    const stream& figures;
    std::string id_label;
};

// Returns the streams with an id, each id once: series of others would repeat labels.
std::vector<labelled_stream> identifiable_streams(const std::vector<stream>& streams) {
    std::set<std::uint32_t> ids;
    std::vector<labelled_stream> identifiable;
    for (const stream& stream : streams) {
        if (stream.id != 0 && ids.insert(stream.id).second) {
            identifiable.push_back({.figures = stream, .id_label = label("stream", stream.id)});
        }
    }
    return identifiable;
}

// Returns the number of the input whose pictures each channel shows, by the channel's id.
std::map<std::uint32_t, std::uint32_t> inputs_by_channel(const device& device) {
    std::map<std::uint32_t, std::uint32_t> inputs;
    if (device.input_channels) {
        for (const input_channel& channel : *device.input_channels) {
            if (channel.input) {
                inputs.try_emplace(channel.id, *channel.input);
            }
        }
    }
    return inputs;
}

void add_stream_infos(std::string& text, const std::vector<labelled_stream>& streams,
                      const device& device) {
    const auto inputs = inputs_by_channel(device);
    const auto input_of = [&](const stream& stream) -> std::string {
        const figure channel = stream.info ? stream.info->channel : std::nullopt;
        const auto found = channel ? inputs.find(*channel) : inputs.end();
        return found != inputs.end() ? std::to_string(found->second) : "";
    };
    metric info(text, "oru_stream_info", metric_type::gauge,
                "The client, format, resolution and input of a stream.");
    for (const auto& [stream, id_label] : streams) {
        const stream_settings settings = stream.settings.value_or(stream_settings{});
        const auto size = size_of(stream).value_or(std::nullopt);
        std::string labels = id_label;
        for (const auto& [name, value] :
             {std::pair{"identity", label_text(settings.identity.value_or(""))},
              std::pair{"format", label_text(settings.format.value_or(""))},
              std::pair{"resolution", size ? resolution_text(*size) : ""},
              std::pair{"input", input_of(stream)}}) {
            labels.append(",").append(label(name, value));
        }
        info.add(labels, "1");
    }
}

std::optional<double> bytes_a_second(const stream_info& info) {
    return info.bit_rate.transform([](std::uint32_t bits) { return bits / 8.0; });
}

std::optional<double> run_seconds(const stream_info& info) {
    return info.run_time.transform(
        [](std::int64_t microseconds) { return static_cast<double>(microseconds) / 1e6; });
}

// Returns a figure from one of a stream's answers, if the answer contains it.
template <auto answer, auto figure>
std::optional<std::string> stream_value(const stream& stream) {
    return stream.*answer ? value_text(std::invoke(figure, *(stream.*answer))) : std::nullopt;
}

struct stream_metric {
    std::string_view name;
    metric_type type;
    std::string_view help;
    std::optional<std::string> (*value)(const stream& stream);
};

constexpr stream_metric stream_metrics[] = {
    {"oru_stream_requested_frames_per_second", metric_type::gauge, "Requested frame rate.",
     stream_value<&stream::settings, &stream_settings::frame_rate>},
    {"oru_stream_frames_per_second", metric_type::gauge, "Frame rate that is reached.",
     stream_value<&stream::info, &stream_info::frame_rate>},
    {"oru_stream_bytes_per_second", metric_type::gauge, "Bit rate, in bytes.",
     stream_value<&stream::info, bytes_a_second>},
    {"oru_stream_run_seconds", metric_type::gauge, "How long the stream has been running.",
     stream_value<&stream::info, run_seconds>},
    {"oru_stream_frames_total", metric_type::counter, "Frames of the stream.",
     stream_value<&stream::info, &stream_info::frames>},
    {"oru_stream_failed_frames_total", metric_type::counter, "Frames that failed.",
     stream_value<&stream::info, &stream_info::failed_frames>},
    {"oru_stream_reclaims_total", metric_type::counter, "Reclaims, as the service counts them.",
     stream_value<&stream::info, &stream_info::reclaims>},
    {"oru_stream_clients", metric_type::gauge, "Clients of the stream.",
     stream_value<&stream::info, &stream_info::clients>},
};

void add_streams(std::string& text, const device& device) {
    if (!device.streams) {
        return;
    }
    const std::vector<labelled_stream> streams = identifiable_streams(*device.streams);
    add_gauge(text, "oru_streams", "Running streams.", std::optional{device.streams->size()});
    add_gauge(text, "oru_streams_without_series",
              "Running streams without series: the id of each is 0 or not unique.",
              std::optional{device.streams->size() - streams.size()});
    add_stream_infos(text, streams, device);
    for (const auto& [name, type, help, value] : stream_metrics) {
        metric metric(text, name, type, help);
        for (const auto& [stream, id_label] : streams) {
            metric.add(id_label, value(stream));
        }
    }
}

// --- The service --------------------------------------------------------------------------------

template <figure usage::* member>
figure usage_figure(const device& device) {
    return in_use(device, member);
}

template <figure service_counters::* member>
figure counter_figure(const device& device) {
    return device.service ? (*device.service).*member : std::nullopt;
}

template <figure stream_quota::* member>
figure quota_figure(const device& device) {
    return device.quota ? (*device.quota).*member : std::nullopt;
}

figure stream_limit(const device& device) {
    return device.stream_limit.value_or(std::nullopt);
}

struct service_gauge {
    std::string_view name;
    std::string_view help;
    figure (*value)(const device& device);
};

constexpr service_gauge service_gauges[] = {
    {"oru_buffer_used_bytes", "Buffers in use.", usage_figure<&usage::capacity>},
    {"oru_buffer_used_peak_bytes", "Most buffers that were in use.",
     counter_figure<&service_counters::capacity_peak>},
    {"oru_buffer_hard_quota_bytes", "Hard limit of the buffers in use.",
     quota_figure<&stream_quota::hard>},
    {"oru_buffer_soft_quota_bytes", "Soft limit of the buffers in use.",
     quota_figure<&stream_quota::soft>},
    {"oru_buffering_quota", "Limit of buffering, as the service gives it.",
     quota_figure<&stream_quota::buffering>},
    {"oru_encoded_streams", "Encoded streams in use.", usage_figure<&usage::encoded_streams>},
    {"oru_encoded_streams_peak", "Most encoded streams that were in use.",
     counter_figure<&service_counters::encoded_streams_peak>},
    {"oru_encoded_streams_limit", "Limit of encoded streams.", stream_limit},
    {"oru_jpeg_streams", "JPEG streams in use.", usage_figure<&usage::jpeg_streams>},
    {"oru_raw_streams", "Raw streams in use.", usage_figure<&usage::raw_streams>},
    {"oru_raw_streams_peak", "Most raw streams that were in use.",
     counter_figure<&service_counters::raw_streams_peak>},
};

void add_service(std::string& text, const device& device) {
    for (const auto& [name, help, value] : service_gauges) {
        add_gauge(text, name, help, value(device));
    }
}

// --- Identities ---------------------------------------------------------------------------------

using starts_by_label = std::pair<std::string, std::uint64_t>;

// Keeps this many of the largest counts, of equal ones the first labels.
void keep_largest(std::size_t count, std::vector<starts_by_label>& starts) {
    if (starts.size() <= count) {
        return;
    }
    const auto end = starts.begin() + static_cast<std::ptrdiff_t>(count);
    std::ranges::nth_element(starts, end, [](const auto& one, const auto& other) {
        return one.second != other.second ? one.second > other.second : one.first < other.first;
    });
    starts.erase(end, starts.end());
    std::ranges::sort(starts);
}

void add_identities(std::string& text, const device& device) {
    constexpr std::size_t most_series = 100;
    if (!device.service) {
        return;
    }
    // Names that give one label share a series.
    std::map<std::string, std::uint64_t> starts;
    std::uint64_t all_starts = 0;
    for (const identity& identity : device.service->identities) {
        if (identity.starts) {
            starts[label("identity", label_text(identity.name))] += *identity.starts;
            all_starts += *identity.starts;
        }
    }
    add_gauge(text, "oru_identities", "Identities of clients that started streams.",
              std::optional{device.service->identities.size()});
    metric(text, "oru_streams_started_total", metric_type::counter,
           "Streams that were started, by all clients.")
        .add("", value_text(all_starts));
    std::vector<starts_by_label> largest(starts.begin(), starts.end());
    keep_largest(most_series, largest);
    metric metric(text, "oru_identity_streams_started_total", metric_type::counter,
                  "Streams that a client started, for the clients with the most.");
    for (const auto& [labels, count] : largest) {
        metric.add(labels, value_text(count));
    }
}

// --- Inputs, channels and the output ------------------------------------------------------------

std::optional<std::string> input_is_up(const input& input) {
    return has_signal(input) ? "1" : "0";
}

template <std::uint32_t resolution::* side>
std::optional<std::string> capture_value(const input& input) {
    return input.state && input.state->capture
               ? std::optional(value_text((*input.state->capture).*side))
               : std::nullopt;
}

struct input_gauge {
    std::string_view name;
    std::string_view help;
    std::optional<std::string> (*value)(const input& input);
};

constexpr input_gauge input_gauges[] = {
    {"oru_input_up", "Whether the input has a signal.", input_is_up},
    {"oru_input_capture_width_pixels", "Width of the pictures that are captured.",
     capture_value<&resolution::width>},
    {"oru_input_capture_height_pixels", "Height of the pictures that are captured.",
     capture_value<&resolution::height>},
};

void add_inputs(std::string& text, const device& device) {
    for (const auto& [name, help, value] : input_gauges) {
        metric metric(text, name, metric_type::gauge, help);
        for (const input& input : device.inputs) {
            metric.add(label("input", input.id), value(input));
        }
    }
}

void add_channels(std::string& text, const device& device) {
    if (!device.channels) {
        return;
    }
    // A service may list an id twice.
    std::map<std::uint32_t, bool> is_up;
    for (const channel& channel : *device.channels) {
        is_up.try_emplace(channel.id, true).first->second &= channel.can_crop.has_value();
    }
    metric metric(text, "oru_channel_up", metric_type::gauge,
                  "Whether the service answers for the channel.");
    for (const auto& [id, answers] : is_up) {
        metric.add(label("channel", id), answers ? "1" : "0");
    }
}

void add_output(std::string& text, const device& device) {
    if (!device.output || !*device.output) {
        return;
    }
    const auto& [settings, info] = **device.output;
    if (settings) {
        add_gauge(text, "oru_output_enabled", "Whether the HDMI output is switched on.",
                  std::optional{settings->is_enabled ? 1 : 0});
    }
    if (info) {
        add_gauge(text, "oru_output_running", "Whether the HDMI output sends pictures.",
                  std::optional{info->is_running ? 1 : 0});
    }
}

void add_unanswered_queries(std::string& text, const device& device) {
    metric metric(text, "oru_unanswered_queries", metric_type::gauge,
                  "Queries that the service did not answer.");
    for (const auto& [kind, count] : device.unanswered) {
        metric.add(label("kind", kind), value_text(count));
    }
}

}  // namespace

std::string exposition(const device& device) {
    std::string text;
    add_gauge(text, "oru_up", "Whether the video service answers.",
              std::optional{device.reached ? 1 : 0});
    metric(text, "oru_build_info", metric_type::gauge, "The program that wrote these figures.")
        .add(label("version", ORU_VERSION), "1");
    if (device.reached) {
        add_gauge(text, "oru_snapshot_recorded_timestamp_seconds",
                  "When the answers were recorded, in seconds since 1970.", device.recorded);
        add_unanswered_queries(text, device);
        add_streams(text, device);
        add_service(text, device);
        add_identities(text, device);
        add_inputs(text, device);
        add_channels(text, device);
        add_output(text, device);
    }
    return text;
}

}  // namespace snapshot_tool

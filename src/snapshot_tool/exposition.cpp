#include "snapshot_tool/exposition.h"

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <format>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
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

std::string label(std::string_view name, std::string_view text) {
    std::string value;
    for (const char byte : snapshot::printable(text)) {
        if (byte == '"' || byte == '\\') {
            value += '\\';
        }
        value += byte;
    }
    return std::format("{}=\"{}\"", name, value);
}

template <class Value>
std::optional<std::string> value_text(const std::optional<Value>& value) {
    return value.transform([](Value present) { return value_text(present); });
}

enum class metric_type { gauge, counter };

// The series of one name, each a value under its own labels.
class metric {
  public:
    metric(std::string_view name, metric_type type, std::string_view help)
        : name_(name),
          head_(std::format("# HELP {0} {1}\n# TYPE {0} {2}\n", name, help,
                            type == metric_type::counter ? "counter" : "gauge")) {}

    // Adds a series, unless there is no value. Labels are joined by commas.
    void add(std::string_view labels, const std::optional<std::string>& value) {
        if (value) {
            const std::string braced = labels.empty() ? "" : std::format("{{{}}}", labels);
            series_ += std::format("{}{} {}\n", name_, braced, *value);
        }
    }

    // Returns the lines; none if there is no series.
    std::string text() const { return series_.empty() ? "" : head_ + series_; }

  private:
    std::string name_;
    std::string head_;
    std::string series_;
};

// Returns a gauge without labels.
template <class Value>
std::string gauge_text(std::string_view name, std::string_view help,
                       const std::optional<Value>& value) {
    metric gauge(name, metric_type::gauge, help);
    gauge.add("", value_text(value));
    return gauge.text();
}

// --- Streams ------------------------------------------------------------------------------------

// Returns the streams with an id, each id once: series of others would repeat labels.
std::vector<const stream*> identifiable_streams(const std::vector<stream>& streams) {
    std::set<std::uint32_t> ids;
    std::vector<const stream*> identifiable;
    for (const stream& stream : streams) {
        if (stream.id != 0 && ids.insert(stream.id).second) {
            identifiable.push_back(&stream);
        }
    }
    return identifiable;
}

std::string id_label(const stream& stream) {
    return label("stream", std::to_string(stream.id));
}

std::string stream_info_text(const std::vector<const stream*>& streams) {
    metric info("oru_stream_info", metric_type::gauge,
                "A stream: who asked for it, and what it is.");
    for (const stream* stream : streams) {
        const stream_settings settings = stream->settings.value_or(stream_settings{});
        const auto size = size_of(*stream).value_or(std::nullopt);
        info.add(std::format("{},{},{},{}", id_label(*stream),
                             label("identity", settings.identity.value_or("")),
                             label("format", settings.format.value_or("")),
                             label("resolution", size ? resolution_text(*size) : "")),
                 "1");
    }
    return info.text();
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
    {"oru_stream_requested_frames_per_second", metric_type::gauge, "Frame rate that was asked for.",
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

std::string streams_text(const std::vector<stream>& all) {
    const std::vector<const stream*> streams = identifiable_streams(all);
    std::string text =
        gauge_text("oru_streams", "Running streams.", std::optional{all.size()}) +
        gauge_text("oru_streams_without_series",
                   "Running streams that nothing else is told of: their id is 0 or another's.",
                   std::optional{all.size() - streams.size()}) +
        stream_info_text(streams);
    for (const auto& [name, type, help, value] : stream_metrics) {
        metric metric(name, type, help);
        for (const stream* stream : streams) {
            metric.add(id_label(*stream), value(*stream));
        }
        text += metric.text();
    }
    return text;
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
    {"oru_capacity_bytes", "Buffers in use.", usage_figure<&usage::capacity>},
    {"oru_capacity_peak_bytes", "Most buffers that were in use.",
     counter_figure<&service_counters::capacity_peak>},
    {"oru_capacity_hard_quota_bytes", "Hard limit of the buffers in use.",
     quota_figure<&stream_quota::hard>},
    {"oru_capacity_soft_quota_bytes", "Soft limit of the buffers in use.",
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

std::string identities_text(const std::vector<identity>& identities) {
    // Different names can look alike once they are printable. They share a series.
    std::map<std::string, std::uint64_t> starts;
    for (const identity& identity : identities) {
        if (identity.starts) {
            starts[label("identity", identity.name)] += *identity.starts;
        }
    }
    metric metric("oru_identity_streams_started_total", metric_type::counter,
                  "Streams that a client started.");
    for (const auto& [labels, count] : starts) {
        metric.add(labels, value_text(count));
    }
    return metric.text();
}

std::string service_text(const device& device) {
    std::string text;
    for (const auto& [name, help, value] : service_gauges) {
        text += gauge_text(name, help, value(device));
    }
    return device.service ? text + identities_text(device.service->identities) : text;
}

}  // namespace

std::string exposition(const device& device) {
    std::string text = gauge_text("oru_up", "Whether the video service answers.",
                                  std::optional{device.reached ? 1 : 0});
    if (device.reached) {
        text += gauge_text("oru_unanswered_questions", "Questions that the service did not answer.",
                           std::optional{device.failures});
        text += device.streams ? streams_text(*device.streams) : "";
        text += service_text(device);
    }
    return text;
}

}  // namespace snapshot_tool

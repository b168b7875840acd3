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

// Plain decimal, with as many digits as tell it from every other value.
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

enum class kind { gauge, counter };

// All figures of one name.
class metric {
  public:
    metric(std::string_view name, kind of, std::string_view help)
        : name_(name),
          head_(std::format("# HELP {0} {1}\n# TYPE {0} {2}\n", name, help,
                            of == kind::counter ? "counter" : "gauge")) {}

    // Adds a figure, if there is one, under labels joined by commas.
    template <class Value>
    void add(std::string_view labels, const std::optional<Value>& value) {
        if (value) {
            const std::string braced = labels.empty() ? "" : std::format("{{{}}}", labels);
            series_ += std::format("{}{} {}\n", name_, braced, value_text(*value));
        }
    }

    // Returns the lines; none when there is no figure.
    std::string text() const { return series_.empty() ? "" : head_ + series_; }

  private:
    std::string name_;
    std::string head_;
    std::string series_;
};

template <class Value>
std::string single(std::string_view name, std::string_view help,
                   const std::optional<Value>& value) {
    metric told(name, kind::gauge, help);
    told.add("", value);
    return told.text();
}

// --- Streams ------------------------------------------------------------------------------------

// Returns the streams that their ids tell from each other.
std::vector<const stream*> told_apart(const std::vector<stream>& streams) {
    std::set<std::uint32_t> ids;
    std::vector<const stream*> told;
    for (const stream& from : streams) {
        if (from.id != 0 && ids.insert(from.id).second) {
            told.push_back(&from);
        }
    }
    return told;
}

std::string id_label(const stream* of) {
    return label("stream", std::to_string(of->id));
}

std::string stream_info_text(const std::vector<const stream*>& streams) {
    metric told("oru_stream_info", kind::gauge, "A stream: who asked for it, and what it is.");
    for (const stream* from : streams) {
        const stream_settings settings = from->settings.value_or(stream_settings{});
        const auto size = size_of(*from).value_or(std::nullopt);
        told.add(std::format("{},{},{},{}", id_label(from),
                             label("identity", settings.identity.value_or("")),
                             label("format", settings.format.value_or("")),
                             label("resolution", size ? resolution_text(*size) : "")),
                 std::optional{1});
    }
    return told.text();
}

// Returns a figure of each stream. `answered` is the answer that holds it, and `figure` gives it.
template <class Source, class Figure>
std::string stream_text(const std::vector<const stream*>& streams, std::string_view name, kind of,
                        std::string_view help, outcome<Source> stream::* answered, Figure figure) {
    metric told(name, of, help);
    for (const stream* from : streams) {
        if (from->*answered) {
            told.add(id_label(from), std::invoke(figure, *(from->*answered)));
        }
    }
    return told.text();
}

std::optional<double> bytes_a_second(const stream_info& of) {
    return of.bit_rate.transform([](std::uint32_t bits) { return bits / 8.0; });
}

std::optional<double> run_seconds(const stream_info& of) {
    return of.run_time.transform([](std::int64_t time) { return static_cast<double>(time) / 1e6; });
}

std::string streams_text(const std::vector<stream>& all) {
    const std::vector<const stream*> streams = told_apart(all);
    const auto info = [&](std::string_view name, kind of, std::string_view help, auto figure) {
        return stream_text(streams, name, of, help, &stream::info, figure);
    };
    return single("oru_streams", "Running streams.", std::optional{all.size()}) +
           single("oru_streams_without_series",
                  "Running streams that nothing else is told of: their id is 0 or another's.",
                  std::optional{all.size() - streams.size()}) +
           stream_info_text(streams) +
           stream_text(streams, "oru_stream_requested_frames_per_second", kind::gauge,
                       "Frame rate that was asked for.", &stream::settings,
                       &stream_settings::frame_rate) +
           info("oru_stream_frames_per_second", kind::gauge, "Frame rate that is reached.",
                &stream_info::frame_rate) +
           info("oru_stream_bytes_per_second", kind::gauge, "Bit rate, in bytes.", bytes_a_second) +
           info("oru_stream_run_seconds", kind::gauge, "How long the stream has been running.",
                run_seconds) +
           info("oru_stream_frames_total", kind::counter, "Frames of the stream.",
                &stream_info::frames) +
           info("oru_stream_failed_frames_total", kind::counter, "Frames that failed.",
                &stream_info::failed_frames) +
           info("oru_stream_reclaims_total", kind::counter, "Reclaims, as the service counts them.",
                &stream_info::reclaims) +
           info("oru_stream_clients", kind::gauge, "Clients of the stream.", &stream_info::clients);
}

// --- The service --------------------------------------------------------------------------------

std::string identities_text(const std::vector<identity>& identities) {
    // Names that are printed alike are counted together: a series is told only once.
    std::map<std::string, std::uint64_t> starts;
    for (const identity& from : identities) {
        if (from.starts) {
            starts[label("identity", from.name)] += *from.starts;
        }
    }
    metric told("oru_identity_streams_started_total", kind::counter,
                "Streams that a client started.");
    for (const auto& [name, count] : starts) {
        told.add(name, std::optional{count});
    }
    return told.text();
}

std::string service_text(const device& of) {
    const service_counters counters = of.service.value_or(service_counters{});
    const stream_quota quota = of.quota.value_or(stream_quota{});
    return single("oru_capacity_bytes", "Buffers in use.", in_use(of, &usage::capacity)) +
           single("oru_capacity_peak_bytes", "Most buffers that were in use.",
                  counters.capacity_peak) +
           single("oru_capacity_hard_quota_bytes", "Hard limit of the buffers in use.",
                  quota.hard) +
           single("oru_capacity_soft_quota_bytes", "Soft limit of the buffers in use.",
                  quota.soft) +
           single("oru_buffering_quota", "Limit of buffering, as the service gives it.",
                  quota.buffering) +
           single("oru_encoded_streams", "Encoded streams in use.",
                  in_use(of, &usage::encoded_streams)) +
           single("oru_encoded_streams_peak", "Most encoded streams that were in use.",
                  counters.encoded_streams_peak) +
           single("oru_encoded_streams_limit", "Limit of encoded streams.",
                  of.stream_limit.value_or(std::nullopt)) +
           single("oru_jpeg_streams", "JPEG streams in use.", in_use(of, &usage::jpeg_streams)) +
           single("oru_raw_streams", "Raw streams in use.", in_use(of, &usage::raw_streams)) +
           single("oru_raw_streams_peak", "Most raw streams that were in use.",
                  counters.raw_streams_peak) +
           identities_text(counters.identities);
}

}  // namespace

std::string exposition(const device& of) {
    std::string text =
        single("oru_up", "Whether the video service answers.", std::optional{of.reached ? 1 : 0});
    if (of.reached) {
        text += single("oru_unanswered_questions", "Questions that the service did not answer.",
                       std::optional{of.failures});
        text += of.streams ? streams_text(*of.streams) : "";
        text += service_text(of);
    }
    return text;
}

}  // namespace snapshot_tool

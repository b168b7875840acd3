// A device at one moment: the figures that show, graph and metrics take from a snapshot. Texts are
// as the service gave them; the device keeps the snapshot alive that they point into.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot/load.h"
#include "snapshot/lookup.h"

namespace snapshot_tool {

using snapshot::rectangle;
using snapshot::resolution;

// Why a query was not answered.
struct reason {
    // NOLINTNEXTLINE(google-explicit-constructor): a message is a reason
    reason(const char* message) : message(message) {}
    reason(const snapshot::query& query, const char* message) : query(query), message(message) {}

    snapshot::query query{""};
    const char* message;  // of the service; NULL if the snapshot has no answer

    std::string text() const;
};

// A value, or the reason why the service did not answer.
template <class Value>
using outcome = std::expected<Value, reason>;

// Nothing if the service does not report it, or reports a value of another kind.
using figure = std::optional<std::uint32_t>;

// What is in use of the whole service, as counted by a stream or by the service itself.
struct usage {
    figure capacity;  // bytes
    figure encoded_streams;
    figure jpeg_streams;
    figure raw_streams;
};

struct stream_info {
    figure channel;
    figure clients;
    figure bit_rate;    // bits a second
    figure frame_rate;  // frames a second, reached
    figure frames;
    figure failed_frames;
    figure reclaims;
    std::optional<std::int64_t> run_time;  // microseconds
    figure input = {};                     // its number, if the stream names one
};

struct stream_settings {
    std::optional<std::string_view> identity;
    std::optional<std::string_view> format;  // the name; "code 99" if the service has none for it
    std::optional<double> frame_rate;        // frames a second, requested
    bool is_raw = false;
};

struct stream {
    std::uint32_t id;  // 0 if it has none yet
    outcome<stream_info> info;
    outcome<stream_settings> settings;
    const snapshot::stream_record* record = nullptr;  // what it was made of
};

// Returns the debug map of a stream, which belongs to the answers.
outcome<const snapshot::map_entries*> debug_of(const stream& stream);

// Returns the size of a stream's pictures. That of a raw stream follows its source.
outcome<std::optional<resolution>> size_of(const stream& stream);

// Returns the identities of a stream's clients, of eight at most.
std::vector<std::string_view> clients_of(const stream& stream);

struct identity {
    std::string_view name;
    figure starts;  // how often it started a stream
};

struct service_counters {
    usage in_use;
    figure capacity_peak;  // bytes
    figure encoded_streams_peak;
    figure raw_streams_peak;
    std::vector<identity> identities;  // ascending by the bytes of their names
};

struct stream_quota {
    figure hard;  // bytes
    figure soft;  // bytes
    figure buffering;
};

struct channel {
    std::uint32_t id;
    outcome<bool> can_crop;
    std::optional<outcome<rectangle>> crop;  // this and the next: none if it cannot crop
    std::optional<outcome<resolution>> largest_crop;
    outcome<std::span<const resolution>> available;
};

// A channel whose pictures come from an input.
struct input_channel {
    std::uint32_t id;
    outcome<std::uint32_t> input;  // its number
};

struct input_state {
    outcome<resolution> capture;
    outcome<bool> can_crop;
    std::optional<outcome<rectangle>> crop;  // none if it cannot crop
    std::optional<resolution> largest_crop;
};

struct input {
    std::uint32_t id;
    outcome<input_state> state;
};

// Returns whether the input can be opened and captures pictures that are not 0x0.
bool has_signal(const input& input);

struct output_settings {
    bool is_enabled;
    figure vic;
};

struct output_info {
    bool is_running;
    bool is_hdmi;  // DVI otherwise
    std::optional<resolution> size;
    std::optional<double> frame_rate;  // frames a second
    std::optional<std::string_view> aspect_ratio;
};

struct hdmi_output {
    outcome<output_settings> settings;
    outcome<output_info> info;
};

// How many queries of a kind were not answered.
struct unanswered_queries {
    std::string_view kind;  // such as "stream info"
    std::size_t count = 0;
};

struct device {
    outcome<std::vector<stream>> streams;
    outcome<service_counters> service;
    outcome<stream_quota> quota;
    outcome<figure> stream_limit;
    outcome<std::vector<channel>> channels;
    outcome<std::vector<input_channel>> input_channels;
    outcome<std::uint32_t> input_count;
    std::vector<input> inputs;                   // the counted, then others that channels name
    outcome<std::optional<hdmi_output>> output;  // none if the device has none

    std::optional<std::int64_t> recorded;  // seconds since 1970; none if the answers are current

    // If the service answered no query: the message of the first failure.
    std::expected<void, std::string> reached;
    std::vector<unanswered_queries> unanswered;  // one of every kind, unless nothing was read

    // What the texts above point into; NULL if it could not be read.
    std::shared_ptr<const snapshot::answers> snapshot;
    std::shared_ptr<snapshot::arena> names_of_codes;
};

// Returns the figure from the first stream that reports it, otherwise from the service-wide
// counters.
figure in_use(const device& device, figure usage::* member);

// Inputs with higher numbers are queried only if a channel names them.
inline constexpr std::uint32_t most_inputs_counted = 1024;

// Returns the figures of a snapshot. If it could not be read, only `reached` is set, to the reason.
device figures_of(const snapshot::loaded& loaded);

}  // namespace snapshot_tool

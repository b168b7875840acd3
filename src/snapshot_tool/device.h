// A device at one moment: every question about it is asked once, and what the service answered is
// read into plain values. Texts are as the service gave them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "video/native.h"

// What the service answered, or the reason that it gave for a failure.
template <class Value>
using answer = std::expected<Value, std::string>;

// What the service does not give, or gives as another kind of value, is none.
using number = std::optional<std::uint32_t>;

// Pixels.
struct rectangle {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

// What is in use of the whole service. It tells with the counters of a stream, or with its own.
struct usage {
    number capacity;  // bytes
    number encoded_streams;
    number jpeg_streams;
    number raw_streams;
};

struct stream_info {
    number channel;
    number clients;
    number bit_rate;    // bits a second
    number frame_rate;  // frames a second, reached
    number frames;
    number failed_frames;
    number reclaims;
    std::optional<std::int64_t> run_time;        // microseconds
    std::optional<native_resolution> raw_size;   // the size of a raw stream follows its source
    std::vector<std::string> client_identities;  // of eight clients at most
};

struct stream_settings {
    std::optional<std::string> identity;
    std::optional<std::string> format;  // the name; "code 99" when the service has none for it
    bool is_raw = false;
    std::optional<native_resolution> encoded_size;
    std::optional<double> frame_rate;  // frames a second, asked for
};

struct stream {
    std::uint32_t id;  // 0 when it has none yet
    answer<stream_info> info;
    answer<stream_settings> settings;
    answer<usage> in_use;
};

// Returns the size of a stream's pictures.
answer<std::optional<native_resolution>> size_of(const stream& from);

struct identity {
    std::string name;
    number starts;  // how often it started a stream
};

struct service_counters {
    usage in_use;
    number capacity_peak;  // bytes
    number encoded_streams_peak;
    number raw_streams_peak;
    std::vector<identity> identities;  // ascending by the bytes of their names
};

struct stream_quota {
    number hard;  // bytes
    number soft;  // bytes
    number buffering;
};

struct channel {
    std::uint32_t id;
    answer<bool> can_crop;
    std::optional<answer<rectangle>> crop;  // none when it cannot crop, as is the next
    std::optional<answer<native_resolution>> largest_crop;
    answer<std::vector<native_resolution>> available;
};

// A channel whose pictures come from an input.
struct input_channel {
    std::uint32_t id;
    answer<std::uint32_t> input;  // its number
};

struct input_state {
    answer<native_resolution> capture;
    answer<bool> can_crop;
    std::optional<answer<rectangle>> crop;  // none when it cannot crop
    std::optional<native_resolution> largest_crop;
};

struct input {
    std::uint32_t id;
    answer<input_state> state;
};

struct output_settings {
    bool is_enabled;
    number vic;
};

struct output_info {
    bool is_running;
    bool is_hdmi;  // DVI otherwise
    std::optional<native_resolution> size;
    std::optional<double> frame_rate;  // frames a second
    std::optional<std::string> aspect_ratio;
};

struct hdmi_output {
    answer<output_settings> settings;
    answer<output_info> info;
};

struct device {
    answer<std::vector<stream>> streams;
    answer<service_counters> service;
    answer<stream_quota> quota;
    answer<number> stream_limit;
    answer<std::vector<channel>> channels;
    answer<std::vector<input_channel>> input_channels;
    answer<std::uint32_t> input_count;
    std::vector<input> inputs;                  // those counted, then others that channels name
    answer<std::optional<hdmi_output>> output;  // none when the device has none

    // Whether the service answered anything at all, and if not, what the first failure said.
    answer<void> reached;
    std::size_t failures = 0;  // how many questions it did not answer
};

// Returns a figure in use as the first stream tells it that does, else as the service does.
number in_use(const device& of, number usage::* figure);

// More inputs than these are not asked for, however many the service counts.
inline constexpr std::uint32_t most_inputs_counted = 1024;

// Asks the service.
device ask_device();

// A video service whose answers a test sets. It replaces the client library and native.cpp, because
// a library can also answer what a snapshot cannot contain.
#ifndef TESTS_SNAPSHOT_TOOL_FAKE_SERVICE_H
#define TESTS_SNAPSHOT_TOOL_FAKE_SERVICE_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "replay/origin.h"
#include "video/native.h"

struct fake_failure {
    std::string message;
};

// An answer, a failure with a message, or, by default, a failure without a message.
template <class T>
struct fake_answer {
    fake_answer() = default;
    fake_answer(T answer) : value(std::move(answer)) {}
    fake_answer(fake_failure failure) : error(std::move(failure.message)) {}

    std::optional<T> value;
    std::optional<std::string> error;
};

// A value of a kind that no getter reads: its JSON text, or none if it cannot be written.
struct fake_other {
    std::optional<std::string> json;
};

using fake_value = std::variant<native_value, fake_other>;
using fake_map = std::map<std::string, fake_value>;
using fake_size = std::array<std::uint32_t, 2>;
using fake_rectangle = std::array<std::uint32_t, 4>;

struct fake_stream {
    std::uint32_t id = 0;
    fake_answer<fake_map> info = {};
    fake_answer<fake_map> settings = {};
    fake_answer<fake_map> debug = {};
};

struct fake_channel {
    std::uint32_t id = 0;
    fake_answer<fake_map> info = {};
    fake_answer<fake_rectangle> crop = {};
    fake_answer<fake_size> crop_max = {};
    fake_answer<std::vector<native_resolution>> resolutions = {};
};

struct fake_input {
    fake_answer<fake_map> info = {};
    fake_answer<fake_rectangle> crop = {};
    fake_answer<fake_size> resolution = {};
};

struct fake_output {
    fake_answer<fake_map> info = {};
    fake_answer<fake_map> settings = {};
};

struct fake_service {
    fake_answer<fake_answer<fake_map>> system, mode;  // caps, info
    fake_answer<fake_map> stream_debug, stream_quota, stream_limit, channel_info;
    fake_answer<std::vector<fake_stream>> streams;
    fake_answer<std::vector<fake_channel>> channels, channels_of_inputs;
    std::map<std::uint32_t, fake_answer<fake_input>> inputs;
    fake_answer<fake_output> output;
    std::vector<std::pair<std::uint32_t, std::string>> formats;  // code and nick

    std::optional<replay::origin> origin = {};

    std::vector<std::uint32_t> opened_inputs = {};
};

// The current service.
inline fake_service service;

#endif

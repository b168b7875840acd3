// The strict client's own reader of snapshots. It shares no code with src/snapshot and uses another
// JSON library, so that every test that runs on both clients compares the two readers.
#pragma once

#include <array>
#include <cstdint>
#include <expected>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <qwire.h>

namespace strict {

struct failure {
    std::string message;
};

// Not recorded, recorded as a failure, or recorded.
template <class T>
using answer = std::variant<std::monostate, failure, T>;

using size = std::array<std::uint32_t, 2>;       // width, height
using rectangle = std::array<std::uint32_t, 4>;  // x, y, width, height

template <class T>
using by_name = std::map<std::string, answer<T>>;

struct stream_record {
    std::uint32_t id = 0;
    answer<qw::map> info, settings, debug;
};

struct channel_record {
    std::uint32_t id = 0;
    qw::map properties;
    answer<qw::map> info;
    answer<rectangle> crop;
    answer<size> crop_max;
    answer<by_name<std::vector<size>>> resolutions;
};

struct input_record {
    answer<qw::map> info;
    answer<rectangle> crop;
    answer<by_name<size>> resolution_unrotated;
};

struct output_record {
    answer<qw::map> info, settings;
};

struct system_record {
    answer<qw::map> caps;
};

struct mode_record {
    answer<qw::map> info;
};

template <class Record>
using by_id = std::map<std::uint32_t, answer<Record>>;

struct snapshot {
    answer<system_record> system;
    answer<mode_record> mode;
    answer<qw::map> stream_debug, stream_quota, stream_limit;
    answer<std::vector<stream_record>> streams;
    answer<qw::map> channel_info;
    answer<std::vector<channel_record>> channels;
    answer<std::vector<channel_record>> filtered;  // if not recorded: selected from the channels
    answer<by_id<input_record>> inputs;
    answer<by_id<output_record>> outputs;
    std::vector<std::pair<std::string, std::uint32_t>> formats = {
        {"h264", 0}, {"h265", 1}, {"jpeg", 2}, {"raw", 3}, {"av1", 10}};
};

// Returns the snapshot that $ORU_SNAPSHOT names, or why it cannot be read. It is read once.
const std::expected<snapshot, std::string>& current();

}  // namespace strict

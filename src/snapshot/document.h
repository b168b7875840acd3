// What a snapshot says: one record for each object of the video service, one answer for each
// question that can be asked. Everything points into the document itself, which nothing changes
// once it was read.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <oru.h>
#include <qwire.h>

namespace oru {

struct left_out {};

struct failure {
    const char* message;
};

template <class T>
using answer = std::variant<left_out, failure, T>;

using map_entries = std::span<const qw::map::entry>;  // ascending by key

struct rectangle {
    std::uint32_t x, y, width, height;
};

// Something that is asked for by name; lists of these ascend by name.
template <class T>
struct named {
    std::string_view name;
    answer<T> is;
};

struct stream_record {
    std::uint32_t id = 0;
    answer<map_entries> info, settings, debug;
};

using resolution_list = named<std::span<const OruResolution>>;

struct channel_record {
    std::uint32_t id = 0;
    map_entries properties;
    answer<map_entries> info;
    answer<rectangle> crop;
    answer<OruResolution> crop_max;
    answer<std::span<const resolution_list>> resolutions;
};

using mode_resolution = named<OruResolution>;

struct input_record {
    std::uint32_t id = 0;
    std::optional<failure> fails;
    answer<map_entries> info;
    answer<rectangle> crop;
    answer<std::span<const mode_resolution>> resolution_unrotated;
};

struct output_record {
    std::uint32_t id = 0;
    std::optional<failure> fails;
    answer<map_entries> info, settings;
};

struct system_record {
    answer<map_entries> caps;
};

struct mode_record {
    answer<map_entries> info;
};

struct format_record {
    const char* nick;
    std::uint32_t code;
};

struct document {
    std::string text;                           // of the file; texts without escapes stay in it
    std::pmr::monotonic_buffer_resource arena;  // what could not stay in the text, and the entries

    answer<system_record> system;
    answer<mode_record> mode;
    answer<map_entries> stream_debug, stream_quota, stream_limit;
    answer<std::vector<stream_record>> streams;
    answer<map_entries> channel_info;
    answer<std::vector<channel_record>> channels;
    answer<std::vector<channel_record>> channels_filtered;  // by the key "input"
    answer<std::vector<input_record>> inputs;               // these two ascend by id
    answer<std::vector<output_record>> outputs;
    std::optional<std::vector<format_record>> formats;
};

}  // namespace oru

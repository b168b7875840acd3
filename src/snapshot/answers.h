// A snapshot: the answers of the video service at one moment, read from a file or queried. Once
// made, it is owned by std::shared_ptr<const answers> and does not change.
//
// A service can answer more than a file can contain: ids may repeat, several codes may share a
// nick, texts and keys may be any bytes, a map may have a text under `$error`, and a value of
// another kind may have no JSON text. The reader never returns such answers, and the writer rejects
// them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "snapshot/arena.h"
#include "snapshot/value.h"

namespace snapshot {

struct left_out {};

struct failure {
    const char* message;  // may be empty
};

// A file may leave out any answer. A service never does.
template <class T>
using answer = std::variant<left_out, failure, T>;

using map_entries = std::span<const entry>;  // ascending by key

// Pixels.
struct resolution {
    std::uint32_t width, height;

    bool operator==(const resolution&) const = default;
};

struct rectangle {
    std::uint32_t x, y, width, height;

    bool operator==(const rectangle&) const = default;
};

// One of several answers to a query that takes a name. Lists of these ascend by name.
template <class T>
struct named_answer {
    std::string_view name;
    answer<T> value;
};

struct stream_record {
    std::uint32_t id = 0;
    answer<map_entries> info = {}, settings = {}, debug = {};
};

using resolution_list = named_answer<std::span<const resolution>>;

struct channel_record {
    std::uint32_t id = 0;
    map_entries properties = {};
    answer<map_entries> info = {};
    answer<rectangle> crop = {};
    answer<resolution> crop_max = {};
    answer<std::span<const resolution_list>> resolutions = {};
};

using mode_resolution = named_answer<resolution>;

struct input_record {
    std::uint32_t id = 0;
    std::optional<failure> fails = {};  // if it cannot be opened
    answer<map_entries> info = {};
    answer<rectangle> crop = {};
    answer<std::span<const mode_resolution>> resolution_unrotated = {};
};

struct output_record {
    std::uint32_t id = 0;
    std::optional<failure> fails = {};  // if it cannot be opened
    answer<map_entries> info = {}, settings = {};
};

struct system_record {
    answer<map_entries> caps;
};

struct mode_record {
    answer<map_entries> info;
};

struct format_record {
    std::string_view nick;  // followed by a NUL
    std::uint32_t code;
};

// The formats if a file leaves them out.
inline constexpr format_record default_formats[] = {
    {"h264", 0}, {"h265", 1}, {"jpeg", 2}, {"raw", 3}, {"av1", 10}};

struct records {
    std::optional<std::string_view> about;
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

struct answers : records {
    answers() = default;

    // Copies the records and shares what they point to.
    explicit answers(std::shared_ptr<const answers> original)
        : records(*original), base(std::move(original)) {}

    // The records point into these three.
    std::string text;       // of the file
    snapshot::arena arena;  // texts that are not in a file, or with escapes there; entries
    std::shared_ptr<const answers> base;
};

}  // namespace snapshot

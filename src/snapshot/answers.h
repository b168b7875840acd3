// A snapshot: the answers of the video service at one moment, read from a file or queried. Once
// made, it is owned by std::shared_ptr<const answers> and does not change.
//
// A service can answer more than a file can contain: ids may repeat, several codes may share a
// nick, texts and keys may be any bytes, a map may have a text under `$error`, and a value of
// another kind may have no JSON text. The reader never returns such answers, and the writer rejects
// them.
#pragma once

#include <cstddef>
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

// Each record has the subject of its queries, and a function each_answer(visit) that calls
// `visit(name, member)` for each answer in the order of the document, with its name there and a
// pointer to the member of the record.

struct stream_record {
    static constexpr const char* subject = "stream";

    std::uint32_t id = 0;
    answer<map_entries> info = {}, settings = {}, debug = {};

    static void each_answer(auto&& visit) {
        visit("info", &stream_record::info);
        visit("settings", &stream_record::settings);
        visit("debug", &stream_record::debug);
    }
};

using resolution_list = named_answer<std::span<const resolution>>;

struct channel_record {
    static constexpr const char* subject = "channel";

    std::uint32_t id = 0;
    map_entries properties = {};
    answer<map_entries> info = {};
    answer<rectangle> crop = {};
    answer<resolution> crop_max = {};
    answer<std::span<const resolution_list>> resolutions = {};

    static void each_answer(auto&& visit) {
        visit("properties", &channel_record::properties);
        visit("info", &channel_record::info);
        visit("crop", &channel_record::crop);
        visit("crop_max", &channel_record::crop_max);
        visit("resolutions", &channel_record::resolutions);
    }
};

using mode_resolution = named_answer<resolution>;

struct input_record {
    static constexpr const char* subject = "input";

    std::uint32_t id = 0;
    std::size_t place = 0;              // in the list of the file
    std::optional<failure> fails = {};  // if it cannot be opened
    answer<map_entries> info = {};
    answer<rectangle> crop = {};
    answer<std::span<const mode_resolution>> resolution_unrotated = {};

    static void each_answer(auto&& visit) {
        visit("info", &input_record::info);
        visit("crop", &input_record::crop);
        visit("resolution_unrotated", &input_record::resolution_unrotated);
    }
};

struct output_record {
    static constexpr const char* subject = "output";

    std::uint32_t id = 0;
    std::size_t place = 0;              // in the list of the file
    std::optional<failure> fails = {};  // if it cannot be opened
    answer<map_entries> info = {}, settings = {};

    static void each_answer(auto&& visit) {
        visit("info", &output_record::info);
        visit("settings", &output_record::settings);
    }
};

struct system_record {
    static constexpr const char* subject = "system";

    answer<map_entries> caps;

    static void each_answer(auto&& visit) { visit("caps", &system_record::caps); }
};

struct mode_record {
    static constexpr const char* subject = "mode";

    answer<map_entries> info;

    static void each_answer(auto&& visit) { visit("info", &mode_record::info); }
};

struct format_record {
    std::string_view nick;  // followed by a NUL
    std::uint32_t code;
};

// The formats if a file leaves them out.
inline constexpr format_record default_formats[] = {
    {"h264", 0}, {"h265", 1}, {"jpeg", 2}, {"raw", 3}, {"av1", 10}};

// A member of the document.
struct document_member {
    const char* object;  // "stream"
    const char* name;    // of its member, "quota"; NULL if the answer is the object itself
    const char* query;   // "stream quota", for messages
};

// The version of the format, which the writer writes and beyond which the reader does not read.
inline constexpr std::uint32_t format_version = 1;

struct records {
    std::optional<std::string_view> about;
    std::optional<std::string_view> recorded;  // see utc_time.h
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

    // The same for the document: calls `visit(document_member, member)`.
    static void each_answer(auto&& visit) {
        visit(document_member{"system", nullptr, "system"}, &records::system);
        visit(document_member{"mode", nullptr, "mode"}, &records::mode);
        visit(document_member{"stream", "debug", "stream debug"}, &records::stream_debug);
        visit(document_member{"stream", "quota", "stream quota"}, &records::stream_quota);
        visit(document_member{"stream", "limit", "stream limit"}, &records::stream_limit);
        visit(document_member{"stream", "all", "streams"}, &records::streams);
        visit(document_member{"channel", "info", "channel info"}, &records::channel_info);
        visit(document_member{"channel", "all", "channels"}, &records::channels);
        visit(document_member{"channel", "filtered", "channels of inputs"},
              &records::channels_filtered);
        visit(document_member{"input", "all", "inputs"}, &records::inputs);
        visit(document_member{"output", "all", "outputs"}, &records::outputs);
    }
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

// A stream in the stream section, and what the section's three arrays have in common.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <oru.h>

// The codes of the service's video formats that the report treats differently.
namespace format_code {
inline constexpr std::uint32_t h264 = 0;
inline constexpr std::uint32_t h265 = 1;
inline constexpr std::uint32_t jpeg = 2;
inline constexpr std::uint32_t raw = 3;
inline constexpr std::uint32_t unreported = 6;
inline constexpr std::uint32_t av1 = 10;
inline constexpr std::uint32_t none = 0xFFFFFFFF;
}  // namespace format_code

// A reported stream. Its maps are never released.
struct stream_snapshot_entry {
    std::uint32_t id;
    OruMap* info;
    OruMap* settings;
    OruMap* debug;
};

// These print the element of `entry` in the arrays "streams" (one line: what the stream is and how
// it runs), "streaminfo" (its configuration in up to three groups) and "streamstatistics" (one
// line: its counters and those of its clients). The element of the stream with the id `last_id` is
// the last one.
void print_stream_summary(const stream_snapshot_entry& entry, std::uint32_t last_id);
void print_stream_settings(const stream_snapshot_entry& entry, std::uint32_t last_id);
void print_stream_statistics(const stream_snapshot_entry& entry, std::uint32_t last_id);

// The picture of a stream in its summary and its settings.
struct stream_picture {
    std::uint32_t format;    // the code, or format_code::none
    std::string name;        // the format's name, or the subformat of a raw stream
    std::string resolution;  // such as 1920x1080
};
stream_picture picture_of(const stream_snapshot_entry& entry);

// Returns the number under `key` as the double that the records contain, 0 if it is absent.
inline double figure_of(OruMap* map, const char* key) {
    return oru_map_get_uint32(map, key, 0);
}

// Returns the name of a stream in each array, such as id/0x0001.
std::string stream_label(std::uint32_t id);

// Returns the whole seconds of a duration as hours, minutes and seconds, such as 100:00:59.
std::string duration_text(std::int64_t microseconds);

// Prints an element that takes one line: the stream's label and `text`.
void print_stream_line(std::uint32_t id, std::string_view text, std::uint32_t last_id);

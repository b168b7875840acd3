// What the stream section keeps of one stream, and what its three arrays have in common.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <oru.h>

// Codes of the service's video formats that the report treats in ways of their own.
namespace format_code {
inline constexpr std::uint32_t h264 = 0;
inline constexpr std::uint32_t h265 = 1;
inline constexpr std::uint32_t jpeg = 2;
inline constexpr std::uint32_t raw = 3;
inline constexpr std::uint32_t unreported = 6;
inline constexpr std::uint32_t av1 = 10;
inline constexpr std::uint32_t none = 0xFFFFFFFF;
}  // namespace format_code

// One reported stream. The maps are plain references that nobody releases: they live until the
// process ends.
struct stream_snapshot_entry {
    std::uint32_t id;
    OruMap* info;
    OruMap* settings;
    OruMap* debug;
};

// The picture of a stream as its summary and its settings tell it.
struct stream_picture {
    std::uint32_t format;    // the code, format_code::none when not set
    std::string name;        // the format's name; of a raw stream, its subformat
    std::string resolution;  // such as 1920x1080
};
stream_picture picture_of(const stream_snapshot_entry& entry);

// Returns a figure of a map as the double that the records hold it as, 0 when it is absent.
inline double figure_of(OruMap* map, const char* key) {
    return oru_map_get_uint32(map, key, 0);
}

// Returns the name under which a stream stands in each array, such as id/0x0001.
std::string stream_label(std::uint32_t id);

// Returns hours, minutes and seconds of a time, such as 100:00:59, whole seconds, hours not
// wrapped.
std::string duration_text(std::int64_t microseconds);

// Prints a stream's element of an array that has one element a line: its label over `text`. The
// stream with the id `last_id` ends the array.
void print_stream_line(std::uint32_t id, std::string_view text, std::uint32_t last_id);

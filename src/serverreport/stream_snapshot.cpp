#include "serverreport/stream_snapshot.h"

#include <charconv>
#include <cstdlib>

#include "report/output.h"
#include "video/format_name.h"
#include "video/native.h"

namespace {

// Appends the number with leading zeros up to `width` digits.
void append_padded(std::string& text, std::uint64_t number, std::size_t width, int base) {
    char digits[20];
    const char* end = std::to_chars(digits, digits + sizeof digits, number, base).ptr;
    const auto count = static_cast<std::size_t>(end - digits);
    text.append(width > count ? width - count : 0, '0').append(digits, count);
}

}  // namespace

stream_picture picture_of(const stream_snapshot_entry& entry) {
    const std::uint32_t format = native_map_get_uint(entry.settings, "format", format_code::none);
    // The size of a raw stream depends on its source, so the info map contains it.
    const bool is_raw = format == format_code::raw;
    OruMap* size = is_raw ? entry.info : entry.settings;
    return {
        .format = format,
        .name = is_raw ? oru_map_get_string(entry.settings, "subformat", nullptr, "NV12")
                       : format_to_name(format),
        .resolution = std::to_string(oru_map_get_uint32(size, "width", 0)) + 'x' +
                      std::to_string(oru_map_get_uint32(size, "height", 0)),
    };
}

std::string stream_label(std::uint32_t id) {
    std::string label = "id/0x";
    append_padded(label, id, 4, 16);
    return label;
}

std::string duration_text(std::int64_t microseconds) {
    const std::int64_t seconds = microseconds / 1'000'000;
    const auto magnitude = static_cast<std::uint64_t>(std::abs(seconds));
    std::string text = seconds < 0 ? "-" : "";
    append_padded(text, magnitude / 3600, 2, 10);
    text += ':';
    append_padded(text, magnitude / 60 % 60, 2, 10);
    text += ':';
    append_padded(text, magnitude % 60, 2, 10);
    return text;
}

void print_stream_line(std::uint32_t id, std::string_view text, std::uint32_t last_id) {
    print("        { \"" + stream_label(id) + "\" : ");
    print(text);
    print(id == last_id ? " }\n" : " },\n");
}

#include "serverreport/stream_summary.h"

#include <map>
#include <string>
#include <variant>

#include "report/json.h"

void print_stream_summary(const stream_snapshot_entry& entry, std::uint32_t last_id) {
    stream_picture picture = picture_of(entry);
    const auto info = [&](const char* key) { return oru_map_get_uint32(entry.info, key, 0); };

    std::map<std::string, std::variant<std::string, std::uint32_t>> summary{
        {"identity", oru_map_get_string(entry.settings, "identity", nullptr, "N/A")},
        {"channel", info("channel")},
        {"resolution", std::move(picture.resolution)},
        {"format", std::move(picture.name)},
        {"framerate", info("framerate")},
        {"bitrate", info("bitrate")},
        {"duration", duration_text(oru_map_get_int64(entry.info, "statistics.duration", 0))},
        {"framecount", info("statistics.frame_count")},
        {"failcount", info("statistics.failed_frames")},
        {"peers", info("peers")},
    };
    std::string key = "identity[0]";
    for (char& number = key[9]; number < '8'; ++number) {
        if (const char* identity = oru_map_get_string(entry.info, key.c_str(), nullptr, nullptr)) {
            summary.insert_or_assign(key, identity);
        }
    }

    std::string text;
    if (write_compact(summary, text)) {
        print_stream_line(entry.id, text, last_id);
    }
}

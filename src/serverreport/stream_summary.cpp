#include "serverreport/stream_summary.h"

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include "report/json.h"

namespace {

// The service names eight clients of a stream at most.
constexpr std::array identities = {"identity[0]", "identity[1]", "identity[2]", "identity[3]",
                                   "identity[4]", "identity[5]", "identity[6]", "identity[7]"};

}  // namespace

void print_stream_summary(const stream_snapshot_entry& entry, std::uint32_t last_id) {
    const stream_picture picture = picture_of(entry);
    const std::string duration =
        duration_text(oru_map_get_int64(entry.info, "statistics.duration", 0));
    const auto info = [&](const char* key) { return oru_map_get_uint32(entry.info, key, 0); };

    std::map<std::string_view, std::variant<std::string_view, std::uint32_t>> summary;
    summary["identity"] = oru_map_get_string(entry.settings, "identity", nullptr, "N/A");
    summary["channel"] = info("channel");
    summary["resolution"] = picture.resolution;
    summary["format"] = picture.name;
    summary["framerate"] = info("framerate");
    summary["bitrate"] = info("bitrate");
    summary["duration"] = duration;
    summary["framecount"] = info("statistics.frame_count");
    summary["failcount"] = info("statistics.failed_frames");
    summary["peers"] = info("peers");
    for (const char* key : identities) {
        if (const char* identity = oru_map_get_string(entry.info, key, nullptr, nullptr)) {
            summary[key] = identity;
        }
    }

    std::string text;
    if (write_compact(summary, text)) {
        print_stream_line(entry.id, text, last_id);
    }
}

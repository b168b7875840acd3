#include <array>
#include <map>
#include <string>
#include <string_view>

#include "report/json.h"
#include "serverreport/stream_snapshot.h"

// The members of the line in the order in which they are printed: these, then the identities of the
// stream's clients, then the rest.
struct stream_summary {
    std::uint32_t bitrate;
    std::uint32_t channel;
    std::string_view duration;
    std::uint32_t failcount;
    std::string_view format;
    std::uint32_t framecount;
    std::uint32_t framerate;
    std::string_view identity;
};
struct stream_summary_rest {
    std::uint32_t peers;
    std::string_view resolution;
};

namespace {

// The keys of the identities of a stream's clients. The service reports eight at most.
constexpr std::array identity_keys = {"identity[0]", "identity[1]", "identity[2]", "identity[3]",
                                      "identity[4]", "identity[5]", "identity[6]", "identity[7]"};

std::map<std::string_view, std::string_view> clients_of(OruMap* info) {
    std::map<std::string_view, std::string_view> clients;
    for (const char* key : identity_keys) {
        if (const char* identity = oru_map_get_string(info, key, nullptr, nullptr)) {
            clients[key] = identity;
        }
    }
    return clients;
}

}  // namespace

void print_stream_summary(const stream_snapshot_entry& entry, std::uint32_t last_id) {
    const stream_picture picture = picture_of(entry);
    const std::string duration =
        duration_text(oru_map_get_int64(entry.info, "statistics.duration", 0));
    const auto info = [&](const char* key) { return oru_map_get_uint32(entry.info, key, 0); };

    const stream_summary summary{
        .bitrate = info("bitrate"),
        .channel = info("channel"),
        .duration = duration,
        .failcount = info("statistics.failed_frames"),
        .format = picture.name,
        .framecount = info("statistics.frame_count"),
        .framerate = info("framerate"),
        .identity = oru_map_get_string(entry.settings, "identity", nullptr, "N/A"),
    };
    const stream_summary_rest rest{
        .peers = info("peers"),
        .resolution = picture.resolution,
    };
    std::string text;
    if (write_compact(merged(summary, clients_of(entry.info), rest), text)) {
        print_stream_line(entry.id, text, last_id);
    }
}

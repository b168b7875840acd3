#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "report/json.h"
#include "serverreport/stream_snapshot.h"
#include "video/native.h"

// The first members of a stream's line, in the order in which they are printed. They are doubles
// because the line has the number form of doubles, such as 3e+1.
struct stream_counters {
    double actual_framerate;
    double bitrate;
    double failcount;
    double framecount;
    double reclaimcount;
    std::optional<std::array<double, 2>> client_us;

    struct glaze {
        using line = stream_counters;
        static constexpr auto value =
            glz::object("actual-framerate", &line::actual_framerate, "bitrate", &line::bitrate,  //
                        "failcount", &line::failcount, "framecount", &line::framecount,          //
                        "reclaimcount", &line::reclaimcount,                                     //
                        "tlm[0].client_us", &line::client_us);
    };
};

namespace {

// The keys of a client's data. The service reports at most eight clients.
struct client_keys {
    const char* duration;
    const char* reclaim_count;
    const char* reclaim_histogram;
};
constexpr client_keys clients[] = {
    {"tlm[0].duration", "tlm[0].reclaim_count", "tlm[0].reclaim_histogram"},
    {"tlm[1].duration", "tlm[1].reclaim_count", "tlm[1].reclaim_histogram"},
    {"tlm[2].duration", "tlm[2].reclaim_count", "tlm[2].reclaim_histogram"},
    {"tlm[3].duration", "tlm[3].reclaim_count", "tlm[3].reclaim_histogram"},
    {"tlm[4].duration", "tlm[4].reclaim_count", "tlm[4].reclaim_histogram"},
    {"tlm[5].duration", "tlm[5].reclaim_count", "tlm[5].reclaim_histogram"},
    {"tlm[6].duration", "tlm[6].reclaim_count", "tlm[6].reclaim_histogram"},
    {"tlm[7].duration", "tlm[7].reclaim_count", "tlm[7].reclaim_histogram"},
};

stream_counters counters_of(const stream_snapshot_entry& entry) {
    stream_counters counters{
        .actual_framerate = figure_of(entry.info, "statistics.framerate"),
        .bitrate = figure_of(entry.info, "statistics.bitrate"),
        .failcount = figure_of(entry.info, "statistics.failed_frames"),
        .framecount = figure_of(entry.info, "statistics.frame_count"),
        .reclaimcount = figure_of(entry.info, "statistics.reclaim_count"),
        .client_us = {},
    };
    constexpr const char* client_time = "tlm[0].client_us";
    if (oru_map_contains(entry.debug, client_time) != FALSE) {
        const auto [first, second] = halves_of(oru_map_get_pair32u(entry.debug, client_time, 0));
        counters.client_us = {static_cast<double>(first), static_cast<double>(second)};
    }
    return counters;
}

}  // namespace

void print_stream_statistics(const stream_snapshot_entry& entry, std::uint32_t last_id) {
    std::map<std::string_view, std::string> durations;
    std::map<std::string_view, std::uint32_t> reclaim_counts;
    std::map<std::string_view, glz::raw_json> reclaim_histograms;
    for (const client_keys& client : clients) {
        const std::int64_t duration = oru_map_get_int64(entry.debug, client.duration, -1);
        if (duration >= 0) {
            durations[client.duration] = duration_text(duration);
        }
        const char* histogram =
            oru_map_get_string(entry.debug, client.reclaim_histogram, nullptr, nullptr);
        if (histogram == nullptr) {
            continue;
        }
        const std::uint32_t count = oru_map_get_uint32(entry.debug, client.reclaim_count, 0);
        if (count != 0) {
            reclaim_counts[client.reclaim_count] = count;
            // The service's text is a list without brackets. Nothing checks it.
            reclaim_histograms[client.reclaim_histogram] = '[' + std::string(histogram) + ']';
        }
    }

    std::string text;
    if (write_compact(merged(counters_of(entry), durations, reclaim_counts, reclaim_histograms),
                      text)) {
        print_stream_line(entry.id, text, last_id);
    }
}

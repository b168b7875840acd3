#include "serverreport/stream_statistics.h"

#include <array>
#include <map>
#include <optional>
#include <string>

#include "report/json.h"
#include "video/native.h"

// The line's first members in the order in which they are printed, all of them doubles.
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

// The service counts for eight clients at most; the number stands in the fifth place of a key.
template <class Read>
void for_each_client(std::string key, const Read& read) {
    for (char& number = key[4]; number < '8'; ++number) {
        read(key);
    }
}

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

std::map<std::string, std::string> durations_of(OruMap* debug) {
    std::map<std::string, std::string> durations;
    for_each_client("tlm[0].duration", [&](const std::string& key) {
        const std::int64_t duration = oru_map_get_int64(debug, key.c_str(), -1);
        if (duration >= 0) {
            durations.insert_or_assign(key, duration_text(duration));
        }
    });
    return durations;
}

}  // namespace

void print_stream_statistics(const stream_snapshot_entry& entry, std::uint32_t last_id) {
    const stream_counters counters = counters_of(entry);
    const auto durations = durations_of(entry.debug);
    std::map<std::string, std::uint32_t> reclaim_counts;
    std::map<std::string, glz::raw_json> reclaim_histograms;
    for_each_client("tlm[0].reclaim_histogram", [&](const std::string& key) {
        const char* histogram = oru_map_get_string(entry.debug, key.c_str(), nullptr, nullptr);
        if (histogram == nullptr) {
            return;
        }
        const std::string count_key = key.substr(0, key.find('.')) + ".reclaim_count";
        const std::uint32_t count = oru_map_get_uint32(entry.debug, count_key.c_str(), 0);
        if (count == 0) {
            return;
        }
        reclaim_counts.insert_or_assign(count_key, count);
        reclaim_histograms.insert_or_assign(key, '[' + std::string(histogram) + ']');
    });

    std::string text;
    if (write_compact(merged(counters, durations, reclaim_counts, reclaim_histograms), text)) {
        print_stream_line(entry.id, text, last_id);
    }
}

#include "serverreport/stream_statistics.h"

#include <map>
#include <string>
#include <utility>

#include "report/json.h"
#include "video/native.h"

namespace {

// The service counts for eight clients at most; the number stands in the fifth place of a key.
template <class Read>
void for_each_client(std::string key, const Read& read) {
    for (char& number = key[4]; number < '8'; ++number) {
        read(key);
    }
}

json counters_of(const stream_snapshot_entry& entry) {
    constexpr std::pair<const char*, const char*> printed_from_read[] = {
        {"bitrate", "statistics.bitrate"},
        {"framecount", "statistics.frame_count"},
        {"actual-framerate", "statistics.framerate"},
        {"failcount", "statistics.failed_frames"},
        {"reclaimcount", "statistics.reclaim_count"},
    };
    json counters;
    for (const auto& [printed, read] : printed_from_read) {
        counters[printed] = oru_map_get_uint32(entry.info, read, 0);
    }
    constexpr const char* client_time = "tlm[0].client_us";
    if (oru_map_contains(entry.debug, client_time) != FALSE) {
        const auto [first, second] = halves_of(oru_map_get_pair32u(entry.debug, client_time, 0));
        counters[client_time] = json::array_t{first, second};
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
    const json counters = counters_of(entry);
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

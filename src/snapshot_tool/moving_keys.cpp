#include "snapshot_tool/moving_keys.h"

#include <algorithm>
#include <iterator>

namespace snapshot_tool {
namespace {

struct moving_key {
    std::string_view pattern;  // "*" stands for any text
    snapshot_tool::movement movement;
};

// The manual page contains this table for users.
constexpr moving_key moving_keys[] = {
    {"statistics.failed_frames", movement::failures},
    {"statistics.reclaim_count", movement::failures},
    {"statistics.duration", movement::run_time},
    {"tlm[*].duration", movement::run_time},
    {"uptime", movement::run_time},
    {"statistics.framerate", movement::amount},
    {"global.capacity", movement::amount},
    {"global.encoded.peers", movement::amount},
    {"global.encoded.jpeg.peers", movement::amount},
    {"global.raw.peers", movement::amount},
    {"statistics.bitrate", movement::bit_rate},
    {"statistics.frame_count", movement::free},
    {"identity.*", movement::free},
    {"tlm[*].client_us", movement::free},
    {"tlm[*].reclaim_count", movement::free},
    {"tlm[*].reclaim_histogram", movement::free},
    {"global.*.peak", movement::free},
};

bool matches(std::string_view pattern, std::string_view key) {
    const auto star = pattern.find('*');
    if (star == std::string_view::npos) {
        return key == pattern;
    }
    const std::string_view begin = pattern.substr(0, star);
    const std::string_view end = pattern.substr(star + 1);
    return key.size() >= begin.size() + end.size() && key.starts_with(begin) && key.ends_with(end);
}

}  // namespace

movement movement_of(std::string_view key) {
    const auto* found = std::ranges::find_if(
        moving_keys, [&](const moving_key& moving) { return matches(moving.pattern, key); });
    return found != std::end(moving_keys) ? found->movement : movement::none;
}

}  // namespace snapshot_tool

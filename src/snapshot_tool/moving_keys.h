// The keys of maps whose values change while a device works as it should.
#pragma once

#include <string_view>

namespace snapshot_tool {

// How the value of a key moves by itself, and when a difference says that something is wrong.
enum class movement {
    none,      // it does not: every difference counts
    failures,  // counts failures: a higher rate counts
    run_time,  // rises: a fall is a restart
    amount,    // varies: a difference of more than a tenth counts
    bit_rate,  // varies much: one that at least halved or doubled counts
    free,      // no difference counts, nor that only one map contains the key
};

movement movement_of(std::string_view key);

}  // namespace snapshot_tool

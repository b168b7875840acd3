// Queries the video service for everything that a snapshot contains.
#pragma once

#include <cstdint>
#include <memory>

#include "snapshot/answers.h"

namespace snapshot_tool {

// After this many inputs in a row that cannot be opened, further inputs are queried only if a
// channel names them.
inline constexpr std::uint32_t most_missing_inputs = 1024;

// Runs every query once and returns the answers. The inputs queried are those that a channel names,
// and those that are counted, up to number `most_counted_inputs`. The list contains each of them,
// those that cannot be opened with their failure. Formats are the first of each code. If our client
// library answers from a snapshot with `recorded`, that time is kept. Throws a std::bad_alloc, or a
// std::length_error for an answer too large for memory.
std::shared_ptr<const snapshot::answers> query_service(std::uint32_t most_counted_inputs);

}  // namespace snapshot_tool

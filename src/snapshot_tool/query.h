// Queries the video service for everything that a snapshot contains.
#pragma once

#include <cstdint>
#include <memory>

#include "snapshot/answers.h"

namespace snapshot_tool {

// After this many inputs in a row that do not exist, no further input is queried only because it is
// counted.
inline constexpr std::uint32_t most_missing_inputs = 1024;

// Returns the answers of the service to each query, each asked once. Inputs are those that a
// channel names, and those that are counted, up to number `most_counted_inputs`; every input that
// was asked for is in the list, with its failure if it cannot be opened. Of several formats of one
// code only the first is taken. Throws a std::bad_alloc, or a std::length_error for an answer too
// large for memory.
std::shared_ptr<const snapshot::answers> query_service(std::uint32_t most_counted_inputs);

}  // namespace snapshot_tool

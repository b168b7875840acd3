// The inputs of a device: those that are counted, and those that its channels name.
#pragma once

#include <cstdint>
#include <set>

#include "snapshot/answers.h"

namespace snapshot_tool {

// Returns the number of inputs that the info common to all channels counts.
std::uint32_t input_count(snapshot::map_entries channel_info);

// Returns the number of the input that the info of a channel of inputs names.
std::uint32_t input_number(snapshot::map_entries info);

// Returns the numbers that the channels in `channels_filtered` name.
std::set<std::uint32_t> named_inputs(const snapshot::answers& answers);

}  // namespace snapshot_tool

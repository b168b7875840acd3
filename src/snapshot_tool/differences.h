// What differs between two snapshots of a device.
#pragma once

#include <functional>
#include <string_view>

#include "snapshot/answers.h"

namespace snapshot_tool {

// Receives a line without its line feed. A line that does not begin with a blank names an object of
// the device, or says that only one of the snapshots contains it. An alarming one says that
// something is gone, fails now, fails more often or restarted.
using line_receiver = std::function<void(std::string_view line, bool is_alarming)>;

// Compares everything that the snapshots say, except `about` and `recorded`. Values that move by
// themselves (moving_keys.h) count only if they say that something is wrong, unless `is_complete`.
// Long texts are cut unless `is_complete`. Takes time in proportion to both snapshots. Returns
// whether there is a difference.
bool find_differences(const snapshot::answers& older, const snapshot::answers& newer,
                      bool is_complete, const line_receiver& receive);

}  // namespace snapshot_tool

// The figures of a device in the text format of Prometheus.
#pragma once

#include <string>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Returns the lines. If the service was not reached, they contain only this and the version.
std::string exposition(const device& device);

}  // namespace snapshot_tool

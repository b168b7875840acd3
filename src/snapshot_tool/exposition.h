// The figures of a device in the text format of Prometheus.
#pragma once

#include <string>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Returns the lines. Of a service that answered nothing, only that is told.
std::string exposition(const device& of);

}  // namespace snapshot_tool

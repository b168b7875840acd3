// One stream in full.
#pragma once

#include "snapshot_tool/device.h"
#include "snapshot_tool/page.h"

namespace snapshot_tool {

// Adds everything that the snapshot has about a stream to the page.
void add_details(page& page, const device& device, const stream& stream);

}  // namespace snapshot_tool

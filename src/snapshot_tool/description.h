// The common part of the commands that print a device for people.
#pragma once

#include <span>

#include "snapshot_tool/device.h"
#include "snapshot_tool/heading.h"

namespace snapshot_tool {

struct description {
    snapshot_tool::device device;
    snapshot_tool::heading heading;
};

// Takes a device for a command with the arguments [FILE]: from FILE, otherwise from the service.
// Throws a std::runtime_error with the reason if no query was answered.
description take_description(std::span<const char* const> arguments);

}  // namespace snapshot_tool

// What the commands that print a device for people have in common.
#pragma once

#include <optional>
#include <string>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Runs a command [FILE]: asks the service, or FILE, and prints the description of what it answered.
// Returns as commands do. Throws a std::runtime_error with the reason when it answered nothing.
std::optional<int> print_description(int argc, char** argv, std::string (*describe)(const device&));

}  // namespace snapshot_tool

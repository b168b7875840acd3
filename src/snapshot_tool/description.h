// The common part of the commands that print a device for people.
#pragma once

#include <optional>
#include <string>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Runs a command with the arguments [FILE]: takes the figures from FILE, otherwise from the
// service, and prints their description. Returns what a command returns. Throws a
// std::runtime_error with the reason if no query was answered.
std::optional<int> print_description(int argc, char** argv, std::string (*describe)(const device&));

}  // namespace snapshot_tool

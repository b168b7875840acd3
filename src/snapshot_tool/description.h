// The common part of the commands that print a device for people.
#pragma once

#include <span>
#include <string>

#include "snapshot_tool/device.h"

namespace snapshot_tool {

// Runs a command with the arguments [FILE]: takes the figures from FILE, otherwise from the
// service, and prints their description. Returns the exit status. Throws a std::runtime_error with
// the reason if no query was answered.
int print_description(std::span<const char* const> arguments,
                      std::string (*describe)(const device&));

}  // namespace snapshot_tool

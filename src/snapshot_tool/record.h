#pragma once

#include "snapshot_tool/command.h"

// record [-o FILE] [--about TEXT] [--redact]: writes what the video service answers now as a
// snapshot, to standard output or in the place of FILE.
command_function record;

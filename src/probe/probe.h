#pragma once

#include "snapshot_tool/command.h"

// probe: asks the video service everything that can be asked, and says of each operation whether
// its library keeps to what the tools count on.
command_function probe;

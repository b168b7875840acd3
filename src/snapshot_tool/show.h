#pragma once

#include "snapshot_tool/command.h"

// show [FILE]: the device as tables for a person.
command_function show;

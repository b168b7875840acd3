#pragma once

#include "snapshot/command.h"

// show [FILE]: the device as tables for a person.
command_function show;

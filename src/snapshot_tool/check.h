#pragma once

#include "snapshot_tool/command.h"

// check FILE...: says of each FILE whether it is a snapshot, and if not, what is wrong and where.
command_function check;

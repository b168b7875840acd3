#pragma once

#include "snapshot_tool/command.h"

// graph [FILE]: the device as a picture, in the language of Graphviz.
command_function graph;

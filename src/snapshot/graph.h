#pragma once

#include "snapshot/command.h"

// graph [FILE]: the device as a picture, in the language of Graphviz.
command_function graph;

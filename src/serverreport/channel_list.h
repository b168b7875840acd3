// The list of channels, which two sections print.
#pragma once

#include "video/owned.h"

// Returns all channels. Prints a line and returns NULL if there are none or the query fails.
owned_object_list all_channels();

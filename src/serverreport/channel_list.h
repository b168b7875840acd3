// The service's channels, as two sections of the server report walk them.
#pragma once

#include "video/owned.h"

// Returns all channels. When there are none, or they cannot be had, says so on standard output and
// returns NULL.
owned_object_list all_channels();

// One element of the array "streaminfo": how a stream is configured, in up to three groups.
#pragma once

#include "serverreport/stream_snapshot.h"

// Prints the element of `entry`; the stream with the id `last_id` ends the array.
void print_stream_settings(const stream_snapshot_entry& entry, std::uint32_t last_id);

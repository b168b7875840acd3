// One line of the array "streamstatistics": a stream's running counters and those of its clients.
#pragma once

#include "serverreport/stream_snapshot.h"

// Prints the line of `entry`; the stream with the id `last_id` ends the array.
void print_stream_statistics(const stream_snapshot_entry& entry, std::uint32_t last_id);

// One line of the array "streams": what a stream is and how it fares, in ten members or more.
#pragma once

#include "serverreport/stream_snapshot.h"

// Prints the line of `entry`; the stream with the id `last_id` ends the array.
void print_stream_summary(const stream_snapshot_entry& entry, std::uint32_t last_id);

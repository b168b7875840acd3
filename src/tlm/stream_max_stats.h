// The feeder tool's key=value block: the peak figures of the service's streams.
#pragma once

// Prints its four lines; a figure that the service does not give is -1.
void print_stream_max_stats();

// The server report's section about the streams' quotas and limits, and what of them is in use.
#pragma once

// Prints the section. A quota or a limit that cannot be had ends the process with status 1.
void print_stream_quotas();

// The server report's section about the running streams: their summaries, settings and statistics.
#pragma once

// Prints the section. A stream list that cannot be had ends the process with status 1.
void list_streams();

// The server report's section about the resolutions that each channel offers.
#pragma once

// Prints the section. A failing query ends it with a line on standard output.
void list_available_resolutions();

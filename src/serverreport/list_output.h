// The server report's section about the HDMI output.
#pragma once

// Prints the section; nothing on a device that has no output. An output that cannot be had, or
// whose settings or state cannot, ends the process with status 1.
void list_output();

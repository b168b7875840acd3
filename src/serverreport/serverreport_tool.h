// oru-serverreport-tool prints the video chapter of the device's server report.
#pragma once

// Runs the tool. `argv` begins with the program's name. Returns 0 when every requested section has
// run; ends the process with status 1 on a fatal failure.
int serverreport_tool_main(int argc, char** argv);

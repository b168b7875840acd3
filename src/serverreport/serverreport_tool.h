// oru-serverreport-tool: the video chapter of the device's server report.
#pragma once

// Runs the tool on a command line that holds the program's name first. Returns 0 when every
// requested section has run; leaves the process with status 1 on a fatal failure.
int serverreport_tool_main(int argc, char** argv);

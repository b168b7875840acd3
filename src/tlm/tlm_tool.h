// oru-tlm-tool: figures of the video service for the device's in-device data service.
#pragma once

// Runs the tool on a command line that holds the program's name first. Returns 0 when every
// requested section has run; leaves the process with status 1 on a failure.
int tlm_tool_main(int argc, char** argv);

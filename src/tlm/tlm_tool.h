// oru-tlm-tool prints figures of the video service for the device's data service.
#pragma once

// Runs the tool. `argv` begins with the program's name. Returns 0 when every requested section has
// run; ends the process with status 1 on a failure.
int tlm_tool_main(int argc, char** argv);

// The feeder tool's document about the device: its inputs, their capture modes, and the view mode.
#pragma once

// Prints the document. Throws a std::runtime_error when a table cannot be written as JSON.
void print_system_info();

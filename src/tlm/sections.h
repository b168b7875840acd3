// The sections of the feeder tool, in the order in which they are printed. Each prints to standard
// output.
#pragma once

// Prints the peaks of the streams as four key=value lines. A value is -1 if the service does not
// report it.
void print_stream_max_stats();

// Prints the device's inputs, their capture modes and its view mode as a JSON document. Throws a
// std::runtime_error if the bus library cannot write a table as JSON.
void print_system_info();

// Prints how many streams each client identity has started as a JSON document. Prints nothing if
// the service counts no identities.
void print_identity_info();

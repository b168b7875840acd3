// The sections of the server report, in the order in which they are printed. Each prints to
// standard output.
#pragma once

// Prints the device's record of signal-processor assertions from earlier runs as compact JSON.
// Prints nothing if there is no record. A record that is not valid JSON, comments allowed, is
// printed unchanged.
void print_previous_assertions();

// Prints the summaries, settings and statistics of the running streams. Ends the process with
// status 1 if the query for the streams fails.
void list_streams();

// Prints the quotas and limits of the streams, and how much of them is in use. Ends the process
// with status 1 if the query for the quotas or the limits fails.
void print_stream_quotas();

// Prints the state of the HDMI output. Prints nothing if the device has no output. Ends the process
// with status 1 if a query about the output fails.
void list_output();

// The remaining sections end with a line on standard output if a query fails.

// Prints the channels and their crop rectangles.
void list_channels();

// Prints the resolutions that each channel offers.
void list_available_resolutions();

// Prints the inputs and their crop rectangles. An input whose crop rectangle cannot be read is left
// out.
void list_inputs();

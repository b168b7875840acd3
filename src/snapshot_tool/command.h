// The commands of oru-snapshot, and what several of them use.
#pragma once

#include <optional>

#include "snapshot/load.h"

namespace snapshot_tool {

// A command: argv[0] is its name, argv[argc] NULL. Returns the exit status of the program, or
// nothing if the arguments are wrong; main then prints the usage.
using command_function = std::optional<int>(int argc, char** argv);

// FILE...: checks whether each file is a snapshot.
command_function check;
// [FILE]: prints the device as a drawing in the language of Graphviz.
command_function graph;
// [-o FILE] [FILE]: prints the device's figures in the text format of Prometheus.
command_function metrics;
// [-o FILE] [--about TEXT] [--redact]: prints the service's answers as a snapshot.
command_function record;
// [FILE]: prints the device in tables.
command_function show;

// Returns the path that a FILE argument names: "-" is standard input.
const char* path_of(const char* file);

// Returns the snapshot in `file`, or why it cannot be read. If `file` is NULL, queries the service.
snapshot::loaded take_snapshot(const char* file);

// Returns whether `file` is a name. If not, prints a line on standard error; the exit status is
// then 2.
bool is_file_name(const char* file);

// Returns `status` if everything printed so far reached standard output, otherwise 1 with a line on
// standard error. Every command that prints ends with it.
int finish(int status);

}  // namespace snapshot_tool

// The commands of oru-snapshot, and what they share.
#pragma once

#include <optional>

#include "snapshot/load.h"

namespace snapshot_tool {

// A command: argv[0] is its name, argv[argc] NULL. Returns the program's exit status, or nothing if
// it does not understand its arguments; main then prints the usage.
using command_function = std::optional<int>(int argc, char** argv);

command_function check;  // FILE...: whether each is a snapshot
command_function graph;  // [FILE]: the device as a drawing in the language of Graphviz
command_function
    metrics;  // [-o FILE] [FILE]: the device's figures in the text format of Prometheus
command_function
    record;             // [-o FILE] [--about TEXT] [--redact]: the service's answers as a snapshot
command_function show;  // [FILE]: the device in tables

// Returns the path that a FILE argument names: "-" is standard input.
const char* path_of(const char* file);

// Returns the snapshot in `file`, otherwise, if that is NULL, the answers of the service, or why
// there is none.
snapshot::loaded take_snapshot(const char* file);

// Whether `file` is a name. Prints a line on standard error if not; the exit status is then 2.
bool is_file_name(const char* file);

// Returns `status` if everything printed so far reached standard output, otherwise 1 with a line on
// standard error. Every command that prints ends with it.
int finish(int status);

}  // namespace snapshot_tool

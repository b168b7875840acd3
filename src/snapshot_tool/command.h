// The commands of oru-snapshot, and what several of them use.
#pragma once

#include <optional>
#include <string>

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

// Returns the name of a FILE argument for messages: "-" is /dev/stdin.
std::string name_of(const char* file);

// Returns the snapshot in `file`, or why it cannot be read. "-" is standard input.
snapshot::loaded load_file(const char* file);

// Returns the snapshot in `file`, or why it cannot be read. If `file` is NULL, queries the service.
snapshot::loaded take_snapshot(const char* file);

// Returns whether the program may open `file`, which an argument names. A program that runs with
// more rights than its caller (set-user-ID, capabilities) may not, unless `file` is "-": the caller
// may lack the right to read or write it. If not, prints a line on standard error; the exit status
// is then 2.
bool may_open(const char* file);

// Returns whether `file` is a name, and the program may open it. If not, does the same.
bool is_file_name(const char* file);

// Returns `status` if everything printed so far reached standard output, otherwise 1 with a line on
// standard error. Every command that prints ends with it.
int finish(int status);

}  // namespace snapshot_tool

// The commands of oru-snapshot, and what several of them use.
#pragma once

#include <span>
#include <string>

#include "command_line/command_line.h"
#include "snapshot/load.h"

namespace snapshot_tool {

using command_line::command;

extern const command check;    // whether files are snapshots
extern const command diff;     // what differs between two snapshots
extern const command graph;    // the device as a drawing in the language of Graphviz
extern const command metrics;  // the device's figures in the text format of Prometheus
extern const command record;   // the service's answers, or a FILE, as a snapshot
extern const command show;     // the device in tables

// The exit status of a command that fails. A command whose manual gives 1 another meaning sets 2.
inline int failure_status = 1;

// Returns the name of a FILE argument for messages: "-" is /dev/stdin.
std::string name_of(const char* file);

// Returns the snapshot in `file`, or why it cannot be read. "-" is standard input. Throws as
// require_may_open() does.
snapshot::loaded load_file(const char* file);

// Returns the argument of a command that takes [FILE]; NULL without one.
const char* only_file(std::span<const char* const> arguments);

// Returns the snapshot in `file`, or why it cannot be read. If `file` is NULL, queries the service.
snapshot::loaded take_snapshot(const char* file);

// Throws a std::runtime_error if the program may not open `file`, which an argument names; the exit
// status is then 2. A program that runs with more rights than its caller (set-user-ID,
// capabilities) opens only "-": the caller may lack the right to read or write the file.
void require_may_open(const char* file);

// Returns `status` if everything printed so far reached standard output, otherwise failure_status
// with a line on standard error. Every command that prints ends with it.
int finish(int status);

}  // namespace snapshot_tool

// What the commands of oru-snapshot have in common.
#pragma once

#include <optional>

// A command: argv[0] is its name, argv[argc] NULL. Returns the program's exit status, or nothing
// when it does not understand its arguments; main then shows how the program is called.
using command_function = std::optional<int>(int argc, char** argv);

// Returns `status` when everything printed so far reached standard output, else 1 with a line on
// standard error. Every command that prints ends with it.
int finish(int status);

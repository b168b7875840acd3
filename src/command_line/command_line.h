// The command lines of oru-snapshot and oru-probe, which GLib parses.
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>

#include <glib.h>

namespace command_line {

// A program, or one of its commands.
struct command {
    const char* name;       // with that of the program: "oru-snapshot show"
    const char* arguments;  // in the usage, for example "[FILE]"; NULL if it takes none
    std::size_t fewest_arguments = 0;
    std::size_t most_arguments = 0;
    const char* summary;  // what it does, in at most 75 columns
    const char* example;  // a command line
    const char* manual;
    // Beside --help. Texts and paths are G_OPTION_ARG_FILENAME, which accepts any bytes.
    std::span<const GOptionEntry> options = {};
    // Returns the exit status. The options are set, and no argument is empty.
    int (*run)(std::span<const char* const> arguments);
};

// A command line that is wrong, in one line without the name of the command. What is quoted from
// the command line must be printable.
class wrong_usage : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Runs a command, or prints its help. argv[0] is ignored. Returns the exit status: 2 with two lines
// on standard error if the command line is wrong, also if the command throws a wrong_usage; 1 if
// the help cannot be written.
int run(const command& command, int argc, char** argv);

// Returns `status` if everything printed so far reached standard output, otherwise `lost` with a
// line on standard error that begins with the program's name.
int finish(const char* program, int status, int lost = 1);

}  // namespace command_line

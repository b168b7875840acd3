// Runs a program as its users do and keeps everything it said.
#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

// Where a stream of the program goes instead of being captured.
inline const std::string closed_stream = "-";

// The two ways in which a stream takes nothing.
inline const std::vector<std::string> unwritable = {"/dev/full", closed_stream};

struct command {
    std::string executable = {};
    std::vector<std::string> argv = {};  // argv[0] included, whatever the test wants it to be
    std::vector<std::string> environment =
        {};  // "NAME=value"; all there is but for sanitizer options
    std::string stdin_from = "/dev/null";
    std::string stdout_to = {};  // empty: captured; closed_stream; or a path to write to
    std::string stderr_to = {};  // likewise
    std::chrono::seconds time_limit{60};
};

struct result {
    std::string out = {};
    std::string err = {};
    int status = -1;  // the exit status, or -1 when the program did not exit by itself
    int signal = 0;   // the signal that ended it, or 0

    bool operator==(const result&) const = default;
};

// Shows the texts as they are, so that a difference can be read.
std::ostream& operator<<(std::ostream& stream, const result& shown);

// Runs the program to its end. Throws when it cannot be started; kills it when the time limit has
// passed.
result run(const command& what);

// What a run that ended by itself with this output looks like.
inline result ended(int status, std::string_view out, std::string_view err = "") {
    return {.out = std::string(out), .err = std::string(err), .status = status};
}

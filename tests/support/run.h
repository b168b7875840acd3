// Runs a program as its users do and captures its output.
#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

// As the target of a stream: the stream is closed instead of captured.
inline const std::string closed_stream = "-";

// Targets of a stream to which every write fails.
inline const std::vector<std::string> unwritable = {"/dev/full", closed_stream};

struct command {
    std::string executable = {};
    std::vector<std::string> argv = {};  // with argv[0], which the test chooses freely
    // "NAME=value". Of the test's own environment, run() adds only what it needs, such as sanitizer
    // options.
    std::vector<std::string> environment = {};
    std::string stdin_from = "/dev/null";
    std::string stdout_to = {};  // empty: captured; closed_stream; or a path to write to
    std::string stderr_to = {};  // likewise
    std::chrono::seconds time_limit{60};
};

struct result {
    std::string out = {};
    std::string err = {};
    int status = -1;  // the exit status, or -1 if a signal ended the program
    int signal = 0;   // the signal that ended it, or 0

    bool operator==(const result&) const = default;
};

// Shows the texts unescaped, for readable differences.
std::ostream& operator<<(std::ostream& stream, const result& shown);

// Runs the program to its end. Throws if it cannot be started. Kills it after the time limit.
result run(const command& what);

// Returns the result of a run that exited with this status and output.
inline result ended(int status, std::string_view out, std::string_view err = "") {
    return {.out = std::string(out), .err = std::string(err), .status = status};
}

// The two tools, run through their links on a snapshot that the test writes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/run.h"

// Returns the path of a program or link: in $ORU_TEST_BIN_DIR, otherwise among the programs of this
// build. The variable makes the same tests run the programs of another build or an installation.
std::string program(std::string_view name);

// Options of a run.
struct run_options {
    std::optional<std::string> assertions = {};  // content of the record of earlier assertions
    std::string stdout_to = {};                  // see struct command
    std::string stderr_to = {};
    std::vector<std::string> environment = {};  // added to what the run itself needs
};

// Runs `oru-tlm-tool` with these arguments, argv[0] left out, on a snapshot of this text.
result tlm(std::string_view snapshot, const std::vector<std::string>& arguments,
           const run_options& options = {});

// Runs `oru-serverreport-tool` likewise. Without the option `assertions`, no record of earlier
// assertions exists: the run never reads the machine's own.
result report(std::string_view snapshot, const std::vector<std::string>& arguments,
              const run_options& options = {});

// Returns the environment variables that redirect /etc/oru to `directory`.
std::vector<std::string> etc_oru_in(std::string_view directory);

using tool_and_switch = std::pair<std::string, std::string>;

// Returns each tool with each of its section switches by itself, the feeder tool with all of its
// switches at once, and `extra`.
std::vector<tool_and_switch> every_switch_and(const std::vector<tool_and_switch>& extra);

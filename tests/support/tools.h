// The two tools, run through their links on a snapshot that the test writes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/run.h"

// Returns the path of a program or link in the build's directory of programs, or in
// $ORU_TEST_BIN_DIR, which lets the same tests run what was built or installed elsewhere.
std::string program(std::string_view name);

// What a run may differ in from the plain one.
struct run_options {
    std::optional<std::string> assertions = {};  // the content of the record of earlier assertions
    std::string stdout_to = {};                  // as in struct command
    std::string stderr_to = {};
    std::vector<std::string> environment = {};  // beside what the run itself needs
};

// Runs `oru-tlm-tool` with these arguments, argv[0] left out, on a snapshot of this text.
result tlm(std::string_view snapshot, const std::vector<std::string>& arguments,
           const run_options& options = {});

// Runs `oru-serverreport-tool` likewise. There is no record of earlier assertions unless the
// options hold one: what the machine has in that place never shows.
result report(std::string_view snapshot, const std::vector<std::string>& arguments,
              const run_options& options = {});

// Returns the environment that puts the files of `directory` in the place of those of /etc/oru.
std::vector<std::string> etc_oru_in(std::string_view directory);

using tool_and_switch = std::pair<std::string, std::string>;

// Returns both tools with each of their sections' switches by itself, the feeder tool with all of
// them at once, and `more`.
std::vector<tool_and_switch> every_switch_and(const std::vector<tool_and_switch>& more);

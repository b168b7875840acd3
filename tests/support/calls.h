// What the tools ask of the video service, as the client that forgives nothing logs it.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/tools.h"

// The lines of one run's log. What an object is called there says where it came from: "stream 1
// settings"; the second of one name ends in "#2".
struct calls {
    result ended;
    // Every query of the service, every change of a map, every release and every text that was
    // printed through GLib, in their order; at the end what was never released.
    std::string queries = {};
    // The same with every text that was printed by other means. Consecutive texts are joined.
    std::string steps = {};
    // What was read of maps that were held: which key of which, by which getter, with which
    // default. A "find" is a look-up in the native map.
    std::set<std::string> reads = {};
    // The class of the formats, taken and released.
    std::string classes = {};
    // What the context of the command line was given.
    std::string command_line = {};
};

// Runs the tools as tlm() and report() do, but on that client, `more` in their environment.
calls tlm_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                const std::vector<std::string>& more = {}, const std::string& stdout_to = {});
calls report_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                   const std::vector<std::string>& more = {}, const std::string& stdout_to = {});

// Returns the lines of a text as a set.
std::set<std::string> lines_of(std::string_view text);

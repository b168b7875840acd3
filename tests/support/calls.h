// The calls of the tools to the video service, as the strict client logs them.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/tools.h"

// The lines of one run's log. The log names an object after its origin, for example "stream 1
// settings". The second object of the same name gets the suffix "#2".
struct calls {
    result ended;
    // Every query of the service, every change of a map, every release and every text printed
    // through GLib, in order. The objects that were never released follow at the end.
    std::string queries = {};
    // `queries`, and every text printed by other means. Consecutive texts are joined.
    std::string steps = {};
    // The reads of maps: getter, map, key and default value. A "find" is a look-up in the native
    // map.
    std::set<std::string> reads = {};
    // The calls that reference and release the class of the formats.
    std::string classes = {};
    // The calls that set up the option context.
    std::string command_line = {};
};

// Run the tools as tlm() and report() do, but on the strict client and with `extra_environment`.
calls tlm_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                const std::vector<std::string>& extra_environment = {},
                const std::string& stdout_to = {});
calls report_calls(std::string_view snapshot, const std::vector<std::string>& arguments,
                   const std::vector<std::string>& extra_environment = {},
                   const std::string& stdout_to = {});

// Returns the lines of a text as a set.
std::set<std::string> lines_of(std::string_view text);

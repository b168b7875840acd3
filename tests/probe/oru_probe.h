// Runs oru-probe as its users do.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/run.h"
#include "support/temp_directory.h"
#include "support/tools.h"

// `options` has the environment and the streams of the run.
inline result oru_probe(const std::vector<std::string>& arguments, command options = {}) {
    options.executable = program("oru-probe");
    options.argv = {"oru-probe"};
    options.argv.insert(options.argv.end(), arguments.begin(), arguments.end());
    return run(options);
}

// Runs it with a service that answers from a snapshot of this text.
inline result probe_device(std::string_view snapshot, command options = {}) {
    const temp_directory scratch;
    options.environment.push_back("ORU_SNAPSHOT=" + scratch.write("snapshot.json", snapshot));
    return oru_probe({}, options);
}

// Runs oru-snapshot as its users do.
#pragma once

#include <string>
#include <vector>

#include "support/run.h"
#include "support/tools.h"

// `streams` says where its streams come from and go to.
inline result oru_snapshot(const std::vector<std::string>& arguments, command streams = {}) {
    streams.executable = program("oru-snapshot");
    streams.argv = {"oru-snapshot"};
    streams.argv.insert(streams.argv.end(), arguments.begin(), arguments.end());
    return run(streams);
}

// Runs oru-snapshot.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/run.h"
#include "support/temp_directory.h"
#include "support/tools.h"

// `streams` redirects its standard streams.
inline result oru_snapshot(const std::vector<std::string>& arguments, command streams = {}) {
    streams.executable = program("oru-snapshot");
    streams.argv = {"oru-snapshot"};
    streams.argv.insert(streams.argv.end(), arguments.begin(), arguments.end());
    return run(streams);
}

// Runs it with a service that answers from a snapshot with this text.
inline result oru_snapshot_beside(std::string_view snapshot,
                                  const std::vector<std::string>& arguments, command streams = {}) {
    const temp_directory scratch;
    streams.environment.push_back("ORU_SNAPSHOT=" + scratch.write("snapshot.json", snapshot));
    return oru_snapshot(arguments, streams);
}

// The origin of the answers of our client library. Programs query the video service through oru.h
// alone; this is for oru-snapshot. With a device's own client library there is none.
#pragma once

#include <optional>
#include <string>

namespace replay {

struct origin {
    std::string path;
    std::optional<std::string> about = {};     // the text for people in the snapshot
    std::optional<std::string> recorded = {};  // when it was recorded, such as 2026-11-22T07:14:32Z
};

// Returns the origin of all answers, or nothing if no snapshot can be read or another client
// library answers.
__attribute__((visibility("default"))) std::optional<origin> answers_origin();

}  // namespace replay

// The origin of the answers of our client library. Programs query the video service through oru.h
// alone; this is for oru-snapshot, which shows its user that the answers are recorded.
#pragma once

#include <optional>
#include <string>

namespace replay {

struct origin {
    std::string path;
    std::optional<std::string> about;  // the text for people in the snapshot
};

// Returns the origin of all answers, or nothing if no snapshot can be read.
__attribute__((visibility("default"))) std::optional<origin> answers_origin();

}  // namespace replay

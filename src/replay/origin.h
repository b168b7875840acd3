// Where our client library's answers come from. Programs ask the video service through oru.h alone;
// this is for oru-snapshot, which shows a person that the answers are recorded.
#pragma once

#include <optional>
#include <string>

namespace replay {

struct origin {
    std::string path;
    std::optional<std::string> about;  // what the snapshot says about itself
};

// Returns the origin of all answers, or nothing if no snapshot can be read.
__attribute__((visibility("default"))) std::optional<origin> answers_origin();

}  // namespace replay

// What the video service answers now, as a snapshot: every question that the tools ask is asked
// once.
#pragma once

#include <string>

struct recording_options {
    const char* about = nullptr;  // a text for people; NULL for none
    bool redact = false;          // whether what tells about people is replaced
};

// Returns the text of the snapshot. A value of a kind that snapshots have no form for is named on
// standard error. Throws a std::runtime_error when the service answers nothing, with the message of
// its first failure, and when it answers what no snapshot can hold.
std::string record_service(const recording_options& options);

// Records the answers of the video service.
#pragma once

#include <string>

namespace snapshot_tool {

struct recording_options {
    const char* about = nullptr;  // a text for people, or NULL
    bool is_redacted = false;     // whether personal data is replaced
};

// Queries the service and returns the text of the recording. Prints a line on standard error for
// each value that is recorded as JSON, and a line if not all counted inputs were queried. Throws a
// std::runtime_error with the message of the first failure if the service answers no query, and a
// snapshot::not_recordable if a file cannot contain an answer.
std::string record_service(const recording_options& options);

}  // namespace snapshot_tool

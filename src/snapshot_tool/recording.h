// Writes a snapshot in the form of a recording: the answers of the video service, or a FILE.
#pragma once

#include <optional>
#include <string>

namespace snapshot_tool {

struct recording_options {
    const char* about = nullptr;                    // a text for people, or NULL
    bool is_redacted = false;                       // whether personal data is replaced
    std::optional<std::string> redaction_key = {};  // its bytes
};

// Queries the service and returns the text of the recording. Prints a line on standard error for
// each value that is recorded as JSON, and a line if not all counted inputs were queried. Throws a
// std::runtime_error with the message of the first failure if the service answers no query, and a
// snapshot::not_recordable if a file cannot contain an answer.
std::string record_service(const recording_options& options);

// Returns the text of the recording of everything in the snapshot in `file`, in the order of its
// lists. Throws a std::runtime_error if it cannot be read.
std::string record_file(const char* file, const recording_options& options);

}  // namespace snapshot_tool

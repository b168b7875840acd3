// What show and graph say first: where the answers come from.
#pragma once

#include <optional>
#include <string>

#include "snapshot/answers.h"
#include "snapshot_tool/page.h"

namespace snapshot_tool {

struct heading {
    std::string name;                     // of the file, otherwise "video service"; printable
    std::optional<std::string> about;     // the text for people in the snapshot
    std::optional<std::string> recorded;  // the time of the recording
};

// Returns the heading of the answers in `file`. If that is NULL, the video service was queried:
// where it is our client library that answered, the heading is that of its snapshot.
heading heading_of(const char* file, const snapshot::answers& answers);

// Adds a heading to the page. If standard output is a terminal, it has the age of the recording.
void add_heading(page& page, const heading& heading);

}  // namespace snapshot_tool

// Writes a snapshot in the layout of a recording: one member a line, so that two recordings can be
// compared line by line.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "snapshot/answers.h"

namespace snapshot {

// An answer that a file cannot contain; the message names the query and what is wrong.
struct not_recordable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Returns the text, without the answers that are left out. Throws a not_recordable for the first
// answer, in the order of the text, that a file cannot contain, and as soon as the text has more
// than `longest` bytes.
std::string write(const answers& answers, std::size_t longest = std::string::npos);

}  // namespace snapshot

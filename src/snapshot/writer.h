// The text of a snapshot in the layout of a recording: a member a line, so that two recordings can
// be compared line by line.
#pragma once

#include <stdexcept>
#include <string>

#include "snapshot/answers.h"

namespace snapshot {

// An answer that a file cannot contain; the message names the query and what is wrong.
struct not_recordable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Returns the text. Answers that are left out are left out of it. Throws a not_recordable for the
// first answer, in the order of the text, that a file cannot contain.
std::string write(const answers& all);

}  // namespace snapshot

// Reads the text of a snapshot and checks every rule of the format.
#pragma once

#include "snapshot/answers.h"

namespace snapshot {

// Fills in the answers from `into.text`. Throws a complaint (json_reader.h) if the text breaks a
// rule; then only the text is of use, which contains the place that is to blame.
void read(answers& into);

}  // namespace snapshot

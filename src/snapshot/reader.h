// Reads the text of a snapshot and checks every rule of the format.
#pragma once

#include "snapshot/answers.h"

namespace snapshot {

// Reads `answers.text` into the other members. Throws a complaint (json_reader.h) if the text
// breaks a rule; the place of the complaint is in the text.
void read(answers& answers);

}  // namespace snapshot

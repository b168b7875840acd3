// Reads the text of a snapshot into its records and checks every rule of the format.
#pragma once

#include "snapshot/document.h"

namespace oru {

// Fills the records of `doc` from doc.text. Throws a complaint (json_reader.h) when the text breaks
// a rule; `doc` is then of no use, its text still holds the place that is to blame.
void read_document(document& doc);

}  // namespace oru

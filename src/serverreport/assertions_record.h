// The text of the record of earlier assertions, as the report shows it.
#pragma once

#include <string>

// Returns the record as one line of JSON: comments removed, no blanks outside strings. A record
// that is not valid JSON, comments allowed, was cut short or damaged by what it describes: it is
// returned as it is, so that nothing of it is lost. So is one that the JSON library does not take:
// nested deeper than 256 levels, or with half of a surrogate pair.
std::string compact_record(std::string record);

// The text of the record of earlier assertions in the report.
#pragma once

#include <string>

// Returns the record as one line of JSON, without comments and without blanks outside strings.
// Returns it unchanged if it is not valid JSON, comments allowed, or if the JSON library rejects
// it: if it is nested deeper than 256 levels or contains half of a surrogate pair. Such a record
// may have been cut short by the crash that it describes, and none of it must be lost.
std::string compact_record(std::string record);

// The one question about snapshots that a program asks which is more than a client of the service.
#pragma once

#include <string>

namespace oru {

// Reads `path` as the client reads its snapshot. Returns an empty text when it is one, else why it
// is not: "PATH: REASON" or "PATH:LINE:COLUMN: REASON".
std::string check_snapshot(const std::string& path);

}  // namespace oru

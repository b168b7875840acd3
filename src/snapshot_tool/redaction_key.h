// The key of a redaction.
#pragma once

#include <string>

namespace snapshot_tool {

// Returns the bytes of the file, which must be a regular file of 16 to 4096 bytes. Throws a
// std::runtime_error, "PATH: REASON".
std::string read_redaction_key(const std::string& path);

}  // namespace snapshot_tool

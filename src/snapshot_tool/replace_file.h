// Replaces a file: a program that opens it reads either the old or the whole new one.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace snapshot_tool {

// Writes `text` to a new file beside `path`, flushes it to disk, sets its mode to `mode` whatever
// the umask is, and renames it to `path`. If `path` exists, it must be a regular file, not a link
// to one.
//
// The new file has no name until it is complete, so that nothing is left of it if the process is
// killed. Its temporary name begins with a dot and has no extension. Where the file system has no
// unnamed files, or /proc is missing, it has this name from the start.
//
// Throws a std::runtime_error, "PATH: REASON", if any of this fails. An existing file is then
// unchanged, and the new one is deleted.
void replace_file(const std::string& path, std::string_view text, mode_t mode);

}  // namespace snapshot_tool

// Replaces a file: a program that opens it reads either the old or the whole new one.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace snapshot_tool {

// Writes `text` beside `path`, under a name that begins with a dot and has no extension, flushes it
// to disk, sets its mode to `mode` whatever the umask is, and renames it to `path`. If `path`
// exists, it must be a regular file, not a link to one.
//
// Throws a std::runtime_error, "PATH: REASON", if any of this fails. An existing file is then
// unchanged, and the new one is deleted.
void replace_file(const std::string& path, std::string_view text, mode_t mode);

}  // namespace snapshot_tool

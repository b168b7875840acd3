// Puts a text in a file's place: who opens the file sees the old one or the whole new one.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace snapshot_tool {

// Writes `text` beside `path`, under a name that begins with a dot and has no extension, flushes it
// to disk, gives it `mode` whatever the umask is, and renames it to `path`. What exists there must
// be a regular file itself, no link to one.
//
// Throws a std::runtime_error, "PATH: REASON", when any of this fails; what was there is then there
// still, and nothing else is left behind.
void replace_file(const std::string& path, std::string_view text, mode_t mode);

}  // namespace snapshot_tool

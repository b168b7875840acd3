// The option --output of the commands that print for programs.
#pragma once

#include <sys/types.h>

#include <string>

#include <glib.h>

namespace snapshot_tool {

// The option's value; NULL without it.
inline char* out = nullptr;

inline constexpr GOptionEntry output_option = {"output",
                                               'o',
                                               0,
                                               G_OPTION_ARG_FILENAME,
                                               static_cast<void*>(&out),
                                               "Write into OUT, not to standard output",
                                               "OUT"};

// Throws as require_may_open() does if OUT is given. A command calls it before it reads anything.
void require_may_write();

// Replaces OUT as replace_file() does, or prints the text if OUT is not given or "-". Returns the
// exit status.
int write_output(const std::string& text, mode_t mode);

}  // namespace snapshot_tool

// The option --color of the commands that print for people.
#pragma once

#include <glib.h>

namespace snapshot_tool {

// The option's value; NULL without it.
inline char* colour = nullptr;

inline constexpr GOptionEntry colour_option = {"color",
                                               0,
                                               0,
                                               G_OPTION_ARG_FILENAME,
                                               static_cast<void*>(&colour),
                                               "Use colours: always, never, or auto, on a terminal",
                                               "WHEN"};

// Returns whether standard output has colours. With `auto`, the default, it has if it is a terminal
// that shows them and NO_COLOR is not set or empty. Throws a command_line::wrong_usage if the
// option's value is none of the three.
bool has_colours();

}  // namespace snapshot_tool

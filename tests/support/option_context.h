// Stands between the tools and GLib where they make and release an option context and release an
// error (by the linker's --wrap): each release is told on standard error.
#pragma once

// While this is set, no option context can be made.
extern bool option_context_fails;

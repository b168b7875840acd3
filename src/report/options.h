// The command lines of the tools: plain switches, read by GLib.
#pragma once

#include <glib.h>

// Adds `switches`, a table of G_OPTION_ARG_NONE entries that ends in an all-zero one, to `context`
// and sets the targets of those given on the command line. Returns FALSE and sets `error`, unless
// that is NULL, when GLib refuses the command line.
//
// GLib prints its help itself and then ends the process with status 0. When that help does not
// reach standard output, the exit says so: `lost_help` and the reason on standard error, status 1.
// `lost_help` must outlive the process.
gboolean parse_switches(GOptionContext* context, const GOptionEntry* switches, int argc,
                        char** argv, const char* lost_help, GError** error);

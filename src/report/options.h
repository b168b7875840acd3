// The command lines of the tools: plain switches, read by GLib.
#pragma once

#include <glib.h>

// Sets the targets of the switches given on the command line. `switches` is a table of
// G_OPTION_ARG_NONE entries that ends in an all-zero one. Returns FALSE and sets `error` when the
// command line is refused: by GLib, or because a switch has a value attached, which GLib would
// ignore.
//
// GLib prints its help itself and then ends the process with status 0. When that help does not
// reach standard output, the exit says so: `lost_help` and the reason on standard error, status 1.
// `lost_help` must outlive the process.
gboolean parse_switches(GOptionContext* context, const GOptionEntry* switches, int argc,
                        char** argv, const char* lost_help, GError** error);

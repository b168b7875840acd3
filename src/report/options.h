// The command lines of the tools.
#pragma once

#include "video/owned.h"

// Parses the command line, sets the switches that it contains, and returns the error if GLib
// rejects it, otherwise NULL.
//
// GLib prints the help itself and then ends the process with status 0. If the help text cannot be
// written to standard output, the status is 1, after `help_error` and the reason on standard error.
// `help_error` must outlive the process.
owned_error parse_options(GOptionContext* context, int argc, char** argv, const char* help_error);

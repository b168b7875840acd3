// The tools' fatal exits. Each writes the tool's name and one line to standard error and calls
// exit(1), also if standard error cannot be written.
#pragma once

#include <exception>

#include <glib.h>

#include "report/line_format.h"
#include "video/owned.h"

// Fatal exits of the feeder tool: with a message, with an error of the option parser, and with an
// exception that reached the tool. The second releases the error, then the context.
[[noreturn]] void tlm_fatal(const char* message);
[[noreturn]] void tlm_fatal(owned_error option_error, owned_option_context context);
[[noreturn]] void tlm_fatal(const std::exception& exception);

// Fatal exit of the server-report tool. The message of `error`, which may be NULL, replaces the {}
// of `format`.
[[noreturn]] void serverreport_fatal(line_format format, const GError* error);

// The tools' fatal exits: the tool's name and one line on standard error, then exit(1). A standard
// error that cannot be written changes nothing about the exit.
#pragma once

#include <exception>

#include <glib.h>

#include "report/line_format.h"
#include "video/owned.h"

// The feeder tool's: the message itself, an option error, which is released before its context, or
// an exception that reached the tool.
[[noreturn]] void tlm_fatal(const char* message);
[[noreturn]] void tlm_fatal(owned_error option_error, owned_option_context context);
[[noreturn]] void tlm_fatal(const std::exception& exception);

// The server-report tool's: `format` with the message of `error`, which may be NULL, for its {}.
[[noreturn]] void serverreport_fatal(line_format format, const GError* error);

// The message of a GError.
#pragma once

#include <glib.h>

// Returns the message, which is valid as long as `error`, or the empty text if `error` is NULL.
inline const char* message_of(const GError* error) {
    return error != nullptr ? error->message : "";
}

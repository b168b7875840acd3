// The text of a GError: its message, or the empty text for NULL.
#pragma once

#include <glib.h>

// Returns the message, which lives as long as `error`; the empty text when that is NULL.
inline const char* message_of(const GError* error) {
    return error != nullptr ? error->message : "";
}

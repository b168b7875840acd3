// The text of a GError: its message, or the empty text for NULL, for {} arguments and others.
#pragma once

#include <format>
#include <string_view>

#include <glib.h>

// Returns the message, which lives as long as `error`; the empty text when that is NULL.
inline const char* message_of(const GError* error) {
    return error != nullptr ? error->message : "";
}

template <>
struct std::formatter<GError*> : std::formatter<std::string_view> {
    auto format(const GError* error, auto& context) const {
        return std::formatter<std::string_view>::format(message_of(error), context);
    }
};

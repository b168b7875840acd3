// A GError as a {} argument: its message, or the empty text for NULL.
#pragma once

#include <format>
#include <string_view>

#include <glib.h>

template <>
struct std::formatter<GError*> : std::formatter<std::string_view> {
    auto format(const GError* error, auto& context) const {
        return std::formatter<std::string_view>::format(error != nullptr ? error->message : "",
                                                        context);
    }
};

// Whether a text is UTF-8.
#pragma once

#include <string_view>

#include <glib.h>

namespace snapshot {

// Returns whether the text is valid UTF-8 without a NUL.
inline bool is_utf8(std::string_view text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

}  // namespace snapshot

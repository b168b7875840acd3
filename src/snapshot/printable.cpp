#include "snapshot/printable.h"

#include <array>
#include <cstdio>

#include <glib.h>

namespace snapshot {
namespace {

// Returns whether a terminal shows the character as itself, in its place.
bool is_shown(gunichar character) {
    switch (g_unichar_type(character)) {
        case G_UNICODE_LINE_SEPARATOR:
        case G_UNICODE_PARAGRAPH_SEPARATOR:
            return false;
        default:
            return g_unichar_isprint(character) != FALSE;
    }
}

// Returns an escape: `format` with the code in hexadecimal digits.
std::string escape(const char* format, unsigned code) {
    std::array<char, 16> text;
    return {text.data(),
            static_cast<std::size_t>(std::snprintf(text.data(), text.size(), format, code))};
}

std::string escaped(gunichar character) {
    switch (character) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return escape(character < 0x80      ? "\\x%02x"
                          : character < 0x10000 ? "\\u%04x"
                                                : "\\U%08x",
                          character);
    }
}

}  // namespace

std::string printable(std::string_view text) {
    constexpr gunichar invalid = 0xFFFFFFFE;  // one more: incomplete
    std::string escaped_text;
    while (!text.empty()) {
        const gunichar character =
            g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        if (character >= invalid) {
            escaped_text += escape("\\x%02x", static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        const auto length = static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
        escaped_text +=
            is_shown(character) ? std::string{text.substr(0, length)} : escaped(character);
        text.remove_prefix(length);
    }
    return escaped_text;
}

}  // namespace snapshot
